#include "tests/process/failing_memory.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long kNever = std::numeric_limits<long>::max();
std::atomic<long> calls{0};
std::atomic<long> held{0};
std::atomic<long> first_failing{kNever};
std::atomic<long> last_failing{kNever};

void* Counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  held.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

void CountCall() {
  const long call = calls.fetch_add(1, std::memory_order_relaxed) + 1;
  if (call >= first_failing && call <= last_failing) throw std::bad_alloc();
}

void Free(void* memory) {
  if (memory != nullptr) held.fetch_sub(1, std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

// The other forms call these; the address sanitizer's form without exceptions would not.
void* operator new(std::size_t size) {
  CountCall();
  return Counted(std::malloc(size == 0 ? 1 : size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  CountCall();
  const auto unit = static_cast<std::size_t>(alignment);
  return Counted(std::aligned_alloc(unit, (size + unit - 1) / unit * unit));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept try {
  return operator new(size);
} catch (const std::bad_alloc&) {
  return nullptr;
}
void operator delete(void* memory) noexcept {
  Free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  Free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  Free(memory);
}

namespace svmscore_test {

FailingMemory::FailingMemory(long n, Failing failing) {
  calls = 0;
  last_failing = failing == Failing::kOne ? n : kNever;
  first_failing = n;
}

FailingMemory::~FailingMemory() {
  first_failing = kNever;
}

long Allocations() {
  return calls;
}

long HeldAllocations() {
  return held;
}

}  // namespace svmscore_test
