#include "app/score/pipeline.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <oneapi/tbb/enumerable_thread_specific.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <oneapi/tbb/task_arena.h>

#include "app/base/failure.h"
#include "app/files/ending_signals.h"

namespace svmscore::app {
namespace {

namespace tbb = oneapi::tbb;

// A buffer that a huge row has grown is not kept beyond this.
constexpr std::size_t kKeptBytes = 2U << 20U;

// Threads beyond this for each core gain nothing, and every one holds a block.
constexpr int kMostOfACore = 4;

void KeepWithinBounds(std::string& buffer) {
  if (buffer.capacity() > kKeptBytes) std::string().swap(buffer);
}

struct BlockInWork : CaseBlock {
  using CaseBlock::CaseBlock;

  // The one that goes on with a block whose output grew long; its thread takes a new one then.
  std::unique_ptr<CaseScorer> scorer;
};

// The blocks of a run. Blocks leave the pipeline in the order in which they entered it, and there
// are never more inside than this holds: the next one is always free.
class BlockRing {
 public:
  BlockRing(std::size_t size, bool keeps_failures) {
    for (std::size_t i = 0; i < size; ++i) {
      blocks_.push_back(std::make_unique<BlockInWork>(keeps_failures));
    }
  }
  std::size_t Size() const { return blocks_.size(); }
  BlockInWork& Next() { return *blocks_[next_++ % blocks_.size()]; }

 private:
  std::vector<std::unique_ptr<BlockInWork>> blocks_;
  std::size_t next_ = 0;
};

// Makes explicit what the pipeline does anyway: what was written during one turn is seen in every
// later one. oneTBB's own hand-over is invisible to a thread sanitizer, which this is for; it costs
// nothing.
class HandOver {
 public:
  class Turn {
   public:
    explicit Turn(HandOver& hand_over) : turns_(hand_over.turns_) {
      static_cast<void>(turns_.load(std::memory_order_acquire));
    }
    ~Turn() { turns_.fetch_add(1, std::memory_order_release); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    std::atomic<unsigned>& turns_;
  };

 private:
  std::atomic<unsigned> turns_{0};
};

class Run {
 public:
  Run(const ScoringPlan& plan, RowBlocks& input, const std::string& input_name, OutputFile& output,
      Progress& progress, Failures& failures, RowLikeCells& row_like_cells, int threads)
      : plan_(plan),
        input_(input),
        input_name_(input_name),
        output_(output),
        progress_(progress),
        failures_(failures),
        row_like_cells_(row_like_cells),
        ring_(static_cast<std::size_t>(threads) + kSpareBlocks, plan.logs_failures) {}

  // What the threads have used is given up after their last turn.
  ~Run() { const HandOver::Turn turn(hand_over_); }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  Tally Score() {
    {
      const HandOver::Turn turn(hand_over_);
      ThreadsScorer()->FixPositions();
    }
    const auto read = tbb::make_filter<void, BlockInWork*>(tbb::filter_mode::serial_in_order,
                                                           [this](tbb::flow_control& flow) {
                                                             const HandOver::Turn turn(hand_over_);
                                                             return Read(flow);
                                                           });
    const auto score = tbb::make_filter<BlockInWork*, BlockInWork*>(
        tbb::filter_mode::parallel, [this](BlockInWork* block) {
          const HandOver::Turn turn(hand_over_);
          ThreadsScorer()->Score(*block);
          if (!block->done) block->scorer = std::move(scorers_.local());
          return block;
        });
    const auto write = tbb::make_filter<BlockInWork*, void>(tbb::filter_mode::serial_in_order,
                                                            [this](BlockInWork* block) {
                                                              const HandOver::Turn turn(hand_over_);
                                                              Write(*block);
                                                            });
    tbb::parallel_pipeline(ring_.Size(), read & score & write);
    const HandOver::Turn turn(hand_over_);
    if (read_failure_) std::rethrow_exception(read_failure_);
    return total_;
  }

 private:
  // Blocks beyond one a thread, so that reading and writing need not wait for each other.
  static constexpr std::size_t kSpareBlocks = 4;

  // A failure is kept until the blocks before it are written: what a run writes does not depend on
  // the number of threads.
  BlockInWork* Read(tbb::flow_control& flow) {
    BlockInWork& block = ring_.Next();
    try {
      if (!input_.Next(block.rows)) {
        flow.stop();
        return nullptr;
      }
    } catch (const CsvError& error) {
      read_failure_ = std::make_exception_ptr(BrokenRow(input_name_, error));
    } catch (const Failure&) {
      read_failure_ = std::current_exception();
    }
    if (read_failure_) {
      flow.stop();
      return nullptr;
    }
    block.bytes_read = input_.BytesRead();
    return &block;
  }

  void Write(BlockInWork& block) {
    WriteOut(block);
    if (!block.done) input_.ShrinkBlocks();
    while (!block.done) {
      block.scorer->Resume(block);
      WriteOut(block);
    }
    block.scorer.reset();
    row_like_cells_.Add(block.row_like_cells);
    if (!block.row_like_cells.IsEmpty()) NoteFaults();
    if (block.error) throw BrokenRow(input_name_, *block.error);
    progress_.Show(total_.cases, block.bytes_read);
    KeepWithinBounds(block.rows.text);
    KeepWithinBounds(block.out);
  }

  std::unique_ptr<CaseScorer>& ThreadsScorer() {
    std::unique_ptr<CaseScorer>& scorer = scorers_.local();
    if (scorer == nullptr) scorer = std::make_unique<CaseScorer>(plan_);
    return scorer;
  }

  void WriteOut(const CaseBlock& block) {
    output_.Write(block.out);
    failures_.Add(block.failures, input_.RowsBefore() + total_.cases);
    total_.Add(block.tally);
    NoteCasesWritten(total_.cases);
    if (!block.failures.IsEmpty()) NoteFaults();
  }

  // A signal must not lose what would be told at the end.
  void NoteFaults() { SayWhenEnded(TextOf(failures_, row_like_cells_, input_name_)); }

  const ScoringPlan& plan_;
  RowBlocks& input_;
  const std::string& input_name_;
  OutputFile& output_;
  Progress& progress_;
  Failures& failures_;
  RowLikeCells& row_like_cells_;
  tbb::enumerable_thread_specific<std::unique_ptr<CaseScorer>> scorers_;
  BlockRing ring_;
  HandOver hand_over_;
  Tally total_;
  std::exception_ptr read_failure_;
};

}  // namespace

Tally ScoreAll(const ScoringPlan& plan, RowBlocks& input, const std::string& input_name,
               OutputFile& output, Progress& progress, Failures& failures,
               RowLikeCells& row_like_cells, int threads) {
  const int workers = std::min(threads, kMostOfACore * tbb::info::default_concurrency());
  // Allows more threads than cores where they are asked for.
  const tbb::global_control limit(tbb::global_control::max_allowed_parallelism,
                                  static_cast<std::size_t>(workers));
  tbb::task_arena arena(workers);
  Tally total;
  arena.execute([&] {
    total =
        Run(plan, input, input_name, output, progress, failures, row_like_cells, workers).Score();
  });
  return total;
}

}  // namespace svmscore::app
