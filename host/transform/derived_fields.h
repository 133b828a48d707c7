// The derived fields of a document as a flat list of steps.
#ifndef HOST_TRANSFORM_DERIVED_FIELDS_H_
#define HOST_TRANSFORM_DERIVED_FIELDS_H_

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/model/score_case_record.h"
#include "host/model/score_dict_var.h"
#include "host/text/api.h"
#include "host/transform/expression.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"

namespace svmscore::transform {

class Program;

// The working memory of one case: slots for the values of derived fields (first) and inputs, and
// the results as the host's value objects.
// [one thread] for each object. Owns: the scratch its results. Lives: the program, longer than the
// scratch; results, until the next case. Fails: std::bad_alloc; what only reads, never.
class SVMSCORE_HOST_API Scratch {
 public:
  explicit Scratch(const Program& program);
  ~Scratch();

  // The value of a derived field by its position; null where it is missing, or not computed because
  // nothing needs it.
  const MCZandor_850::ScoreValue* Result(std::size_t position) const { return results_[position]; }
  const Value& Slot(std::size_t slot) const { return slots_[slot]; }

 private:
  friend class Program;

  // The objects that hold results; created at first use.
  struct Holder {
    std::unique_ptr<MCZandor_850::NumericValue> number;
    std::unique_ptr<MCZandor_850::StringValue> text;
    const MCZandor_850::ScoreValue* Hold(const Value& value, FieldType type);
  };

  std::vector<Value> slots_;
  std::vector<Holder> holders_;  // one for each step
  std::vector<const MCZandor_850::ScoreValue*> results_;
  Arena arena_;
};

// Computes the needed derived fields of a case in an order in which every field follows those that
// it is computed from. Immutable.
// [any thread], each with its own scratch. Lives: variables, longer than the program; what getters
// return, as long as the program. Fails: the constructor and Evaluate by std::bad_alloc, the others
// never.
class SVMSCORE_HOST_API Program {
 public:
  struct Input {
    const MCZandor_850::ScoreDictVar* var;
    int slot;
  };
  struct Step {
    int slot;  // the position of the derived field
    FieldType type;
    std::string name;
    std::shared_ptr<const ValueOrder> order;  // null unless the field lists its values in order
    std::vector<int> reads;  // the slots of the fields that it is computed from directly
  };

  // `expressions` are those of all derived fields, by position; `steps` are the fields that are
  // computed.
  Program(std::vector<std::unique_ptr<Expression>> expressions, std::vector<Input> inputs,
          std::vector<Step> steps, std::size_t slots);
  ~Program();

  // Computes one case. Allocates nothing unless texts are made or grow.
  // Lives: the record and its texts for the call; results in `scratch`, until its next case.
  void Evaluate(const MCZandor_850::ScoreCaseRecord& record, Scratch& scratch) const;

  const std::vector<Step>& Steps() const { return steps_; }
  // The step that computes a slot; null for the slot of an input, and where nothing needs the
  // field.
  const Step* FindStep(int slot) const;
  const std::vector<Input>& Inputs() const { return inputs_; }
  // The input variables that the computed fields read, each once.
  const std::vector<const MCZandor_850::ScoreDictVar*>& NeededInputs() const { return needed_; }
  std::size_t SlotCount() const { return slot_count_; }
  std::size_t DerivedCount() const { return expressions_.size(); }

 private:
  // Writes one line to the log for a field whose fractions are rounded because it is an integer.
  void TellRounding(std::size_t step, const Value& value) const;

  std::vector<std::unique_ptr<Expression>> expressions_;
  std::vector<Input> inputs_;
  std::vector<const MCZandor_850::ScoreDictVar*> needed_;  // their variables
  std::vector<Step> steps_;
  std::vector<std::size_t> step_of_;  // of each derived field; steps_.size() where there is none
  std::size_t slot_count_;
  std::unique_ptr<std::atomic<bool>[]> told_;  // one for each step
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_DERIVED_FIELDS_H_
