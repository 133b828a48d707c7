#include "app/pipeline/pipeline.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <oneapi/tbb/enumerable_thread_specific.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/info.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <oneapi/tbb/task_arena.h>

#include "app/base/failure.h"
#include "app/base/messages.h"
#include "app/files/ending_signals.h"
#include "app/table/row_counter.h"

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
  std::unique_ptr<BlockWorker> worker;
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
  Run(const std::function<std::unique_ptr<BlockWorker>()>& make_worker, const Streams& streams,
      const RunSetUp& setup, int threads)
      : make_worker_(make_worker),
        streams_(streams),
        block_time_(setup.block_time),
        ring_(static_cast<std::size_t>(threads) + kSpareBlocks, setup.logs_failures) {
    if (setup.counted_width > 0) counter_.emplace(streams.input.Delimiter(), setup.counted_width);
  }

  // What the threads have used is given up after their last turn.
  ~Run() { const HandOver::Turn turn(hand_over_); }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  Tally All() {
    {
      const HandOver::Turn turn(hand_over_);
      ThreadsWorker()->FixPositions();
    }
    const auto read = tbb::make_filter<void, BlockInWork*>(tbb::filter_mode::serial_in_order,
                                                           [this](tbb::flow_control& flow) {
                                                             const HandOver::Turn turn(hand_over_);
                                                             return Read(flow);
                                                           });
    const auto work = tbb::make_filter<BlockInWork*, BlockInWork*>(
        tbb::filter_mode::parallel, [this](BlockInWork* block) {
          const HandOver::Turn turn(hand_over_);
          const auto begun = std::chrono::steady_clock::now();
          ThreadsWorker()->Work(*block);
          if (!block->done) block->worker = std::move(workers_.local());
          FitBlocks(std::chrono::steady_clock::now() - begun);
          return block;
        });
    const auto write = tbb::make_filter<BlockInWork*, void>(tbb::filter_mode::serial_in_order,
                                                            [this](BlockInWork* block) {
                                                              const HandOver::Turn turn(hand_over_);
                                                              Write(*block);
                                                            });
    tbb::parallel_pipeline(ring_.Size(), read & work & write);
    const HandOver::Turn turn(hand_over_);
    if (read_failure_) std::rethrow_exception(read_failure_);
    return total_;
  }

  // What is wrong with the cases that were written; also after All has thrown.
  std::string Faults() {
    const HandOver::Turn turn(hand_over_);
    return TextOf(failures_, row_like_cells_, streams_.input_name);
  }

 private:
  // Blocks beyond one a thread, so that reading and writing need not wait for each other.
  static constexpr std::size_t kSpareBlocks = 4;

  // A failure is kept until the blocks before it are written: what a run writes does not depend on
  // the number of threads.
  BlockInWork* Read(tbb::flow_control& flow) {
    BlockInWork& block = ring_.Next();
    try {
      if (!streams_.input.Next(block.rows)) {
        flow.stop();
        return nullptr;
      }
    } catch (const CsvError& error) {
      read_failure_ = std::make_exception_ptr(BrokenRow(streams_.input_name, error));
    } catch (const Failure&) {
      read_failure_ = std::current_exception();
    }
    if (read_failure_) {
      flow.stop();
      return nullptr;
    }
    block.bytes_read = streams_.input.BytesRead();
    if (counter_) {
      block.first_row = streams_.input.RowsBefore() + counter_->Rows();
      counter_->CountTo(block.rows.text.size() + 1, block.rows.text);
    }
    return &block;
  }

  void Write(BlockInWork& block) {
    WriteOut(block);
    if (!block.done) streams_.input.ShrinkBlocks();
    while (!block.done) {
      block.worker->Resume(block);
      WriteOut(block);
    }
    block.worker.reset();
    row_like_cells_.Add(block.row_like_cells);
    if (!block.row_like_cells.IsEmpty()) NoteFaults();
    if (block.error) throw BrokenRow(streams_.input_name, *block.error);
    streams_.progress.Show(total_.cases, block.bytes_read);
    KeepWithinBounds(block.rows.text);
    KeepWithinBounds(block.out);
  }

  std::unique_ptr<BlockWorker>& ThreadsWorker() {
    std::unique_ptr<BlockWorker>& worker = workers_.local();
    if (worker == nullptr) worker = make_worker_();
    return worker;
  }

  void WriteOut(const CaseBlock& block) {
    streams_.output.Write(block.out);
    failures_.Add(block.failures, streams_.input.RowsBefore() + total_.cases);
    total_.Add(block.tally);
    NoteCasesWritten(total_.cases);
    if (!block.failures.IsEmpty()) NoteFaults();
  }

  // The size of blocks decides nothing but how long each takes.
  void FitBlocks(std::chrono::nanoseconds taken) {
    if (block_time_.count() == 0) return;
    if (taken < block_time_ / 2) streams_.input.GrowBlocks();
    if (taken > block_time_ * 2) streams_.input.ShrinkBlocks();
  }

  // A signal must not lose what would be told at the end.
  void NoteFaults() { SayWhenEnded(TextOf(failures_, row_like_cells_, streams_.input_name)); }

  const std::function<std::unique_ptr<BlockWorker>()>& make_worker_;
  const Streams& streams_;
  std::chrono::nanoseconds block_time_;
  tbb::enumerable_thread_specific<std::unique_ptr<BlockWorker>> workers_;
  BlockRing ring_;
  std::optional<RowCounter> counter_;
  HandOver hand_over_;
  Tally total_;
  Failures failures_;
  RowLikeCells row_like_cells_;
  std::exception_ptr read_failure_;
};

}  // namespace

Tally RunBlocks(const std::function<std::unique_ptr<BlockWorker>()>& make_worker,
                const Streams& streams, const RunSetUp& setup) {
  const int workers = std::min(setup.threads, kMostOfACore * tbb::info::default_concurrency());
  // Allows more threads than cores where they are asked for.
  const tbb::global_control limit(tbb::global_control::max_allowed_parallelism,
                                  static_cast<std::size_t>(workers));
  tbb::task_arena arena(workers);
  Tally total;
  arena.execute([&] {
    Run run(make_worker, streams, setup, workers);
    const auto tell = [&] {
      SayWhenEnded({});
      streams.progress.Clear();
      TellAsItIs(run.Faults());
    };
    try {
      total = run.All();
      streams.output.Commit();
    } catch (...) {
      tell();
      throw;
    }
    tell();
  });
  return total;
}

}  // namespace svmscore::app
