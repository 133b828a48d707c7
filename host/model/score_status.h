// MCScore::MCStatus: how scoring one case ended.
#ifndef HOST_MODEL_SCORE_STATUS_H_
#define HOST_MODEL_SCORE_STATUS_H_

namespace MCScore {

// Code of a case that cannot be scored because a record, model data, the target or an input value
// is missing.
inline constexpr long kCannotScore = 90029;
// Code of a case with an invalid input value, or whose outcome cannot be decided.
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
