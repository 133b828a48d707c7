// Comparing scores with the expected ones of a file.
#ifndef APP_VERIFY_FILES_H_
#define APP_VERIFY_FILES_H_

#include <string>
#include <vector>

#include "app/verify_report.h"
#include "app/verify_table.h"
#include "host/pmml/loader.h"

namespace svmscore::app {

// Cells that count as missing besides empty ones.
using MissingTokens = std::vector<std::string>;

// Gives the case the values of a row of `cases`.
void SetInputs(const VerifyTable& cases, const std::vector<std::string>& row,
               const MissingTokens& missing, VerifyCase& scored);

// Columns of `expected` are compared with the values of their names: output fields, or the columns
// that the program writes. Where it has a single column, or none of its names is known, its first
// column is compared with the prediction; or, where that disagrees, with the first output field
// that agrees on every row. Throws a Failure(kInputError) for files that do not fit together or
// lack a column that the model needs.
VerifyReport VerifyFiles(const LoadedModel& loaded, const VerifyTable& cases,
                         const VerifyTable& expected, double tolerance,
                         const MissingTokens& missing);

}  // namespace svmscore::app

#endif  // APP_VERIFY_FILES_H_
