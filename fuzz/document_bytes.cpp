// Any bytes as a document.
#include "fuzz/checked_scoring.h"
#include "fuzz/put_through.h"
#include "fuzz/time_limit.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  svmscore::fuzz::ThePlugin();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore::fuzz;
  const TimeLimit limit;
  // The end of the document also decides its cases.
  Choices cases = Choices(data, size).SplitOff(1, 4);
  PutThrough({reinterpret_cast<const char*>(data), size}, cases);
  return 0;
}
