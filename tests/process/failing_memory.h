// Makes allocations of the whole test program fail on demand, and counts those not yet freed.
#ifndef TESTS_PROCESS_FAILING_MEMORY_H_
#define TESTS_PROCESS_FAILING_MEMORY_H_

namespace svmscore_test {

enum class Failing { kOne, kAllFromThere };

// While it lives, the n-th call of operator new (from 1) throws std::bad_alloc, and with
// kAllFromThere every later one too. Counts all threads together; one at a time.
class FailingMemory {
 public:
  FailingMemory(long n, Failing failing);
  ~FailingMemory();
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
};

// Calls of operator new since the last FailingMemory began.
long Allocations();
// The number of blocks that operator new has returned and operator delete has not freed.
long HeldAllocations();

}  // namespace svmscore_test

#endif  // TESTS_PROCESS_FAILING_MEMORY_H_
