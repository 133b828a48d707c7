// What travels through a run: some rows of the input, and what becomes of them.
#ifndef APP_PIPELINE_CASE_BLOCK_H_
#define APP_PIPELINE_CASE_BLOCK_H_

#include <cstdint>
#include <optional>
#include <string>

#include "app/pipeline/failures.h"
#include "app/table/csv_row.h"
#include "app/table/row_blocks.h"

namespace svmscore::app {

// How the cases of a run ended.
struct Tally {
  std::uint64_t cases = 0;
  std::uint64_t done = 0;     // scored, or whatever the run does with a case
  std::uint64_t missing = 0;  // not for lack of a value
  std::uint64_t invalid = 0;  // an invalid value, or no decidable outcome

  void Count(long status);
  void Add(const Tally& other);
};

// A block on its way through the pipeline.
struct CaseBlock {
  explicit CaseBlock(bool keeps_failures = false) : failures(keeps_failures) {}

  RowBlock rows;
  std::uint64_t first_row = 0;    // the position of the first of them in the table, from 0, where
                                  // the run counts rows ahead
  std::string out;                // of the rows that are worked on and not written yet
  Tally tally;                    // of the rows of `out`
  Failures failures;              // likewise
  RowLikeCells row_like_cells;    // of the whole block, once it is done
  std::optional<CsvError> error;  // what is wrong with the row after the last one
  std::uint64_t bytes_read = 0;   // of the input, up to this block or a little further
  bool done = true;               // `out` ends with the last row
};

}  // namespace svmscore::app

#endif  // APP_PIPELINE_CASE_BLOCK_H_
