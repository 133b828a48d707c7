#include "app/pipeline.h"

#include <atomic>
#include <exception>
#include <vector>

#include <fmt/format.h>
#include <oneapi/tbb/enumerable_thread_specific.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/parallel_pipeline.h>
#include <oneapi/tbb/task_arena.h>

#include "app/ending_signals.h"
#include "app/failure.h"

namespace svmscore::app {
namespace {

namespace tbb = oneapi::tbb;

// A buffer that a huge row has grown is not kept beyond this.
constexpr std::size_t kKeptBytes = 2U << 20U;

void KeepWithinBounds(std::string& buffer) {
  if (buffer.capacity() > kKeptBytes) std::string().swap(buffer);
}

// The blocks of a run. Blocks leave the pipeline in the order in which they entered it, and there
// are never more inside than this holds: the next one is always free.
class BlockRing {
 public:
  explicit BlockRing(std::size_t size) : blocks_(size) {}
  std::size_t Size() const { return blocks_.size(); }
  CaseBlock& Next() { return blocks_[next_++ % blocks_.size()]; }

 private:
  std::vector<CaseBlock> blocks_;
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
      Progress& progress, int threads)
      : input_(input),
        input_name_(input_name),
        output_(output),
        progress_(progress),
        scorers_([&plan] { return std::make_unique<CaseScorer>(plan); }),
        ring_(static_cast<std::size_t>(threads) + kSpareBlocks) {}

  // What the threads have used is given up after their last turn.
  ~Run() { const HandOver::Turn turn(hand_over_); }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  Tally Score() {
    {
      const HandOver::Turn turn(hand_over_);
      scorers_.local()->FixPositions();
    }
    const auto read = tbb::make_filter<void, CaseBlock*>(tbb::filter_mode::serial_in_order,
                                                         [this](tbb::flow_control& flow) {
                                                           const HandOver::Turn turn(hand_over_);
                                                           return Read(flow);
                                                         });
    const auto score = tbb::make_filter<CaseBlock*, CaseBlock*>(
        tbb::filter_mode::parallel, [this](CaseBlock* block) {
          const HandOver::Turn turn(hand_over_);
          scorers_.local()->Score(*block);
          return block;
        });
    const auto write = tbb::make_filter<CaseBlock*, void>(tbb::filter_mode::serial_in_order,
                                                          [this](CaseBlock* block) {
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
  CaseBlock* Read(tbb::flow_control& flow) {
    CaseBlock& block = ring_.Next();
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

  void Write(CaseBlock& block) {
    WriteOut(block);
    if (!block.done) input_.ShrinkBlocks();
    // What the block's turn in the other threads was too short for; memory stays bounded this way.
    while (!block.done) {
      scorers_.local()->GoOn(block);
      WriteOut(block);
    }
    if (block.error) throw BrokenRow(input_name_, *block.error);
    progress_.Show(total_.cases, block.bytes_read);
    KeepWithinBounds(block.rows.text);
    KeepWithinBounds(block.out);
  }

  void WriteOut(const CaseBlock& block) {
    output_.Write(block.out);
    total_.Add(block.tally);
    NoteCasesWritten(total_.cases);
  }

  RowBlocks& input_;
  const std::string& input_name_;
  OutputFile& output_;
  Progress& progress_;
  tbb::enumerable_thread_specific<std::unique_ptr<CaseScorer>> scorers_;
  BlockRing ring_;
  HandOver hand_over_;
  Tally total_;
  std::exception_ptr read_failure_;
};

}  // namespace

Failure BrokenRow(const std::string& input_name, const CsvError& error) {
  return {kInputError, fmt::format("{}: line {}: {}", input_name, error.Line(), error.what())};
}

Tally ScoreAll(const ScoringPlan& plan, RowBlocks& input, const std::string& input_name,
               OutputFile& output, Progress& progress, int threads) {
  // Allows more threads than cores where they are asked for.
  const tbb::global_control limit(tbb::global_control::max_allowed_parallelism,
                                  static_cast<std::size_t>(threads));
  tbb::task_arena arena(threads);
  Tally total;
  arena.execute([&] { total = Run(plan, input, input_name, output, progress, threads).Score(); });
  return total;
}

}  // namespace svmscore::app
