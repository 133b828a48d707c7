#include "host/transform/inline_table.h"

#include <algorithm>

#include "host/transcoder.h"

namespace svmscore::transform {
namespace {

using Wide = std::basic_string<XMLCh>;

struct Column {
  Wide name;
  Wide local;
  bool found = false;
};

Column MakeColumn(const std::string& name) {
  Wide wide = ToUtf16(name);
  const std::size_t colon = wide.rfind(u':');
  Wide local = colon == Wide::npos ? wide : wide.substr(colon + 1);
  return {std::move(wide), std::move(local), false};
}

std::string CellText(const Element* cell) {
  std::string text = ElementText(cell);
  if (text.find('\n') == std::string::npos) return text;
  constexpr const char* kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

// The cell of a column: by its whole name first, then by the part after the prefix.
const Element* FindCell(const Element* row, const Column& column) {
  const Element* by_local_name = nullptr;
  for (const Element* cell = FirstChild(row); cell != nullptr; cell = NextSibling(cell)) {
    if (column.name == cell->getTagName()) return cell;
    const XMLCh* local = cell->getLocalName();
    if (by_local_name == nullptr && local != nullptr && column.local == local) {
      by_local_name = cell;
    }
  }
  return by_local_name;
}

}  // namespace

void ForEachRow(const Element* table, const std::vector<std::string>& columns, std::size_t required,
                const RowVisitor& visit) {
  std::vector<Column> wanted;
  wanted.reserve(columns.size());
  for (const std::string& name : columns) wanted.push_back(MakeColumn(name));
  std::vector<std::optional<std::string>> cells(columns.size());
  bool empty = true;
  for (const Element* row = FirstChild(table); row != nullptr; row = NextSibling(row)) {
    if (!IsNamed(row, "row")) RefuseKind(row);
    empty = false;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      const Element* cell = FindCell(row, wanted[i]);
      cells[i].reset();
      if (cell == nullptr) continue;
      cells[i] = CellText(cell);
      wanted[i].found = true;
    }
    visit(row, cells);
  }
  for (std::size_t i = 0; i < required && !empty; ++i) {
    if (!wanted[i].found) Refuse(table, "no row has the column " + columns[i]);
  }
}

const Element* InlineTableOf(const Element* element) {
  const Element* found = nullptr;
  for (const Element* child = FirstChild(element); child != nullptr; child = NextSibling(child)) {
    if (IsNamed(child, "TableLocator")) RefuseKind(child);
    if (!IsNamed(child, "InlineTable")) continue;
    if (found != nullptr) Refuse(child, "there is a second table");
    found = child;
  }
  return found;
}

}  // namespace svmscore::transform
