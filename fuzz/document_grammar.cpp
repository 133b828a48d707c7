// Documents of the grammar, some of them damaged.
#include "fuzz/checked_scoring.h"
#include "fuzz/grammar.h"
#include "fuzz/put_through.h"
#include "fuzz/time_limit.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  svmscore::fuzz::ThePlugin();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace svmscore::fuzz;
  const TimeLimit limit;
  Choices choices(data, size);
  Choices cases = choices.SplitOff(1, 5);
  Choices damage = choices.SplitOff(1, 8);
  Node document = Document(choices);
  Mutate(document, damage);
  PutThrough(XmlOf(document), cases);
  return 0;
}
