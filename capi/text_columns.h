// Columns of the caller's as tables of texts, for what reads tables of files.
#ifndef CAPI_TEXT_COLUMNS_H_
#define CAPI_TEXT_COLUMNS_H_

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "capi/column_view.h"
#include "capi/svmscore.h"
#include "host/load/loader.h"
#include "tools/base/cell_rules.h"
#include "tools/base/text_table.h"

namespace svmscore::capi {

using VariablesByName = std::unordered_map<std::string, const MCZandor_850::ScoreDictVar*>;

// [any thread] Fails: std::bad_alloc.
VariablesByName InputsByName(const LoadedModel& loaded);

// The cells of columns as texts, of numbers the shortest that reads as the same number. Those of
// columns that `inputs` does not name are left empty; null for all columns. `name` is what messages
// call the table. [any thread] Fails: a Refusal that names a column whose memory or type is not
// right; std::bad_alloc.
tools::TextTable TextsOf(const std::string& name, const std::vector<ColumnView>& columns,
                         std::size_t rows, const VariablesByName* inputs);

// Appends a column of labels, whatever it is called, and returns the name that it gets: one that no
// other column has. REQUIRES: it is as long as the table. Fails: as above.
std::string AddLabels(const ColumnView& labels, tools::TextTable& table);

// Cells are missing where the caller says so, and no text is by itself. Fails: std::bad_alloc.
tools::CellRules RulesOf(const svmscore_text* missing_texts, std::size_t count);

}  // namespace svmscore::capi

#endif  // CAPI_TEXT_COLUMNS_H_
