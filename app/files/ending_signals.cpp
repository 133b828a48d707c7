#include "app/files/ending_signals.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
#include <cstring>
#include <utility>

#include <poll.h>
#include <unistd.h>

namespace svmscore::app {
namespace {

struct EndingSignal {
  int number;
  const char* name;
};
// The real-time signals belong to these too.
constexpr std::array kEndingSignals = {
    EndingSignal{SIGINT, "SIGINT"},      EndingSignal{SIGTERM, "SIGTERM"},
    EndingSignal{SIGHUP, "SIGHUP"},      EndingSignal{SIGQUIT, "SIGQUIT"},
    EndingSignal{SIGXCPU, "SIGXCPU"},    EndingSignal{SIGALRM, "SIGALRM"},
    EndingSignal{SIGUSR1, "SIGUSR1"},    EndingSignal{SIGUSR2, "SIGUSR2"},
    EndingSignal{SIGPROF, "SIGPROF"},    EndingSignal{SIGVTALRM, "SIGVTALRM"},
    EndingSignal{SIGPOLL, "SIGPOLL"},    EndingSignal{SIGPWR, "SIGPWR"},
    EndingSignal{SIGSTKFLT, "SIGSTKFLT"}};

template <typename Do>
void ForEachEndingSignal(const Do& visit) {
  for (const EndingSignal& known : kEndingSignals) visit(known.number);
  for (int number = SIGRTMIN; number <= SIGRTMAX; ++number) visit(number);
}

// The handler may use nothing that allocates or locks. The path is written while `has_unfinished`
// is false.
std::array<char, PATH_MAX> unfinished{};
std::atomic<bool> has_unfinished{false};
std::atomic<bool> on_terminal{false};
std::atomic<int> first_real_time{0};
std::atomic_flag is_ending;  // by the first of several signals
constexpr std::uint64_t kNotCounted = UINT64_MAX;
std::atomic<std::uint64_t> cases_written{kNotCounted};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);

// Lines to say, the others being free for the next ones; null for none. Nothing is touched any more
// once `is_ending`, for the handler may read what it found here.
std::array<std::string, 2> lines_to_say;
std::atomic<const std::string*> said_when_ended{nullptr};
static_assert(std::atomic<const std::string*>::is_always_lock_free);

// Writes to standard error, but not where nobody takes it: a full pipe would hold up the end. A
// pipe that takes anything takes PIPE_BUF bytes.
void Say(const char* text, std::size_t size) {
  while (size > 0) {
    struct pollfd stream {
      STDERR_FILENO, POLLOUT, 0
    };
    if (poll(&stream, 1, 0) != 1 || (stream.revents & POLLOUT) == 0) return;
    const ssize_t count = write(STDERR_FILENO, text, std::min<std::size_t>(size, PIPE_BUF));
    if (count <= 0) return;
    text += count;
    size -= static_cast<std::size_t>(count);
  }
}

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
  void Write() const { Say(bytes_.data(), size_); }

 private:
  std::array<char, 200> bytes_;
  std::size_t size_ = 0;
};

void SayHowFar(int number, bool removed) {
  // The terminal may show how far the run has come.
  if (on_terminal.load()) Say("\r\x1b[K", 4);
  if (const std::string* lines = said_when_ended.load()) Say(lines->data(), lines->size());
  Line line;
  line.Add("svmscore: ended by ");
  for (const EndingSignal& known : kEndingSignals) {
    if (known.number == number) line.Add(known.name);
  }
  const int real_time = number - first_real_time.load();
  if (real_time >= 0) line.Add("SIGRTMIN");
  if (real_time > 0) line.Add("+");
  if (real_time > 0) line.Add(static_cast<std::uint64_t>(real_time));
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
  if (is_ending.test_and_set()) return;
  const bool removed = has_unfinished.load() && unlink(unfinished.data()) == 0;
  SayHowFar(number, removed);
  std::signal(number, SIG_DFL);
  std::raise(number);
}

}  // namespace

void HandleEndingSignals() {
  on_terminal = isatty(STDERR_FILENO) == 1;
  first_real_time = SIGRTMIN;
  struct sigaction action {};
  action.sa_handler = EndBySignal;
  sigfillset(&action.sa_mask);
  ForEachEndingSignal([&action](int number) {
    struct sigaction earlier {};
    sigaction(number, nullptr, &earlier);
    if (earlier.sa_handler == SIG_DFL) sigaction(number, &action, nullptr);
  });
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

void SayWhenEnded(std::string lines) noexcept {
  if (is_ending.test()) return;
  const bool none = lines.empty();
  std::string& place = lines_to_say[said_when_ended.load() == lines_to_say.data() ? 1 : 0];
  place = std::move(lines);
  said_when_ended = none ? nullptr : &place;
}

HoldEndingSignals::HoldEndingSignals() {
  sigset_t held;
  sigemptyset(&held);
  ForEachEndingSignal([&held](int number) { sigaddset(&held, number); });
  pthread_sigmask(SIG_BLOCK, &held, &before_);
}

HoldEndingSignals::~HoldEndingSignals() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace svmscore::app
