// The working memory of one thread that scores.
#ifndef SVM_MODEL_WORKSPACE_H_
#define SVM_MODEL_WORKSPACE_H_

#include <vector>

#include "svm/kernel/packed/aligned_buffer.h"
#include "svm/kernel/packed/packed_engine.h"
#include "svm/model/model.h"

namespace MCZandor_850 {

// Only memory is kept from one case to the next, so all models of a thread share one.
struct SVMModel::Workspace {
  MCSVM_700::PackedScratch scratch;
  std::vector<double> decisions;  // of one case
  std::vector<double> percents;   // likewise
  // Of a batch:
  std::vector<int> idx;
  std::vector<double> val;
  MCSVM_700::packed::AlignedBuffer columns;  // [decisions][cases]
};

}  // namespace MCZandor_850

#endif  // SVM_MODEL_WORKSPACE_H_
