// An input that never ends, to test that the time limit of the other programs reports it.
#include <cstddef>
#include <cstdint>

#include "fuzz/time_limit.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const svmscore::fuzz::TimeLimit limit(1);
  for (volatile bool ended = size == 0 || data[0] == '\n'; !ended;) {
  }
  return 0;
}
