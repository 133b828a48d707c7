#include "tools/verify/verify_case.h"

#include <algorithm>
#include <unordered_set>

#include "host/model/batch_model.h"
#include "host/model/score_status.h"
#include "host/output/decision_name.h"
#include "host/transform/transformation_dictionary.h"
#include "tools/base/case_columns.h"

namespace svmscore::tools {
namespace {

using Kind = Quantity::Kind;
using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreResult;
using MCZandor_850::ScoreValue;
using output::Feature;
using transform::Value;

bool ReplacesMissing(const LoadedModel& loaded) {
  return loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing;
}

Value Computed(double number) {
  return number == -1.0 ? Value::Missing() : Value::Double(number);
}

}  // namespace

VerifyCase::VerifyCase(const LoadedModel& loaded)
    : loaded_(loaded),
      record_(InputsOf(loaded), true, ReplacesMissing(loaded)),
      scratch_(*loaded.output, ReplacesMissing(loaded)),
      given_(record_.Size()) {
  for (std::size_t i = 0; i < record_.Size(); ++i) {
    inputs_.emplace(record_.Variable(i).GetName(), Input{false, i});
  }
  for (std::size_t i = 0; i < scratch_.Extras().Size(); ++i) {
    inputs_.emplace(scratch_.Extras().Variable(i).GetName(), Input{true, i});
  }
  // The first of a name counts.
  const auto& fields = loaded.output->Fields();
  for (std::size_t i = 0; i < fields.size(); ++i) outputs_.emplace(fields[i].name, i);
  const auto* dictionary = loaded.model->GetTransformationDictionary();
  if (dictionary == nullptr) return;
  for (const auto& step : dictionary->GetProgram().Steps()) {
    derived_slots_.emplace(step.name, step.slot);
  }
}

VerifyCase::~VerifyCase() = default;

void VerifyCase::Clear() {
  record_.Clear();
  scratch_.Extras().Clear();
  for (GivenText& given : given_) given = {};
}

std::optional<VerifyCase::Input> VerifyCase::FindInput(const std::string& name) const {
  const auto found = inputs_.find(name);
  return found == inputs_.end() ? std::nullopt : std::optional(found->second);
}

const ScoreDictVar& VerifyCase::VariableOf(const Input& input) {
  return (input.extra ? scratch_.Extras() : record_).Variable(input.position);
}

void VerifyCase::Set(const Input& input, std::string_view text, std::string_view given) {
  InputCaseRecord& record = input.extra ? scratch_.Extras() : record_;
  const bool missing = text.empty() && record.Variable(input.position).GetStorageType() == 0;
  if (!input.extra) {
    given_[input.position] = {std::string(given.empty() ? text : given), missing,
                              std::string(given.empty() ? given : text)};
  }
  if (missing) {
    record.SetMissing(input.position);
  } else {
    record.SetText(input.position, text);
  }
}

void VerifyCase::SetMissing(const Input& input, std::string_view text) {
  if (!input.extra) given_[input.position] = {std::string(text), true, {}};
  (input.extra ? scratch_.Extras() : record_).SetMissing(input.position);
}

std::string VerifyCase::WhyFailed() {
  std::vector<const ScoreDictVar*> variables;
  std::vector<reasons::Given> given;
  for (std::size_t i = 0; i < record_.Size(); ++i) {
    variables.push_back(&record_.Variable(i));
    given.push_back({given_[i].text, given_[i].missing, given_[i].read});
  }
  if (examiner_ == nullptr) {
    examiner_ = std::make_unique<reasons::CaseExaminer>(loaded_, variables);
  }
  reasons::Ended ended;
  ended.status = outcome_.status;
  ended.model_status = model_status_;
  ended.own_status = own_status_;
  ended.output_field = scratch_.FirstInvalid();
  return reasons::TextOf(examiner_->Examine(record_, given.data(), ended));
}

void VerifyCase::Score() {
  derived_.reset();
  decisions_.reset();
  MCScore::MCStatus status(MCScore::kInvalidValue, false);
  if (!record_.HasInvalid()) {
    ScoreResult* result = result_.release();
    status = loaded_.model->GetScore(&record_, result, false);
    result_.reset(result);
  }
  own_status_ = status.GetErrorCode();
  outcome_ = loaded_.output->Targets().Finish(status, result_.get());
  model_status_ = outcome_.status;
  outcome_.status = loaded_.output->Evaluate(outcome_, record_, scratch_);
}

Value VerifyCase::Read(const Quantity& quantity) {
  switch (quantity.kind) {
    case Kind::kOutputField:
      return scratch_.Cell(static_cast<std::size_t>(quantity.index));
    case Kind::kPrediction:
      return outcome_.prediction;
    case Kind::kConfidence:
      return Computed(outcome_.confidence);
    case Kind::kProbability: {
      const auto share = loaded_.output->Targets().ShareOf(outcome_, quantity.index);
      return share ? Value::Double(*share) : Value::Missing();
    }
    case Kind::kDeviation:
      return Computed(outcome_.std_dev);
    case Kind::kLower:
      return outcome_.has_interval ? Value::Double(outcome_.lower) : Value::Missing();
    case Kind::kUpper:
      return outcome_.has_interval ? Value::Double(outcome_.upper) : Value::Missing();
    case Kind::kStatus:
      return Value::Integer(outcome_.status);
    case Kind::kDerived:
      return Derived(quantity.index);
    case Kind::kDecision:
      return Decision(quantity.index);
  }
  return Value::Missing();
}

Value VerifyCase::Derived(int position) {
  derived_ =
      loaded_.model->GetTransformationDictionary()->GetValuesForDerivedVars(&record_, nullptr);
  return derived_->Values().Slot(static_cast<std::size_t>(position));
}

// As score writes it: also for a case that fails after its machines have decided.
Value VerifyCase::Decision(int machine) {
  auto* model = dynamic_cast<BatchModel*>(loaded_.model.get());
  if (model == nullptr || machine < 0) return Value::Missing();
  if (!decisions_) {
    decisions_.emplace();
    std::vector<double> entries(std::max<std::size_t>(model->EntryCount(), 1));
    if (!record_.HasInvalid() && !model->ReadCase(record_, false, entries.data(), 1).IsError()) {
      decisions_->resize(model->DecisionCount());
      long status = 0;
      BatchResults results;
      results.status = &status;
      results.decisions = decisions_->data();
      results.stride = 1;
      model->ScoreBatch({entries.data(), 1, 1}, results);
    }
  }
  const auto position = static_cast<std::size_t>(machine);
  return position < decisions_->size() ? Value::Double((*decisions_)[position]) : Value::Missing();
}

std::string VerifyCase::TextOf(const Value& value) {
  return std::string(scratch_.TextOf(value));
}

Quantity VerifyCase::FromField(std::size_t field) const {
  const output::OutputField& output = loaded_.output->Fields()[field];
  const bool classification =
      loaded_.output->Targets().GetScheme().method != output::Method::kRegression;
  return {output.name, Kind::kOutputField, static_cast<int>(field),
          classification && output.feature == Feature::kPredictedValue};
}

std::optional<Quantity> VerifyCase::FindOutputField(const std::string& name) const {
  const auto found = outputs_.find(name);
  return found == outputs_.end() ? std::nullopt : std::optional(FromField(found->second));
}

std::optional<Quantity> VerifyCase::FindDerived(const std::string& name) const {
  const auto found = derived_slots_.find(name);
  if (found == derived_slots_.end()) return std::nullopt;
  return Quantity{name, Kind::kDerived, found->second, false};
}

std::optional<Quantity> VerifyCase::FindDecision(const std::string& name) const {
  const auto* model = dynamic_cast<const BatchModel*>(loaded_.model.get());
  if (model == nullptr || !name.starts_with("decision")) return std::nullopt;
  for (std::size_t i = 0; i < model->DecisionCount(); ++i) {
    if (name == output::DecisionName(loaded_.output->Targets(), model->DecisionCategories(i))) {
      return Quantity{name, Kind::kDecision, static_cast<int>(i)};
    }
  }
  const bool of_categories = name.starts_with("decision(") && name.ends_with(")");
  return of_categories ? std::optional(Quantity{name, Kind::kDecision, -1}) : std::nullopt;
}

std::optional<Quantity> VerifyCase::FindPlainColumn(const std::string& name) const {
  const auto& targets = loaded_.output->Targets();
  if (name == "prediction") {
    Quantity prediction = Prediction();
    prediction.name = name;
    return prediction;
  }
  if (name == "confidence") return Quantity{name, Kind::kConfidence};
  if (name == "stddev") return Quantity{name, Kind::kDeviation};
  if (name == "ci_lower") return Quantity{name, Kind::kLower};
  if (name == "ci_upper") return Quantity{name, Kind::kUpper};
  if (name == "status") return Quantity{name, Kind::kStatus, 0, true};
  int index = 0;
  for (const ScoreValue* category : targets.Target().GetCategories()) {
    if (name == "probability(" + category->GetText() + ")") {
      return Quantity{name, Kind::kProbability, index};
    }
    ++index;
  }
  return FindDecision(name);
}

Quantity VerifyCase::Prediction() const {
  const auto& targets = loaded_.output->Targets();
  return {targets.Target().GetName(), Kind::kPrediction, 0,
          targets.GetScheme().method != output::Method::kRegression};
}

std::vector<Quantity> VerifyCase::Results() const {
  if (loaded_.output->Fields().empty()) return {Prediction()};
  std::vector<Quantity> results;
  for (const int field : loaded_.output->FinalFields()) {
    results.push_back(FromField(static_cast<std::size_t>(field)));
  }
  return results;
}

}  // namespace svmscore::tools
