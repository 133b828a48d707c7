// The rows of an InlineTable.
#ifndef HOST_TRANSFORM_INLINE_TABLE_H_
#define HOST_TRANSFORM_INLINE_TABLE_H_

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/transform/dom.h"

namespace svmscore::transform {

// A row: its element, and the text of its cell in each of the columns asked for; nothing for a cell
// that it lacks.
using Cells = std::span<const std::optional<std::string>>;
using RowVisitor = std::function<void(const Element* row, Cells cells)>;

// Calls `visit` for every row in document order, with the cells of `columns`. A column is the name
// of the cells' elements, with its prefix or without. A cell that spans lines loses the blanks
// around it. Refuses a table, unless it is empty, in which no row has one of the first `required`
// columns.
void ForEachRow(const Element* table, const std::vector<std::string>& columns, std::size_t required,
                const RowVisitor& visit);

// The InlineTable child of `element`; null where it has no table. A TableLocator is refused.
const Element* InlineTableOf(const Element* element);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_INLINE_TABLE_H_
