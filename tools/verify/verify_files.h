// Comparing scores with the expected ones of a file.
#ifndef TOOLS_VERIFY_VERIFY_FILES_H_
#define TOOLS_VERIFY_VERIFY_FILES_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/load/loader.h"
#include "tools/base/cell_rules.h"
#include "tools/base/text_table.h"
#include "tools/verify/agreement.h"
#include "tools/verify/verify_report.h"

namespace svmscore::tools {

// Gives the case the values of a row of `cases`.
void SetInputs(const TextTable& cases, const std::vector<std::string>& row, const CellRules& rules,
               VerifyCase& scored);

// Gives the numbers of `expected` that are written with a comma a point; texts stay, and columns in
// which no number has a decimal comma.
void ReadDecimalCommas(const LoadedModel& loaded, TextTable& expected);

// A column of expected values, and what of a case it expects.
struct ExpectedColumn {
  std::size_t cell;
  Quantity quantity;
};
using ExpectedColumns = std::vector<ExpectedColumn>;

// The position of the column that holds what the model should predict, the first of several;
// columns.size() where none does.
std::size_t PredictionAmong(const LoadedModel& loaded, const ExpectedColumns& columns);

// Whether a column of this name numbers or names the rows of a table, as an unnamed first column
// does and one that is called "id" or "row".
bool NamesRows(std::string_view column);

struct ExpectedReadings {
  bool by_name = false;
  std::vector<ExpectedColumns> all;  // one where the columns are known by name
};

// Throws a BadCases for cases that do not fit the model: a column that it needs is not
// there, or one that it reads is named twice.
void RequireInputs(const LoadedModel& loaded, const TextTable& cases);

// The ways to read `expected`. Columns mean the values of their names: output fields, or the
// columns that the program writes; the target's own name means the prediction where no other column
// does. Where none of the names is known, or decision values only, the first other column that does
// not name the rows means the prediction, or one of the output fields that are made from it: one
// reading each. Throws a
// BadCases for files that do not fit together, and as RequireInputs does.
ExpectedReadings ReadingsOf(const LoadedModel& loaded, const TextTable& cases,
                            const TextTable& expected);

struct FilesReport {
  VerifyReport report;
  std::optional<Agreement> agreement;  // nothing where no column holds expected predictions
};

// Compares by the first reading that agrees on every row, or else by the first one. Throws as
// ReadingsOf does.
FilesReport VerifyFiles(const LoadedModel& loaded, const TextTable& cases,
                        const TextTable& expected, double tolerance, const CellRules& rules);

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_FILES_H_
