// MCCommon_850::MCQueryCancel: how a long computation asks whether its user wants it to stop.
#ifndef HOST_MODEL_CANCEL_QUERY_H_
#define HOST_MODEL_CANCEL_QUERY_H_

namespace MCCommon_850 {

// Implemented by an embedding program, which keeps ownership. The computation asks from the thread
// that it runs on.
class MCQueryCancel {
 public:
  virtual ~MCQueryCancel() = default;
  // True once the user asked for the computation to stop.
  virtual bool IsCancelled() = 0;
};

}  // namespace MCCommon_850

#endif  // HOST_MODEL_CANCEL_QUERY_H_
