// The position of a virtual operation in its class's table of operations.
#ifndef TESTS_SLOT_ORDER_H_
#define TESTS_SLOT_ORDER_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace svmscore_test {

// The slot of a virtual member function, from 0, by the C++ ABI of 64-bit x86 Linux: the first word
// of a pointer to one is 1 + its byte offset in the table. The destructor takes slots 0 and 1.
template <typename MemberFunction>
std::size_t SlotOf(MemberFunction function) {
  std::uintptr_t words[2];
  static_assert(sizeof function == sizeof words);
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / sizeof(void*);
}

}  // namespace svmscore_test

#endif  // TESTS_SLOT_ORDER_H_
