// Reads, scores and writes at once, with a bounded number of blocks in memory.
#ifndef APP_PIPELINE_H_
#define APP_PIPELINE_H_

#include "app/case_scorer.h"
#include "app/failure.h"
#include "app/output_file.h"
#include "app/progress.h"
#include "app/row_blocks.h"

namespace svmscore::app {

// Scores all rows of `input` on `threads` threads, but at most a few for each core, and writes them
// in the order of the input. Throws a Failure when the input cannot be read, when a row is broken
// (after the rows before it were written), or when the output cannot be written.
Tally ScoreAll(const ScoringPlan& plan, RowBlocks& input, const std::string& input_name,
               OutputFile& output, Progress& progress, int threads);

// The failure for a broken row: it names the input and the line.
Failure BrokenRow(const std::string& input_name, const CsvError& error);

}  // namespace svmscore::app

#endif  // APP_PIPELINE_H_
