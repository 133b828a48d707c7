// Counts the allocations of the whole test program.
#ifndef TESTS_TRANSFORM_ALLOCATION_COUNT_H_
#define TESTS_TRANSFORM_ALLOCATION_COUNT_H_

namespace svmscore::transform {

// The number of calls of operator new so far.
long AllocationCount();

}  // namespace svmscore::transform

#endif  // TESTS_TRANSFORM_ALLOCATION_COUNT_H_
