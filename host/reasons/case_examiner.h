// Finds out why a case failed, after the fact.
#ifndef HOST_REASONS_CASE_EXAMINER_H_
#define HOST_REASONS_CASE_EXAMINER_H_

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/load/loader.h"
#include "host/model/score_case_record.h"
#include "host/reasons/reason.h"
#include "host/text/api.h"

namespace svmscore::reasons {

// What a case gives for an input, before it is treated as the model says.
struct Given {
  std::string_view text;  // may be empty where it is missing
  bool missing = false;   // to the caller: an empty cell, a null, a text that it takes as missing
  // What the record was set from where that is another spelling, as of a number with a decimal
  // comma; else empty.
  std::string_view read = {};
};

// How a failed case ended.
struct Ended {
  long status = 0;        // the case's
  long model_status = 0;  // the same before output fields were computed: 0 where only those failed
  // The model's own, before the rules of the target: 0 where only its result was not usable.
  long own_status = 0;
  // The model's decision values where the case got as far as that: value m is at
  // decisions[m * stride]. Null where it did not, or where they are not known: then they are
  // computed once more, if they are what is left.
  const double* decisions = nullptr;
  std::size_t stride = 0;
  // The output field that has an invalid value; nothing where none has.
  std::optional<std::size_t> output_field;
};

// What is known of a model beforehand. Immutable.
// [any thread], each with records of its own. Lives: the model, and the variables, longer than this
// object; reasons, as Reason says. Fails: std::bad_alloc.
class SVMSCORE_HOST_API CaseExaminer {
 public:
  // `variables` are those of the records, in their order. [one thread] for each document.
  CaseExaminer(const LoadedModel& loaded,
               const std::vector<const MCZandor_850::ScoreDictVar*>& variables);
  ~CaseExaminer();

  // Everything that is enough to fail the case, in the order of the inputs and then of the vector
  // positions, but not more than a thousand reasons; never empty. `record` holds the failed case,
  // with the layout of `variables`, as it was set for scoring, and `given` what it was set from,
  // value by value.
  std::vector<Reason> Examine(const MCZandor_850::InputCaseRecord& record, const Given* given,
                              const Ended& ended) const;

 private:
  class Examination;

  const LoadedModel& loaded_;
  std::vector<const MCZandor_850::ScoreDictVar*> fields_;  // of the vector positions, each once
  std::unordered_map<const MCZandor_850::ScoreDictVar*, std::size_t> positions_;
  std::unordered_set<std::string_view> names_;  // of the variables
  std::unordered_map<int, const MCZandor_850::ScoreDictVar*> inputs_of_slots_;
  std::vector<std::string> decision_names_;  // one for each decision value
};

}  // namespace svmscore::reasons

#endif  // HOST_REASONS_CASE_EXAMINER_H_
