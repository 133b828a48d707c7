// The cells of rows as values of records.
#ifndef APP_PIPELINE_CASE_CELLS_H_
#define APP_PIPELINE_CASE_CELLS_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "app/table/row_blocks.h"
#include "host/model/score_case_record.h"
#include "host/reasons/case_examiner.h"
#include "tools/base/case_columns.h"
#include "tools/base/cell_rules.h"

namespace svmscore::app {

// Used by one thread. The arguments must outlive this object.
class CaseCells {
 public:
  CaseCells(const tools::CaseColumns& columns, const tools::CellRules& rules, bool replace_missing);

  // The record, with the values of the row that was read last; empty at first.
  const MCZandor_850::InputCaseRecord& Record() const { return record_; }
  // Reads the cells of a row into the record.
  const MCZandor_850::InputCaseRecord& Read(const std::string_view* cells);
  // Sets one value of any record; `cell` may be kNoCell.
  void Set(MCZandor_850::InputCaseRecord& record, std::size_t position,
           const std::string_view* cells, std::size_t cell);
  // Why the case of that row failed. The record stays as it is.
  std::vector<reasons::Reason> ReasonsOf(const reasons::CaseExaminer& examiner,
                                         const std::string_view* cells,
                                         const reasons::Ended& ended);

 private:
  const tools::CaseColumns& columns_;
  const tools::CellRules& rules_;
  bool replace_missing_;
  MCZandor_850::InputCaseRecord record_;
  std::string number_text_;
  // A failed case that is looked at again; null until one has failed.
  std::unique_ptr<MCZandor_850::InputCaseRecord> failed_;
  std::vector<reasons::Given> given_;  // of the variables of such a case
  std::vector<std::string> read_;      // of these, the texts that are read in another spelling
};

// The names of the columns, which live as long as `header`. Throws a Failure(kInputError) for an
// empty input, or a header that is no CSV.
std::vector<std::string_view> ReadColumnNames(RowBlocks& input, const RowForm& form,
                                              const std::string& input_name, RowBlock& header);

}  // namespace svmscore::app

#endif  // APP_PIPELINE_CASE_CELLS_H_
