// The output fields of a document, worked out once and evaluated case by case.
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
  std::optional<FieldType> type;  // nothing: that of its expression, case by case
  bool is_final = true;           // false: seen by later fields only, and by verification
};

class OutputScratch;

// Belongs to a model, which must outlive it. Immutable: any number of threads, each with a scratch
// of its own.
class SVMSCORE_HOST_API OutputPlan {
 public:
  // Reads Targets and Output of the model that the document holds. For what is wrong or not
  // supported throws an SSException, with the element at fault, where `faults` says so: an
  // expression that refers to nothing or to a later field, a name that is used twice. Else that is
  // a note, the field stays empty, and the value of a target counts for nothing. With `as_written`
  // percentages are in the order in which the model's results hold them.
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

  // The active inputs that expressions read directly: cases need them as they need the model's own.
  const std::vector<const MCZandor_850::ScoreDictVar*>& NeededInputs() const { return needed_; }
  // Other fields of the mining schema that output fields read: the target, for a residual, and
  // supplementary fields. A case may lack them, and invalid values of theirs count as missing.
  const std::vector<const MCZandor_850::ScoreDictVar*>& ExtraInputs() const { return extra_; }

  // Computes the fields of one case, whose inputs are `record` and the extra inputs of `scratch`.
  // They are all missing where the case failed. A field that comes to an invalid value is missing,
  // and the others stay. Returns the status of the case: that of `outcome`, or where that is 0
  // and there is such a field 90027. Allocates nothing unless texts are made or grow.
  long Evaluate(const Outcome& outcome, const MCZandor_850::ScoreCaseRecord& record,
                OutputScratch& scratch) const;

  // The same in two steps, for cases whose records have moved on when their outcomes are known.
  // What fields depend on of a case besides its outcome and the extra inputs: InputCount() values
  // at `inputs`, whose texts are copied into `texts`.
  std::size_t InputCount() const { return reads_.size() + derived_.size(); }
  void ReadInputs(const MCZandor_850::ScoreCaseRecord& record, transform::Value* inputs,
                  transform::Arena& texts) const;
  long Evaluate(const Outcome& outcome, const transform::Value* inputs,
                OutputScratch& scratch) const;

 private:
  friend class OutputScratch;
  friend class OutputReader;

  // What evaluation needs of a field beyond what it shows.
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
  // The inputs as ReadInputs leaves them, but for texts: those stay where they are, in the record
  // and in what is returned.
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

  // Declared first: the fields are read by it, and its notes come first.
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
  std::unique_ptr<std::atomic<bool>[]> told_;  // one a field
};

// The cells of one case. One thread at a time.
class SVMSCORE_HOST_API OutputScratch {
 public:
  // `replace_missing` as for the record of the case.
  OutputScratch(const OutputPlan& plan, bool replace_missing);
  ~OutputScratch();

  // The values of the plan's extra inputs, in their order: filled by the caller before Evaluate.
  MCZandor_850::InputCaseRecord& Extras() { return extras_; }
  // The value of an output field, of its type. Texts stay until the record or this object takes the
  // next case. REQUIRES: Evaluate was called.
  const transform::Value& Cell(std::size_t field) const { return slots_[field]; }
  // The cell of a date or a time as text, and of any other value; valid like the cell.
  std::string_view TextOf(const transform::Value& value);

 private:
  friend class OutputPlan;

  std::vector<transform::Value> slots_;
  transform::Arena arena_;
  std::vector<transform::Value> inputs_;
  std::unique_ptr<MCZandor_850::DerivedCaseRecord> derived_;  // holds texts of the inputs
  MCZandor_850::InputCaseRecord extras_;
};

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_OUTPUT_PLAN_H_
