// Scores one case at a time, and looks up what came of it by name.
#ifndef TOOLS_VERIFY_VERIFY_CASE_H_
#define TOOLS_VERIFY_VERIFY_CASE_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/load/loader.h"
#include "host/model/score_case_record.h"
#include "host/output/output_plan.h"
#include "host/reasons/case_examiner.h"
#include "host/transform/derived_fields.h"
#include "host/transform/value/value.h"

namespace svmscore::tools {

// A value that every scored case has, or lacks.
struct Quantity {
  enum class Kind {
    kOutputField,
    kPrediction,
    kConfidence,
    kProbability,
    kDeviation,
    kLower,
    kUpper,
    kStatus,
    kDerived,
    kDecision,
  };
  std::string name;
  Kind kind = Kind::kPrediction;
  int index = 0;          // of the output field, category, derived field or machine; -1: no machine
  bool is_label = false;  // a category: compared as it is, whatever tolerance is allowed
};

// Used by one thread. The model must outlive it.
class VerifyCase {
 public:
  // Where a case keeps the value of an input.
  struct Input {
    bool extra;
    std::size_t position;
  };

  explicit VerifyCase(const LoadedModel& loaded);
  ~VerifyCase();
  VerifyCase(const VerifyCase&) = delete;
  VerifyCase& operator=(const VerifyCase&) = delete;

  // The fields that a case can give a value: the model's inputs, and what output fields
  // read beside them.
  std::optional<Input> FindInput(const std::string& name) const;
  bool IsInput(const std::string& name) const { return inputs_.contains(name); }
  // Makes every input missing.
  void Clear();
  // The variable behind an input.
  const MCZandor_850::ScoreDictVar& VariableOf(const Input& input);
  // An empty text is a missing number or an empty text. `given` is how the case spells it, where
  // that is otherwise; else empty.
  void Set(const Input& input, std::string_view text, std::string_view given = {});
  // Makes an input missing that was given a text which means so.
  void SetMissing(const Input& input, std::string_view text);
  void Score();

  long Status() const { return outcome_.status; }
  // Why the case failed, in words. REQUIRES: its status is not 0.
  std::string WhyFailed();
  // The value that the case scored last has; valid until the next.
  transform::Value Read(const Quantity& quantity);
  std::string TextOf(const transform::Value& value);

  std::optional<Quantity> FindOutputField(const std::string& name) const;
  // A derived field that scoring computes.
  std::optional<Quantity> FindDerived(const std::string& name) const;
  // A column by the plain name that the program gives it. A machine that the model lacks is found
  // too where the name is that of a decision value between categories, and has no value.
  std::optional<Quantity> FindPlainColumn(const std::string& name) const;
  // The prediction, under the name of the target.
  Quantity Prediction() const;
  // What a user of the document gets: its final output fields, or else the prediction.
  std::vector<Quantity> Results() const;

 private:
  struct GivenText {
    std::string text;
    bool missing = true;
    std::string read;  // where it is another spelling
  };

  Quantity FromField(std::size_t field) const;
  transform::Value Derived(int position);
  transform::Value Decision(int machine);
  std::optional<Quantity> FindDecision(const std::string& name) const;

  const LoadedModel& loaded_;
  MCZandor_850::InputCaseRecord record_;
  output::OutputScratch scratch_;
  std::unordered_map<std::string, Input> inputs_;
  std::unordered_map<std::string, std::size_t> outputs_;  // by name
  std::unordered_map<std::string, int> derived_slots_;    // by name
  std::unique_ptr<MCZandor_850::ScoreResult> result_;
  // Of the last case; null until it is asked for.
  std::unique_ptr<MCZandor_850::DerivedCaseRecord> derived_;
  output::Outcome outcome_;
  std::optional<std::vector<double>> decisions_;  // of the last case; empty until one is asked for
  long own_status_ = 0;                           // the model's own
  long model_status_ = 0;         // of the outcome before output fields were computed
  std::vector<GivenText> given_;  // for the inputs of the record
  std::unique_ptr<reasons::CaseExaminer> examiner_;  // null until a case has failed
};

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_CASE_H_
