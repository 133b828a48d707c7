// The process-wide trace log.
#ifndef HOST_MODEL_SCORING_LOG_H_
#define HOST_MODEL_SCORING_LOG_H_

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>

#include "host/text/api.h"

namespace MCZandor_850 {

// Silent unless the environment variable SVMSCORE_LOG is set to a level (1 and up) or SetLevel is
// called. Lines go to standard error until a file is set. A line is written when its level is at
// most the log's.
// [any thread] Lives: as long as the process. Fails: never, except as SetFile and WriteError say.
class SVMSCORE_HOST_API ScoringLog {
 public:
  static ScoringLog& GetInstance();

  // Writes one line by a printf format, as Printable() spells it. Costs one atomic read while the
  // log is silent. Never throws; an overlong line is cut at 2,000 bytes.
  void TraceText(int level, const char* format, ...) noexcept __attribute__((format(printf, 3, 4)));

  // Level 0 is silent.
  void SetLevel(int level) { level_.store(level, std::memory_order_relaxed); }
  int GetLevel() const { return level_.load(std::memory_order_relaxed); }
  // Appends to `path` from now on. Fails: by false when it cannot be opened; nothing changes then.
  bool SetFile(const std::string& path);
  // The system's number for the first failure to write to that file; 0 where there was none.
  int WriteError() const { return write_error_.load(std::memory_order_relaxed); }

 private:
  ScoringLog();
  ~ScoringLog();

  std::atomic<int> level_{0};
  std::atomic<int> write_error_{0};
  std::mutex mutex_;
  std::FILE* file_ = nullptr;  // null: standard error
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORING_LOG_H_
