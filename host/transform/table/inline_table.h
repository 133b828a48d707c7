// The rows of an InlineTable.
#ifndef HOST_TRANSFORM_TABLE_INLINE_TABLE_H_
#define HOST_TRANSFORM_TABLE_INLINE_TABLE_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/api.h"
#include "host/xml/attributes.h"

namespace svmscore::transform {

struct Cell {
  std::size_t column;  // its position among the columns asked for
  std::string_view text;
};

// The cells that a row has, in the order of the columns asked for.
using Cells = std::span<const Cell>;
// Texts live as long as the call.
using RowVisitor = std::function<void(const Element* row, Cells cells)>;

// The text of the cell of a column; nothing where the row lacks it.
// [any thread] Lives: as long as the cells. Fails: never.
SVMSCORE_HOST_API std::optional<std::string_view> TextOf(Cells cells, std::size_t column);

// Calls `visit` for every row in document order, with the cells of `columns`. A column is the name
// of the cells' elements, with or without the prefix. A cell that spans lines loses the blanks
// around it. Time and memory depend on the number of cells, not on that of columns.
// [one thread] for each document. Lives: cells, for the call of `visit`. Fails: SSException for an
// element that is not a row, for a table with rows of which none has one of the first `required`
// columns, and for a table whose cells are shared by too many columns; what `visit` throws;
// std::bad_alloc.
SVMSCORE_HOST_API void ForEachRow(const Element* table, const std::vector<std::string>& columns,
                                  std::size_t required, const RowVisitor& visit);

// The InlineTable child of `element`; null where it has no table. A TableLocator is refused.
const Element* InlineTableOf(const Element* element);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_TABLE_INLINE_TABLE_H_
