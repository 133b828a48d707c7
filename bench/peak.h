// The peak speed of this CPU's arithmetic, measured in the same run as the code compared with it.
#ifndef BENCH_PEAK_H_
#define BENCH_PEAK_H_

#include <cstddef>

#include "svm/kernel/packed/layout.h"

namespace bench {

// Computes `rounds` * PeakTerms() terms of a distance (subtract, multiply, add) or of a product
// (multiply, add) in registers, in enough independent sums to hide the latencies. Returns their
// sum, so that they are not optimised away.
double DistanceTerms(MCSVM_700::packed::Isa isa, std::size_t rounds);
double ProductTerms(MCSVM_700::packed::Isa isa, std::size_t rounds);
std::size_t TermsOfARound(MCSVM_700::packed::Isa isa);

}  // namespace bench

#endif  // BENCH_PEAK_H_
