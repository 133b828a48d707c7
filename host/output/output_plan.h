// The output fields of a document, prepared once and evaluated case by case.
#ifndef HOST_OUTPUT_OUTPUT_PLAN_H_
#define HOST_OUTPUT_OUTPUT_PLAN_H_

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/model/score_case_record.h"
#include "host/model/score_model.h"
#include "host/output/note.h"
#include "host/output/target_rules.h"
#include "host/text/api.h"
#include "host/transform/expression.h"
#include "host/transform/transformation_dictionary.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"

namespace svmscore::output {

// What an output field takes its value from.
enum class Feature {
  kPredictedValue,
  kDisplayValue,
  kProbability,
  kResidual,
  kStandardDeviation,
  kIntervalLower,
  kIntervalUpper,
  kExpression,  // transformedValue and decision
  kNothing,     // a feature that a support vector machine does not compute: always missing
};

struct OutputField {
  std::string name;
  Feature feature = Feature::kPredictedValue;
  std::optional<FieldType> type;  // nothing: the type of its expression's value in each case
  bool is_final = true;           // false: seen by later fields only, and by verification
};

class OutputScratch;

// Made for a model and its document. Immutable. [any thread], each with its own scratch. Lives: the
// model, longer than the plan; what getters return, as long as the plan, but elements in notes only
// as long as the document. Fails: Evaluate and ReadInputs by std::bad_alloc; getters never.
class SVMSCORE_HOST_API OutputPlan {
 public:
  // Reads Targets and Output of the model in the document. An element that is wrong or not
  // supported (an expression that refers to an unknown or later field, a name that is used twice)
  // is refused if `faults` says so; otherwise it is noted, an output field stays empty, and an
  // attribute of a target is ignored. With `as_written`, percentages are in the order in which the
  // model's results hold them. [one thread] for each document. Fails: SSException at an element
  // that is refused; std::bad_alloc.
  OutputPlan(const MCZandor_850::ScoreModel& model, const xercesc::DOMDocument* document,
             Faults faults = Faults::kRefuse, bool as_written = false);
  ~OutputPlan();
  OutputPlan(const OutputPlan&) = delete;
  OutputPlan& operator=(const OutputPlan&) = delete;

  const TargetRules& Targets() const { return targets_; }
  // In document order; empty where the document declares none.
  const std::vector<OutputField>& Fields() const { return fields_; }
  // Positions of the fields that are final results.
  const std::vector<int>& FinalFields() const { return final_; }
  const std::vector<Note>& Notes() const { return notes_; }

  // The active inputs that expressions read directly; a case needs them like the model's own.
  const std::vector<const MCZandor_850::ScoreDictVar*>& NeededInputs() const { return needed_; }
  // Other fields of the mining schema that output fields read: the target, for a residual, and
  // supplementary fields. A case may lack them, and their invalid values count as missing.
  const std::vector<const MCZandor_850::ScoreDictVar*>& ExtraInputs() const { return extra_; }

  // Computes the fields of one case, whose inputs are `record` and the extra inputs of `scratch`.
  // They are all missing where the case failed. A field whose value is invalid is missing; the
  // others keep theirs. Returns the status of the case: that of `outcome`, or 90027 where that is 0
  // and a field is invalid. Allocates nothing unless texts are made or grow.
  // Lives: arguments for the call; cells in `scratch`, as it says.
  long Evaluate(const Outcome& outcome, const MCZandor_850::ScoreCaseRecord& record,
                OutputScratch& scratch) const;

  // The same in two steps, for cases whose records hold the next case by the time their outcomes
  // are known. ReadInputs writes what fields depend on besides the outcome and the extra inputs:
  // InputCount() values at `inputs`, with their texts copied into `texts`.
  std::size_t InputCount() const { return reads_.size() + derived_.size(); }
  void ReadInputs(const MCZandor_850::ScoreCaseRecord& record, transform::Value* inputs,
                  transform::Arena& texts) const;
  long Evaluate(const Outcome& outcome, const transform::Value* inputs,
                OutputScratch& scratch) const;

 private:
  friend class OutputScratch;
  friend class OutputReader;

  // What evaluation needs to know of a field beyond what Fields() shows.
  struct Step {
    int category = -1;  // of the target; -1: the predicted one
    std::unique_ptr<transform::Expression> expression;
    std::vector<transform::Value> decisions;
  };
  // A field of the case and the slot that it is read into.
  struct Read {
    const MCZandor_850::ScoreDictVar* var;
    int slot;
  };
  struct ReadDerived {
    std::size_t position;  // of the derived field
    int slot;
  };

  static transform::Value Copied(const transform::Value& value, transform::Arena& texts);
  // Writes the inputs like ReadInputs, but texts stay where they are, in the record and in the
  // object returned.
  std::unique_ptr<MCZandor_850::DerivedCaseRecord> GatherInputs(
      const MCZandor_850::ScoreCaseRecord& record, transform::Value* inputs,
      transform::Arena& texts) const;
  long Compute(const Outcome& outcome, const transform::Value* inputs,
               OutputScratch& scratch) const;
  transform::Value ComputeField(std::size_t field, const Outcome& outcome,
                                const transform::Frame& frame) const;
  transform::Value Residual(const Step& step, const Outcome& outcome,
                            const transform::Frame& frame) const;
  void TellDecision(std::size_t field, const transform::Value& value) const;

  // Notes on targets come before those on output fields.
  std::vector<Note> notes_;
  TargetRules targets_;
  transform::Arena pool_;  // texts of decisions
  std::vector<OutputField> fields_;
  std::vector<Step> steps_;
  std::vector<int> final_;
  std::vector<const MCZandor_850::ScoreDictVar*> needed_;
  std::vector<const MCZandor_850::ScoreDictVar*> extra_;
  std::vector<Read> reads_;        // from the case's record
  std::vector<Read> extra_reads_;  // from the scratch, in the order of `extra_`
  std::vector<ReadDerived> derived_;
  // Null unless expressions read derived fields.
  const MCZandor_850::TransformationDictionary* transformations_ = nullptr;
  int prediction_slot_ = 0;  // those before it belong to the output fields
  int actual_slot_ = -1;     // the target's own value
  std::size_t slot_count_ = 0;
  std::unique_ptr<std::atomic<bool>[]> told_;  // one for each field
};

// The cells of one case.
// [one thread] for each object. Owns: the scratch its cells. Lives: the plan, longer than the
// scratch; cells and their texts, until the case's record or the scratch takes the next case.
// Fails: the constructor and TextOf by std::bad_alloc; the rest never.
class SVMSCORE_HOST_API OutputScratch {
 public:
  // `replace_missing` as for the record of the case.
  OutputScratch(const OutputPlan& plan, bool replace_missing);
  ~OutputScratch();

  // The values of the plan's extra inputs, in their order: filled by the caller before Evaluate.
  MCZandor_850::InputCaseRecord& Extras() { return extras_; }
  // The value of an output field, of its type. REQUIRES: Evaluate was called.
  const transform::Value& Cell(std::size_t field) const { return slots_[field]; }
  // The first field that was invalid and gave the case its status, where Evaluate says 90027 and
  // the outcome did not.
  std::size_t FirstInvalid() const { return first_invalid_; }
  // A cell as text, for dates and times too.
  std::string_view TextOf(const transform::Value& value);

 private:
  friend class OutputPlan;

  std::vector<transform::Value> slots_;
  std::size_t first_invalid_ = 0;
  transform::Arena arena_;
  std::vector<transform::Value> inputs_;
  std::unique_ptr<MCZandor_850::DerivedCaseRecord> derived_;  // holds texts of the inputs
  MCZandor_850::InputCaseRecord extras_;
};

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_OUTPUT_PLAN_H_
