// What is left behind, and said, when a signal ends the process.
#ifndef APP_FILES_ENDING_SIGNALS_H_
#define APP_FILES_ENDING_SIGNALS_H_

#include <cstdint>
#include <string>

#include <csignal>

namespace svmscore::app {

// From now on the signals that end a process and tell of no fault in it, SIGINT, SIGTERM and the
// real-time ones among them, remove the unfinished file and say on standard error why cases failed
// and how many were written, before they end the process as they always do. One that is ignored, as
// under nohup, or handled by somebody else, stays so.
void HandleEndingSignals();

// The file to remove; empty for none.
void RemoveWhenEnded(const std::string& path);

// The cases that are written so far. Any thread.
void NoteCasesWritten(std::uint64_t cases);

// What to say before that: whole lines, printable; in place of those given earlier. Empty when they
// have been said otherwise, at the latest when the process ends. One thread at a time. Fails:
// never.
void SayWhenEnded(std::string lines) noexcept;

// Holds these signals back on this thread while it lives.
class HoldEndingSignals {
 public:
  HoldEndingSignals();
  ~HoldEndingSignals();
  HoldEndingSignals(const HoldEndingSignals&) = delete;
  HoldEndingSignals& operator=(const HoldEndingSignals&) = delete;

 private:
  sigset_t before_;
};

}  // namespace svmscore::app

#endif  // APP_FILES_ENDING_SIGNALS_H_
