#include "fuzz/time_limit.h"

#include <csignal>
#include <cstdlib>

#include <sys/time.h>
#include <unistd.h>

namespace svmscore::fuzz {
namespace {

// Calls only functions that are allowed in a signal handler.
void EndProcess(int) {
  constexpr char kText[] = "broken promise: an input takes no more than its processor time\n";
  if (write(STDERR_FILENO, kText, sizeof kText - 1) < 0) _exit(1);
  std::abort();
}

void StartTimer(int seconds) {
  itimerval timer{};
  timer.it_value.tv_sec = seconds;
  if (setitimer(ITIMER_PROF, &timer, nullptr) != 0) std::abort();
}

}  // namespace

TimeLimit::TimeLimit(int seconds) {
  std::signal(SIGPROF, EndProcess);
  StartTimer(seconds);
}

TimeLimit::~TimeLimit() {
  StartTimer(0);
}

}  // namespace svmscore::fuzz
