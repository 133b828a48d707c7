// What this CPU's arithmetic can do at best, measured in the same run as what is compared with it.
#ifndef BENCH_PEAK_H_
#define BENCH_PEAK_H_

#include <cstddef>

#include "svm/kernel/packed/layout.h"

namespace bench {

// Forms `rounds` * PeakTerms() terms of a distance (subtract, multiply, add) or of a product
// (multiply, add) in registers, in as many independent sums as hide the latencies. Returns their
// sum, so that they are formed.
double DistanceTerms(MCSVM_700::packed::Isa isa, std::size_t rounds);
double ProductTerms(MCSVM_700::packed::Isa isa, std::size_t rounds);
std::size_t TermsOfARound(MCSVM_700::packed::Isa isa);

}  // namespace bench

#endif  // BENCH_PEAK_H_
