// MCSVM_700::SVMCancelInfo: whether a computation was asked to stop.
#ifndef SVM_LEARN_CANCEL_INFO_H_
#define SVM_LEARN_CANCEL_INFO_H_

#include "host/model/cancel_query.h"

namespace MCSVM_700 {

// Borrows its query, which may be null. Once cancelled it stays so and does not ask again.
class SVMCancelInfo {
 public:
  explicit SVMCancelInfo(MCCommon_850::MCQueryCancel* query) : query_(query) {}

  bool IsCancel() {
    if (!cancelled_ && query_ != nullptr) cancelled_ = query_->IsCancelled();
    return cancelled_;
  }
  void SetCancel() { cancelled_ = true; }
  // Does not change the answer so far.
  void SetCancelPtr(MCCommon_850::MCQueryCancel* query) { query_ = query; }

 private:
  MCCommon_850::MCQueryCancel* query_;
  bool cancelled_ = false;
};

}  // namespace MCSVM_700

#endif  // SVM_LEARN_CANCEL_INFO_H_
