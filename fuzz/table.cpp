// Any bytes as a table of cases, through the program's reader, a small model, and the writers.
#include <algorithm>
#include <array>
#include <fstream>
#include <optional>
#include <sstream>

#include <nlohmann/json.hpp>

#include "app/base/failure.h"
#include "app/files/input_file.h"
#include "app/table/row_blocks.h"
#include "fuzz/checked_scoring.h"
#include "fuzz/memory_file.h"
#include "fuzz/promise.h"
#include "fuzz/time_limit.h"
#include "tools/base/bad_input.h"
#include "tools/base/decompression.h"

namespace svmscore::fuzz {
namespace {

using app::CsvError;
using app::CsvRows;
using app::ScoringPlan;

// The output of a run, and how it ended.
struct Written {
  std::string text;
  std::uint64_t cases = 0;
  long error_line = 0;  // 0: read to the end
};

Written Run(const ScoringPlan& plan, app::RowBlocks& input) {
  Written written;
  plan.format->Header(written.text);
  app::CaseScorer scorer(plan);
  scorer.FixPositions();
  app::CaseBlock block;
  while (written.error_line == 0 && input.Next(block.rows)) {
    for (scorer.Work(block);; scorer.Resume(block)) {
      written.text += block.out;
      written.cases += block.tally.cases;
      if (block.done) break;
    }
    if (block.error) written.error_line = block.error->Line();
  }
  return written;
}

// Nothing where the table is refused as a whole.
std::optional<Written> Score(const LoadedModel& loaded, const MemoryFile& table,
                             const RunOptions& options, std::size_t block_bytes,
                             std::size_t long_output) {
  try {
    app::InputFile file(table.Path());
    app::RowBlocks input(file, {{}, options.delimiter}, block_bytes);
    app::RowBlock header;
    if (!input.ReadHeader(header)) return std::nullopt;
    std::vector<std::string_view> names;
    CsvRows(header.text.data(), header.text.size(), header.first_line, {{}, options.delimiter})
        .Next(names);
    ScoringPlan plan = PlanOf(loaded, names, options);
    plan.long_output = long_output;
    return Run(plan, input);
  } catch (const CsvError&) {
  } catch (const app::Failure&) {
  } catch (const tools::BadCases&) {
  }
  return std::nullopt;
}

// The rows of a text after its header, counted up to the first broken one.
std::uint64_t CountRows(std::string text, char delimiter = ',') {
  const std::size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
  const std::size_t blank = begin == 0 ? text.npos : text.rfind('\n', begin - 1);
  if (blank != text.npos) text.erase(0, blank + 1);
  CsvRows rows(text.data(), text.size(), 1, {{}, delimiter});
  std::vector<std::string_view> cells;
  std::uint64_t count = 0;
  try {
    if (!rows.Next(cells)) return 0;
    for (const std::size_t width = cells.size(); rows.Next(cells, width);) ++count;
  } catch (const CsvError&) {
  }
  return count;
}

void CheckJson(const Written& written) {
  std::istringstream lines(written.text);
  std::uint64_t count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    Promise(nlohmann::json::accept(line), "a line is a JSON object: " + line);
  }
  Promise(count == written.cases, "there is an object for every case");
}

const LoadedModel& TheModel() {
  static const LoadedModel loaded =
      LoadModel(ThePlugin(), PmmlDocument::FromFile(FUZZ_FOLDER "/table.pmml"));
  return loaded;
}

void CheckTable(const std::string& text, const RunOptions& options, std::size_t block_bytes,
                std::size_t long_output) {
  const MemoryFile table(text);
  const std::optional<Written> whole = Score(TheModel(), table, options, 1U << 18U, 1U << 24U);
  const std::optional<Written> pieces = Score(TheModel(), table, options, block_bytes, long_output);
  Promise(whole.has_value() == pieces.has_value(), "a table is refused whatever the blocks");
  if (!whole) return;
  Promise(whole->text == pieces->text && whole->error_line == pieces->error_line,
          "the output does not depend on the blocks");
  const bool marked = text.starts_with("\xEF\xBB\xBF");
  const std::string rows = marked ? text.substr(3) : text;
  Promise(
      tools::DecompressorFor(text) != nullptr || whole->cases == CountRows(rows, options.delimiter),
      "as many rows out as in");
  if (options.json) {
    CheckJson(*whole);
  } else {
    Promise(whole->cases == CountRows(whole->text), "what was written can be read");
  }
}

}  // namespace
}  // namespace svmscore::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  svmscore::fuzz::TheModel();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore::fuzz;
  const TimeLimit limit;
  // A line of options, then the table.
  const std::uint8_t* line_end = std::find(data, data + std::min<std::size_t>(size, 16), '\n');
  Choices choices(data, static_cast<std::size_t>(line_end - data));
  TheModel().model->SetMissingValuePolicy(MCZandor_850::ScoreModel::kReplaceMissing);
  RunOptions options = ChooseOptions(*TheModel().model, choices);
  constexpr std::array<std::string_view, 4> kCopied = {"a", "size", "colour", "more"};
  for (std::size_t left = choices.Below(3); left > 0; --left) {
    options.copied.emplace_back(choices.Pick(kCopied));
  }
  const std::size_t block_bytes = 1 + choices.Below(64);
  const std::size_t long_output = choices.Half() ? 1U << 24U : 1 + choices.Below(200);
  constexpr std::array kDelimiters = {',', ';', '\t', '|', ' '};
  options.delimiter = choices.Pick(kDelimiters);
  options.decimal_comma = choices.Rarely();
  const std::uint8_t* table = line_end == data + size ? line_end : line_end + 1;
  CheckTable({table, data + size}, options, block_bytes, long_output);
  return 0;
}
