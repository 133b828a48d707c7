// Reads, computes and writes at once, with a bounded number of blocks in memory.
#ifndef APP_PIPELINE_PIPELINE_H_
#define APP_PIPELINE_PIPELINE_H_

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "app/base/failure.h"
#include "app/files/output_file.h"
#include "app/pipeline/block_worker.h"
#include "app/pipeline/progress.h"
#include "app/table/broken_row.h"
#include "app/table/row_blocks.h"

namespace svmscore::app {

// From where to where a run goes.
struct Streams {
  RowBlocks& input;
  const std::string& input_name;
  OutputFile& output;
  Progress& progress;
};

struct RunSetUp {
  int threads = 1;             // but at most a few for each core
  bool logs_failures = false;  // each failed case is written to the log
  // Where rows are counted ahead, so that workers know their numbers: the cells of each; else 0.
  std::size_t counted_width = 0;
  // Where this is not 0, blocks grow and shrink so that each keeps a thread busy for about so long:
  // for cases that take long, of which a block of bytes may hold a minute's.
  std::chrono::nanoseconds block_time{0};
};

// Lets workers, one for each thread, work on all rows of the input, and writes what they make of
// them in the order of the input; commits the output. Tells on standard error, in the end or before
// it throws, what is wrong with the cases that were written. Throws a Failure when the input cannot
// be read, when a row is broken (after the rows before it were written), or when the output cannot
// be written.
Tally RunBlocks(const std::function<std::unique_ptr<BlockWorker>()>& make_worker,
                const Streams& streams, const RunSetUp& setup);

}  // namespace svmscore::app

#endif  // APP_PIPELINE_PIPELINE_H_
