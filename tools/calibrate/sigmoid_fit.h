// Fitting the sigmoid that turns decision values into probabilities.
#ifndef TOOLS_CALIBRATE_SIGMOID_FIT_H_
#define TOOLS_CALIBRATE_SIGMOID_FIT_H_

#include <cstddef>
#include <vector>

namespace svmscore::tools {

// p = 1 / (1 + exp(a f + b)) of a decision value f.
struct Sigmoid {
  double a = 0.0;
  double b = 0.0;
};

// Decision values, and for each whether the case is of the category whose probability is wanted:
// parallel lists.
struct SigmoidCases {
  std::vector<double> decisions;
  std::vector<unsigned char> positive;

  void Add(double decision, bool is_positive) {
    decisions.push_back(decision);
    positive.push_back(is_positive ? 1 : 0);
  }
};

// The minimum over a and b of
//   F = -sum_i t_i ln p_i + (1 - t_i) ln(1 - p_i),
//   t_i = (N+ + 1) / (N+ + 2) for the N+ positive cases, 1 / (N- + 2) for the N- others
// (J. Platt, Probabilistic outputs for support vector machines, 1999), found by Newton's method
// with a backtracking line search (H.-T. Lin, C.-J. Lin, R. C. Weng, A note on Platt's
// probabilistic outputs for support vector machines, Machine Learning 68, 2007: with their ridge of
// 1e-12 and in their form of F, in which nothing cancels or overflows). It works on the
// standardised values u = (f - mean) / deviation, so that the scale of f plays no part.
//
// It goes on until both derivatives of F with respect to the parameters on u are at most 1e-12 a
// case, or rounding leaves no better point. Those with respect to a and b on f are larger where a
// common offset of the decision values exceeds their deviation: with 1e9 of it, rounding a and b
// leaves about 1e-8 a case. Sums run in the order of the cases. Of equal decision
// values a is 0, which is one of many minima with the same probability.
//
// REQUIRES: decision values are finite. [any thread] Fails: std::domain_error where no minimum is
// found to 1e-9 a case, as where the parameters overflow; std::bad_alloc.
Sigmoid FitSigmoid(const SigmoidCases& cases);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_SIGMOID_FIT_H_
