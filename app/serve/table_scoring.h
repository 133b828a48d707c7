// Tables that a request sends, scored as svmscore score does it.
#ifndef APP_SERVE_TABLE_SCORING_H_
#define APP_SERVE_TABLE_SCORING_H_

#include <cstddef>
#include <string>

#include "host/xml/limits.h"
#include "tools/serve/route.h"
#include "tools/serve/row_run.h"
#include "tools/serve/served_model.h"

namespace svmscore::app {

// A table, inflated, has at most so much, and so has the answer.
struct TableBounds {
  std::size_t rows = 0;
  std::size_t bytes = 0;
  std::size_t answer = static_cast<std::size_t>(-1);  // bytes
  Limits limits = {};                                 // of rows and cells
};

// What `svmscore score` writes for the table. The query may set delimiter, decimalComma,
// missingToken and reasons, as the options of these names, and by delimiterChar the delimiter of
// both tables. Below /openscoring a first column "Id", in any case, that is no input of the model
// is copied. [any thread] Fails: BadRequest, with nothing scored; std::bad_alloc.
std::string ScoreTable(const serve::ServedModel& model, const std::string& table,
                       const serve::Route& route, const TableBounds& bounds,
                       serve::RowCounts& counts);

}  // namespace svmscore::app

#endif  // APP_SERVE_TABLE_SCORING_H_
