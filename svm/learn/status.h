// MCSvm::MCStatus: how a computation of the learner ended.
#ifndef SVM_LEARN_STATUS_H_
#define SVM_LEARN_STATUS_H_

#include <array>
#include <cstdint>

namespace MCSvm {

// A value type; MCStatus() is success.
class MCStatus {
 public:
  MCStatus() = default;
  // `warning` true: a warning. `warning` false: an error, also for code 0.
  MCStatus(long code, bool warning);

  long GetErrorCode() const { return code_; }
  bool IsOK() const { return severity_ == 0; }
  bool IsError() const { return severity_ < 0; }
  bool IsWarning() const { return severity_ > 0; }

  // Three slots of whole numbers and three of real ones for details. REQUIRES: i < 3.
  long GetDiscreteDatum(unsigned int i) const { return discrete_[i]; }
  void SetDiscreteDatum(unsigned int i, long value) { discrete_[i] = value; }
  double GetScaleDatum(unsigned int i) const { return scale_[i]; }
  void SetScaleDatum(unsigned int i, double value) { scale_[i] = value; }

  // Code, severity and all slots; a NaN in a slot equals nothing.
  bool operator==(const MCStatus& other) const;

 private:
  std::int64_t code_ = 0;
  std::int16_t severity_ = 0;  // 0 success, -1 error, 1 warning
  std::array<std::int64_t, 3> discrete_{};
  std::array<double, 3> scale_{};
};

}  // namespace MCSvm

#endif  // SVM_LEARN_STATUS_H_
