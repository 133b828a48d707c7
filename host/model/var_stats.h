// What is known of a variable beyond its declaration: the value that replaces a missing one.
#ifndef HOST_MODEL_VAR_STATS_H_
#define HOST_MODEL_VAR_STATS_H_

#include <memory>

#include "host/model/score_value.h"
#include "host/text/api.h"

namespace MCZandor_850 {

// [set-up] Owns: the variable that it is given to. Fails: std::bad_alloc; getters, for
// [any thread], never.
class SVMSCORE_HOST_API VarStats {
 public:
  VarStats();
  ~VarStats();

  // Keeps a copy of `value`; null removes the replacement.
  void SetMissingReplacement(const ScoreValue* value);
  // Null if absent. Owns: this record. Lives: until it is set again.
  const ScoreValue* GetMissingReplacement() const { return replacement_.get(); }

 private:
  std::unique_ptr<ScoreValue> replacement_;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_VAR_STATS_H_
