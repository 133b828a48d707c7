// What the program tells of a run on standard error.
#ifndef APP_PIPELINE_PROGRESS_H_
#define APP_PIPELINE_PROGRESS_H_

#include <chrono>
#include <cstdint>

#include "app/pipeline/case_block.h"

namespace svmscore::app {

// Used by one thread.
class Progress {
 public:
  // `input_size` in bytes; 0 where it is not known. `done` is what becomes of a case: "scored".
  Progress(std::uint64_t input_size, const char* done);
  // Takes an unfinished progress line away.
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  // Rewrites the progress line now and then, where standard error is a terminal.
  void Show(std::uint64_t cases, std::uint64_t bytes_read);
  // Takes the progress line away, for other lines to follow.
  void Clear();
  // Writes the closing line.
  void Close(const Tally& tally);

 private:
  using Clock = std::chrono::steady_clock;

  double SecondsSince(Clock::time_point start) const;
  std::uint64_t input_size_;
  const char* done_;
  bool terminal_;
  bool shown_ = false;
  Clock::time_point start_;
  Clock::time_point last_shown_;
};

}  // namespace svmscore::app

#endif  // APP_PIPELINE_PROGRESS_H_
