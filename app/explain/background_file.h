// The table of a background.
#ifndef APP_EXPLAIN_BACKGROUND_FILE_H_
#define APP_EXPLAIN_BACKGROUND_FILE_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "app/table/csv_row.h"
#include "host/load/loader.h"
#include "host/model/batch_model.h"
#include "tools/base/cell_rules.h"
#include "tools/explain/background.h"

namespace svmscore::app {

// How the rows of the table are read, and which of them are kept.
struct BackgroundChoice {
  RowForm form;
  tools::CellRules cells;
  std::size_t most = 0;  // rows that are drawn; 0: all are kept
  std::uint64_t seed = 1;
};

// Reads the rows that the model can score; tells, on standard error, which it cannot, and why. Does
// not hold rows that are not kept. `path` "-" is standard input. Fixes the positions of the model's
// variables. [one thread] of the process. Fails: Failure(kInputError), BadCases for a table that
// cannot be read, or has no row that can be scored; std::bad_alloc.
tools::Background ReadBackground(const std::string& path, const LoadedModel& loaded,
                                 BatchModel& model, const BackgroundChoice& choice);

}  // namespace svmscore::app

#endif  // APP_EXPLAIN_BACKGROUND_FILE_H_
