#include "host/transform/table/inline_table.h"

#include <algorithm>
#include <unordered_map>

#include "host/xml/transcoder.h"
#include "host/xml/wide_text.h"

namespace svmscore::transform {
namespace {

using Wide = WideText;

// What keeping a cell costs in addition to its text.
constexpr std::size_t kCellCost = 32;
// The columns of a table may cost (1 + kMostShares) times as much as its cells, plus kFreeShares.
constexpr std::size_t kMostShares = 4;
constexpr std::size_t kFreeShares = std::size_t{1} << 22;

std::string CellText(const Element* cell) {
  std::string text = ElementText(cell);
  if (text.find('\n') == std::string::npos) return text;
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// Finds the cells of one row after another.
class RowReader {
 public:
  explicit RowReader(const std::vector<std::string>& columns)
      : columns_(columns.size()), found_(columns.size()) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const Wide name = ToUtf16(columns[i]);
      const std::size_t colon = name.rfind(u':');
      wholes_[name].columns.push_back(i);
      locals_[colon == Wide::npos ? name : name.substr(colon + 1)].columns.push_back(i);
    }
  }

  // Valid until the next row.
  Cells Read(const Element* row) {
    ++row_;
    texts_.clear();
    taken_.clear();
    for (const Element* cell = FirstContent(row); cell != nullptr; cell = NextContent(cell)) {
      std::optional<std::size_t> text;
      Offer(wholes_, cell->getTagName(), cell, text, true);
      if (cell->getLocalName() != nullptr) {
        Offer(locals_, cell->getLocalName(), cell, text, false);
      }
    }
    Count(row);
    std::sort(taken_.begin(), taken_.end());
    cells_.clear();
    for (const std::size_t column : taken_) {
      cells_.push_back({column, texts_[columns_[column].text]});
      found_[column] = true;
    }
    return cells_;
  }

  // Whether any row had a cell of the column.
  bool Found(std::size_t column) const { return found_[column]; }

 private:
  // The columns that have the same name.
  struct Named {
    std::vector<std::size_t> columns;
    std::size_t row = 0;  // the last row with a cell of that name
  };
  struct Column {
    std::size_t row = 0;  // the last row with a cell of the column
    std::size_t text = 0;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(WideView text) const { return std::hash<WideView>()(text); }
  };
  using Names = std::unordered_map<Wide, Named, Hash, std::equal_to<>>;

  // Gives the cell to the columns of its name, unless the row has had a cell of that name. The
  // whole name takes precedence over the part after the prefix.
  void Offer(Names& names, const XMLCh* name, const Element* cell, std::optional<std::size_t>& text,
             bool whole) {
    const auto found = names.find(WideView(name));
    if (found == names.end() || found->second.row == row_) return;
    found->second.row = row_;
    for (const std::size_t i : found->second.columns) {
      Column& column = columns_[i];
      if (column.row == row_ && !whole) continue;
      if (column.row != row_) taken_.push_back(i);
      if (!text) {
        text = texts_.size();
        texts_.push_back(CellText(cell));
      }
      column = {row_, *text};
    }
  }

  // Many columns that share a cell would need far more memory than the document.
  void Count(const Element* row) {
    for (const std::string& text : texts_) once_ += kCellCost + text.size();
    for (const std::size_t column : taken_) {
      all_ += kCellCost + texts_[columns_[column].text].size();
    }
    if (all_ > (1 + kMostShares) * once_ + kFreeShares) {
      RefuseContent(row, "too many columns take the same cells");
    }
  }

  Names wholes_;
  Names locals_;
  std::size_t row_ = 0;  // from 1
  std::vector<Column> columns_;
  std::vector<std::size_t> taken_;  // the columns that the row has
  std::vector<std::string> texts_;  // of the row, each cell once
  std::vector<Cell> cells_;
  std::vector<bool> found_;
  std::size_t once_ = 0;  // the cost of the cells that are taken
  std::size_t all_ = 0;   // the same, with each cell counted as often as it is taken
};

}  // namespace

std::optional<std::string_view> TextOf(Cells cells, std::size_t column) {
  const auto found =
      std::lower_bound(cells.begin(), cells.end(), column,
                       [](const Cell& cell, std::size_t sought) { return cell.column < sought; });
  if (found == cells.end() || found->column != column) return std::nullopt;
  return found->text;
}

void ForEachRow(const Element* table, const std::vector<std::string>& columns, std::size_t required,
                const RowVisitor& visit) {
  RowReader reader(columns);
  bool empty = true;
  for (const Element* row = FirstContent(table); row != nullptr; row = NextContent(row)) {
    if (!IsNamed(row, "row")) RefuseKind(row);
    empty = false;
    visit(row, reader.Read(row));
  }
  for (std::size_t i = 0; i < required && !empty; ++i) {
    if (!reader.Found(i)) RefuseContent(table, "no row has the column " + columns[i]);
  }
}

const Element* InlineTableOf(const Element* element) {
  const Element* found = nullptr;
  for (const Element* child = FirstContent(element); child != nullptr; child = NextContent(child)) {
    if (IsNamed(child, "TableLocator")) RefuseKind(child);
    if (!IsNamed(child, "InlineTable")) continue;
    if (found != nullptr) RefuseContent(child, "there is a second table");
    found = child;
  }
  return found;
}

}  // namespace svmscore::transform
