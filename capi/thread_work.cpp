#include "capi/thread_work.h"

#include <sched.h>

#include <algorithm>
#include <string>

#include "capi/call_error.h"
#include "capi/svmscore.h"

namespace svmscore::capi {
namespace {

// The cores that this process may use.
std::size_t CoreCount() {
  cpu_set_t cores;
  const bool known = sched_getaffinity(0, sizeof cores, &cores) == 0;
  return known ? static_cast<std::size_t>(std::max(CPU_COUNT(&cores), 1)) : 1;
}

}  // namespace

std::size_t ThreadsOf(int threads) {
  constexpr int kMost = 1024;
  if (threads == SVMSCORE_ALL_CORES) return CoreCount();
  if (threads < 0 || threads > kMost) {
    RefuseArgument("options.threads is " + std::to_string(threads), "options.threads",
                   "give a number up to 1024, or SVMSCORE_ALL_CORES");
  }
  return static_cast<std::size_t>(std::max(threads, 1));
}

}  // namespace svmscore::capi
