#include "app/ending_signals.h"

#include <array>
#include <atomic>
#include <climits>
#include <cstring>

#include <unistd.h>

namespace svmscore::app {
namespace {

struct EndingSignal {
  int number;
  const char* name;
};
constexpr std::array kEndingSignals = {
    EndingSignal{SIGINT, "SIGINT"},   EndingSignal{SIGTERM, "SIGTERM"},
    EndingSignal{SIGHUP, "SIGHUP"},   EndingSignal{SIGQUIT, "SIGQUIT"},
    EndingSignal{SIGXCPU, "SIGXCPU"}, EndingSignal{SIGALRM, "SIGALRM"},
    EndingSignal{SIGUSR1, "SIGUSR1"}, EndingSignal{SIGUSR2, "SIGUSR2"}};

// The handler may use nothing that allocates or locks. The path is written while `has_unfinished`
// is false.
std::array<char, PATH_MAX> unfinished{};
std::atomic<bool> has_unfinished{false};
std::atomic<bool> on_terminal{false};
constexpr std::uint64_t kNotCounted = UINT64_MAX;
std::atomic<std::uint64_t> cases_written{kNotCounted};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

// A line put together in place.
class Line {
 public:
  void Add(const char* text) {
    while (*text != '\0' && size_ < bytes_.size()) bytes_[size_++] = *text++;
  }
  void Add(std::uint64_t number) {
    std::array<char, 21> digits{};
    std::size_t at = digits.size() - 1;
    do {
      digits[--at] = static_cast<char>('0' + number % 10);
      number /= 10;
    } while (number != 0);
    Add(&digits[at]);
  }
  void Write() const {
    // There is nobody to tell of a failure.
    static_cast<void>(!write(STDERR_FILENO, bytes_.data(), size_));
  }

 private:
  std::array<char, 200> bytes_;
  std::size_t size_ = 0;
};

void SayHowFar(int number, bool removed) {
  Line line;
  // The terminal may show how far the run has come.
  if (on_terminal.load()) line.Add("\r\x1b[K");
  line.Add("svmscore: ended by ");
  for (const EndingSignal& known : kEndingSignals) {
    if (known.number == number) line.Add(known.name);
  }
  const std::uint64_t cases = cases_written.load();
  if (cases != kNotCounted) {
    line.Add(" after ");
    line.Add(cases);
    line.Add(" cases");
  }
  line.Add(removed ? "; the output file is not made\n" : "\n");
  line.Write();
}

extern "C" void EndBySignal(int number) {
  const bool removed = has_unfinished.load() && unlink(unfinished.data()) == 0;
  SayHowFar(number, removed);
  std::signal(number, SIG_DFL);
  std::raise(number);
}

}  // namespace

void HandleEndingSignals() {
  on_terminal = isatty(STDERR_FILENO) == 1;
  struct sigaction action {};
  action.sa_handler = EndBySignal;
  for (const EndingSignal& known : kEndingSignals) {
    struct sigaction earlier {};
    sigaction(known.number, nullptr, &earlier);
    if (earlier.sa_handler != SIG_IGN) sigaction(known.number, &action, nullptr);
  }
}

void RemoveWhenEnded(const std::string& path) {
  has_unfinished = false;
  if (path.empty() || path.size() >= unfinished.size()) return;
  std::memcpy(unfinished.data(), path.c_str(), path.size() + 1);
  has_unfinished = true;
}

void NoteCasesWritten(std::uint64_t cases) {
  cases_written = cases;
}

HoldEndingSignals::HoldEndingSignals() {
  sigset_t held;
  sigemptyset(&held);
  for (const EndingSignal& known : kEndingSignals) sigaddset(&held, known.number);
  pthread_sigmask(SIG_BLOCK, &held, &before_);
}

HoldEndingSignals::~HoldEndingSignals() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace svmscore::app
