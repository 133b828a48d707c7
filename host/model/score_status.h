// MCScore::MCStatus: how scoring one case ended.
#ifndef HOST_MODEL_SCORE_STATUS_H_
#define HOST_MODEL_SCORE_STATUS_H_

namespace MCScore {

// Code of a case that cannot be scored for lack of a record, of model data, of a target or of an
// input value.
inline constexpr long kCannotScore = 90029;
// Code of a case with an invalid input value, or with no decidable outcome.
inline constexpr long kInvalidValue = 90027;

// A value type: copied freely, owns nothing.
class MCStatus {
 public:
  MCStatus() = default;
  // `flag` false: an error. `flag` true: a remark that does not stop the case.
  MCStatus(long code, bool flag) : code_(code), error_(!flag) {}

  long GetErrorCode() const { return code_; }
  bool IsError() const { return error_; }

 private:
  long code_ = 0;
  bool error_ = false;
};

}  // namespace MCScore

#endif  // HOST_MODEL_SCORE_STATUS_H_
