#include "svm/learn/multi_prob_learn.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <ostream>
#include <string>

#include "common/display.h"
#include "common/display_format.h"

namespace MCSVM_700 {
namespace {

constexpr int kMaxSweeps = 100;
constexpr double kToleranceTimesClasses = 0.005;
constexpr long kCancelled = 1;

}  // namespace

SVMMultiProbLearn::SVMMultiProbLearn(MCCommon_850::MCQueryCancel* query, int k,
                                     MCMath_850::MCSymMatrix& Q)
    : cancel_info_(query), class_count_(k), matrix_(Q) {
  const auto count = static_cast<std::size_t>(std::max(k, 0));
  probabilities_.reserve(count * (count + 1) / 2);
}

MCSvm::MCStatus SVMMultiProbLearn::MultiLearning() {
  MCSvm::MCStatus result;
  probabilities_.assign(static_cast<std::size_t>(std::max(class_count_, 0)), 1.0 / class_count_);
  const double tolerance = kToleranceTimesClasses / class_count_;
  product_.assign(probabilities_.size(), 0.0);
  for (int sweep = 1;; ++sweep) {
    if (cancel_info_.IsCancel()) {
      DoCancel();
      result = status_;
      return result;
    }
    Sweep();
    if (!matrix_.ComputeSV(probabilities_, product_)) break;
    const double form = matrix_.ComputeVSV(probabilities_);
    double largest = 0.0;
    for (const double entry : product_) largest = std::max(largest, std::abs(entry - form));
    if (tolerance > largest || sweep == kMaxSweeps) break;
  }
  if (!cancel_info_.IsCancel() && !status_.IsError()) status_ = result;
  return result;
}

// The order decides the bits: the quadratic form is that of the current p, and p is normalised
// again after every single class.
void SVMMultiProbLearn::Sweep() {
  for (int t = 0; t < class_count_; ++t) {
    double others = 0.0;
    for (int j = 0; j < class_count_; ++j) {
      if (j != t) others += matrix_.GetElem(t, j) * probabilities_[static_cast<std::size_t>(j)];
    }
    const double form = matrix_.ComputeVSV(probabilities_);
    probabilities_[static_cast<std::size_t>(t)] = (form - others) / matrix_.GetElem(t, t);
    Normalise();
  }
}

void SVMMultiProbLearn::Normalise() {
  double sum = 0.0;
  for (const double p : probabilities_) sum += p;
  for (double& p : probabilities_) p /= sum;
}

void SVMMultiProbLearn::DoCancel() {
  status_ = MCSvm::MCStatus(kCancelled, false);
}

void SVMMultiProbLearn::Display(std::ostream& os) const {
  os << "\tSVMMultiProbLearn Content display begin:" << std::endl;
  os << "Multi-class nubmer = " << std::to_string(class_count_);
  {
    const MCDisplay_850::ScopedOutStream redirected(os);
    matrix_.Display();
  }
  os << std::endl;
  for (std::size_t i = 0; i < probabilities_.size(); ++i) {
    os << "Class Index = " << std::to_string(i)
       << ",\tProbabitity = " << svmscore::display::General(probabilities_[i]) << std::endl;
  }
  os << "\tSVMMultiProbLearn Content display end." << std::endl;
}

}  // namespace MCSVM_700
