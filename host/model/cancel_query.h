// MCCommon_850::MCQueryCancel: how a long computation asks whether its user wants it to stop.
#ifndef HOST_MODEL_CANCEL_QUERY_H_
#define HOST_MODEL_CANCEL_QUERY_H_

namespace MCCommon_850 {

// Implemented by an embedding program.
// [one thread] the one that computes. Owns: the program. Lives: as long as the computation. Fails:
// never.
class MCQueryCancel {
 public:
  virtual ~MCQueryCancel() = default;
  // True once the user has asked for the computation to stop.
  virtual bool IsCancelled() = 0;
};

}  // namespace MCCommon_850

#endif  // HOST_MODEL_CANCEL_QUERY_H_
