// MCSVM_700::SVMMultiProbLearn: pairwise probabilities coupled into one probability per class.
#ifndef SVM_LEARN_MULTI_PROB_LEARN_H_
#define SVM_LEARN_MULTI_PROB_LEARN_H_

#include <iosfwd>
#include <vector>

#include "host/model/cancel_query.h"
#include "math/symmetric_matrix.h"
#include "svm/learn/cancel_info.h"
#include "svm/learn/status.h"

namespace MCSVM_700 {

// Minimises p'Qp over the vectors p of k entries that add up to 1, for
//   Q(i, i) = sum over t of r(t, i)^2,  Q(i, j) = -r(i, j) r(j, i)
// where r(i, j) is the probability of class i given that it is i or j. At the minimum all entries
// of Qp equal p'Qp; the iteration ends when none is further from it than 0.005 / k.
// T.-F. Wu, C.-J. Lin, R. C. Weng: Probability estimates for multi-class classification by pairwise
// coupling, JMLR 5 (2004), algorithm 2.
//
// Used by one thread. Zero diagonals and sums are not treated specially in divisions, so p may hold
// NaN.
class SVMMultiProbLearn {
 public:
  // Borrows both. `query` may be null. REQUIRES: Q has order k and outlives this object.
  SVMMultiProbLearn(MCCommon_850::MCQueryCancel* query, int k, MCMath_850::MCSymMatrix& Q);

  // Starts from the uniform vector. Makes at most 100 sweeps over the classes; stopping there is
  // not an error. Checks for a request to cancel before each sweep: error code 1, and p is that of
  // the previous sweep.
  MCSvm::MCStatus MultiLearning();
  // k entries after MultiLearning, none before.
  std::vector<double>& GetProbabilities() { return probabilities_; }
  // Sets this learner's status to that of a cancelled computation.
  void DoCancel();
  // Redirects the process's diagnostic stream to `os` meanwhile.
  void Display(std::ostream& os) const;

 private:
  void Sweep();
  void Normalise();

  MCSvm::MCStatus status_;
  SVMCancelInfo cancel_info_;
  int class_count_;
  MCMath_850::MCSymMatrix& matrix_;
  std::vector<double> probabilities_;
  std::vector<double> product_;  // Q p, after a sweep
};

}  // namespace MCSVM_700

#endif  // SVM_LEARN_MULTI_PROB_LEARN_H_
