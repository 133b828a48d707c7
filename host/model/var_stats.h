// What is known of a variable beyond its declaration: the value that replaces a missing one.
#ifndef HOST_MODEL_VAR_STATS_H_
#define HOST_MODEL_VAR_STATS_H_

#include <memory>

#include "host/model/score_value.h"
#include "host/text/api.h"

namespace MCZandor_850 {

class SVMSCORE_HOST_API VarStats {
 public:
  VarStats();
  ~VarStats();

  // Keeps a copy of its own; null takes the replacement away.
  void SetMissingReplacement(const ScoreValue* value);
  // Null where there is none. Owned by this record.
  const ScoreValue* GetMissingReplacement() const { return replacement_.get(); }

 private:
  std::unique_ptr<ScoreValue> replacement_;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_VAR_STATS_H_
