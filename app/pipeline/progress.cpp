#include "app/pipeline/progress.h"

#include <algorithm>
#include <string>

#include <unistd.h>

#include <fmt/format.h>

#include "app/base/messages.h"

namespace svmscore::app {
namespace {

constexpr std::chrono::milliseconds kBetweenLines(250);
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

Progress::Progress(std::uint64_t input_size, const char* done)
    : input_size_(input_size),
      done_(done),
      terminal_(isatty(STDERR_FILENO) == 1),
      start_(Clock::now()),
      last_shown_(start_ - kBetweenLines) {}

Progress::~Progress() {
  Clear();
}

void Progress::Show(std::uint64_t cases, std::uint64_t bytes_read) {
  if (!terminal_) return;
  const Clock::time_point now = Clock::now();
  if (now - last_shown_ < kBetweenLines) return;
  last_shown_ = now;
  std::string line = fmt::format("{} case{}, {:.0f} cases/s", cases, cases == 1 ? "" : "s",
                                 static_cast<double>(cases) / SecondsSince(start_));
  if (input_size_ > 0) {
    const std::uint64_t read = std::min(bytes_read, input_size_);
    line += fmt::format(", {:.0f}% of the input",
                        100.0 * static_cast<double>(read) / static_cast<double>(input_size_));
  }
  TellAsItIs(kEraseLine + line);
  shown_ = true;
}

void Progress::Close(const Tally& tally) {
  Clear();
  Tell(fmt::format("{} case{}, {} {}, {} missing, {} invalid, {:.3f} seconds", tally.cases,
                   tally.cases == 1 ? "" : "s", tally.done, done_, tally.missing, tally.invalid,
                   SecondsSince(start_)));
}

double Progress::SecondsSince(Clock::time_point start) const {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void Progress::Clear() {
  if (shown_) TellAsItIs(kEraseLine);
  shown_ = false;
}

}  // namespace svmscore::app
