// Rows of plain numbers, which need no record: each cell is an entry of the case as it is.
#ifndef APP_SCORE_PLAIN_ROWS_H_
#define APP_SCORE_PLAIN_ROWS_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/batch_model.h"
#include "tools/base/case_columns.h"
#include "tools/base/cell_rules.h"
#include "tools/score/case_batch.h"

namespace svmscore::app {

// Used by one thread. What it takes has the entries that ReadCase would give it.
class PlainRows {
 public:
  // The arguments must outlive this object.
  PlainRows(const BatchModel& model, const tools::CaseColumns& columns,
            const tools::CellRules& rules);

  // Adds the row to the batch. False, and nothing is added, where a cell holds anything else than a
  // number that no declaration or treatment touches, or entries are not such numbers: then the row
  // needs a record. REQUIRES: there is room in the batch.
  bool Take(const std::string_view* cells, tools::CaseBatch& batch);

 private:
  const tools::CaseColumns& columns_;
  const tools::CellRules& rules_;
  double system_missing_;
  std::vector<std::size_t> variables_;  // of each entry: its position among the variables
  std::vector<double> numbers_;         // of each variable; empty where no row is plain
  std::string exchanged_;
};

}  // namespace svmscore::app

#endif  // APP_SCORE_PLAIN_ROWS_H_
