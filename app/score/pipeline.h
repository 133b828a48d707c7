// Reads, scores and writes at once, with a bounded number of blocks in memory.
#ifndef APP_SCORE_PIPELINE_H_
#define APP_SCORE_PIPELINE_H_

#include "app/base/failure.h"
#include "app/files/output_file.h"
#include "app/score/case_scorer.h"
#include "app/score/progress.h"
#include "app/table/broken_row.h"
#include "app/table/row_blocks.h"

namespace svmscore::app {

// Scores all rows of `input` on `threads` threads, but at most a few for each core, and writes them
// in the order of the input. `failures` and `row_like_cells` get those of all rows that are
// written. Throws a Failure when the input cannot be read, when a row is broken (after the rows
// before it were written), or when the output cannot be written.
Tally ScoreAll(const ScoringPlan& plan, RowBlocks& input, const std::string& input_name,
               OutputFile& output, Progress& progress, Failures& failures,
               RowLikeCells& row_like_cells, int threads);

}  // namespace svmscore::app

#endif  // APP_SCORE_PIPELINE_H_
