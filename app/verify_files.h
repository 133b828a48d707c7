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

// A column of expected values, and what of a case it expects.
struct ExpectedColumn {
  std::size_t cell;
  Quantity quantity;
};
using ExpectedColumns = std::vector<ExpectedColumn>;

struct ExpectedReadings {
  bool by_name = false;
  std::vector<ExpectedColumns> all;  // one where the columns are known by name
};

// Throws a Failure(kInputError) for cases that do not fit the model: a column that it needs is not
// there, or one that it reads is named twice.
void RequireInputs(const LoadedModel& loaded, const VerifyTable& cases);

// The ways to read `expected`. Columns mean the values of their names: output fields, or the
// columns that the program writes. Where none of the names is known, the first column means the
// prediction, or one of the output fields that are made from it: one reading each. Throws a
// Failure(kInputError) for files that do not fit together, and as RequireInputs does.
ExpectedReadings ReadingsOf(const LoadedModel& loaded, const VerifyTable& cases,
                            const VerifyTable& expected);

// Compares by the first reading that agrees on every row, or else by the first one. Throws as
// ReadingsOf does.
VerifyReport VerifyFiles(const LoadedModel& loaded, const VerifyTable& cases,
                         const VerifyTable& expected, double tolerance,
                         const MissingTokens& missing);

}  // namespace svmscore::app

#endif  // APP_VERIFY_FILES_H_
