// The working memory of one thread that scores.
#ifndef SVM_MODEL_WORKSPACE_H_
#define SVM_MODEL_WORKSPACE_H_

#include <optional>
#include <vector>

#include "math/symmetric_matrix.h"
#include "svm/kernel/certified/certified_engine.h"
#include "svm/kernel/packed/aligned_buffer.h"
#include "svm/kernel/packed/packed_engine.h"
#include "svm/learn/multi_prob_learn.h"
#include "svm/model/model.h"

namespace MCZandor_850 {

// Only memory is kept from one case to the next, so all models of a thread share one.
struct SVMModel::Workspace {
  // What couples pairwise probabilities.
  struct Coupling {
    explicit Coupling(int classes) : matrix(classes, true), learner(nullptr, classes, matrix) {}
    Coupling(const Coupling&) = delete;
    Coupling& operator=(const Coupling&) = delete;

    MCMath_850::MCSymMatrix matrix;
    MCSVM_700::SVMMultiProbLearn learner;
  };

  MCSVM_700::PackedScratch scratch;
  MCSVM_700::CertifiedScratch certified;
  std::vector<double> decisions;           // of one case
  std::vector<double> percents;            // likewise
  std::vector<int> tickets;                // likewise: one for each category
  std::vector<std::vector<double>> pairs;  // likewise: pairwise probabilities
  std::optional<Coupling> coupling;        // of the last number of categories
  // Of a batch:
  std::vector<int> idx;
  std::vector<double> val;
  MCSVM_700::packed::AlignedBuffer columns;  // [decisions][cases]
};

}  // namespace MCZandor_850

#endif  // SVM_MODEL_WORKSPACE_H_
