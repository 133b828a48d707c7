// Record batches of the Arrow C Data Interface as columns, and scored tables as record batches.
#ifndef CAPI_ARROW_COLUMNS_H_
#define CAPI_ARROW_COLUMNS_H_

#include <memory>
#include <vector>

#include "capi/column_view.h"
#include "capi/result_table.h"
#include "capi/svmscore.h"

namespace svmscore::capi {

// The columns of a schema, without their values: a struct's children. Throws a Refusal for what has
// been released or is no struct.
std::vector<ColumnView> ColumnsOf(const ArrowSchema& schema);
// Gives the columns of the schema the values of a batch. Throws a Refusal for a batch that has been
// released or is not of the schema, and for a column that is not whole. Lives: the batch, longer
// than the columns.
void FillColumns(const ArrowSchema& schema, const ArrowArray& batch,
                 std::vector<ColumnView>& columns);

// Makes a struct of the table's columns; both belong to whoever releases them. Fails:
// std::bad_alloc, and then there is nothing to release.
void ExportSchema(const ResultTable& table, ArrowSchema* schema);
void ExportTable(const std::shared_ptr<ResultTable>& table, ArrowArray* array);

}  // namespace svmscore::capi

#endif  // CAPI_ARROW_COLUMNS_H_
