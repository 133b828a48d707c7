// Checks on the promises that a fuzzer tests.
#ifndef FUZZ_PROMISE_H_
#define FUZZ_PROMISE_H_

#include <cstdio>
#include <cstdlib>
#include <string>

namespace svmscore::fuzz {

// Ends the process, as any other fault would, unless the promise is kept.
inline void Promise(bool kept, const std::string& what) {
  if (kept) return;
  std::fprintf(stderr, "broken promise: %s\n", what.c_str());
  std::abort();
}

}  // namespace svmscore::fuzz

#endif  // FUZZ_PROMISE_H_
