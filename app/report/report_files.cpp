#include "app/report/report_files.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <utility>

#include "app/table/read_table.h"
#include "tools/base/sha256.h"

namespace svmscore::app {
namespace {

namespace fs = std::filesystem;

// So many bytes of a table are held at most.
constexpr std::size_t kMostBytes = std::size_t{256} << 20;
// Where draws begin: the same rows at every run.
constexpr std::uint64_t kSeed = 1;

class RowsToDraw : public RowTaker {
 public:
  explicit RowsToDraw(std::size_t most) : draw_(kSeed, most, kMostBytes) {}

  void TakeHeader(const std::string& name, const std::vector<std::string_view>& names) override {
    table_.name = name;
    table_.header.assign(names.begin(), names.end());
  }
  void TakeRow(const std::vector<std::string_view>& cells) override { draw_.Add(cells); }

  tools::DrawnTable Table() && {
    table_.rows = draw_.Rows();
    table_.drawn = draw_.Take();
    return std::move(table_);
  }

 private:
  tools::CaseDraw draw_;
  tools::DrawnTable table_;
};

}  // namespace

tools::ModelFileFacts FactsOf(const std::string& path, tools::DocumentSource& source) {
  tools::ModelFileFacts facts;
  facts.name = fs::path(path).filename().string();
  tools::Sha256 sum;
  std::error_code unknown;
  if (fs::is_regular_file(path, unknown)) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, 65536> buffer{};
    while (file.read(buffer.data(), buffer.size()), file.gcount() > 0) {
      sum.Add(buffer.data(), static_cast<std::size_t>(file.gcount()));
      facts.size += static_cast<std::uint64_t>(file.gcount());
    }
  } else {
    const std::string& text = source.Text();
    sum.Add(text.data(), text.size());
    facts.size = text.size();
  }
  facts.sha256 = sum.Hex();
  return facts;
}

tools::DrawnTable DrawRows(const std::string& path, const RowForm& form, std::size_t most) {
  RowsToDraw draw(most);
  ReadRows(path, form, draw);
  return std::move(draw).Table();
}

}  // namespace svmscore::app
