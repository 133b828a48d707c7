#include "host/output/target_rules.h"

#include <algorithm>
#include <cmath>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/similar_name.h"
#include "host/transform/value/conversion.h"
#include "host/xml/attributes.h"

namespace svmscore::output {
namespace {

using MCZandor_850::ScoreClsResult;
using MCZandor_850::ScoreIntervalResult;
using MCZandor_850::ScoreModel;
using MCZandor_850::ScoreRegResult;
using MCZandor_850::ScoreResult;
using MCZandor_850::ScoreValue;
using transform::Value;
using xercesc::DOMElement;

// What results hold if no deviation was computed.
constexpr double kNotComputed = -1.0;

// The Target element for the model's target: the one that names it, else the only one, else the one
// that names no field. One that names another field is never used.
const DOMElement* FindTarget(const DOMElement* model, const std::string& target,
                             const MCZandor_850::ScoreDictionary* dictionary,
                             std::vector<Note>& notes) {
  const DOMElement* nameless = nullptr;
  std::vector<const DOMElement*> all;
  for (const DOMElement* element : Children(FindChild(model, "Targets"), "Target")) {
    const auto field = FindAttribute(element, "field");
    if (field == target) return element;
    if (!field && nameless == nullptr) nameless = element;
    all.push_back(element);
  }
  if (all.size() != 1 || nameless != nullptr) return nameless;
  const std::string field = FindAttribute(all[0], "field").value_or("");
  if (dictionary == nullptr || dictionary->FindVar(field) == nullptr) return all[0];
  notes.push_back({all[0], "it is for the field " + field + ", which is not the model's target " +
                               target + ": not used"});
  return nullptr;
}

}  // namespace

std::string MeantCategory(const MCZandor_850::ScoreDictVar& target, const std::string& text) {
  std::vector<std::string> categories;
  for (const ScoreValue* category : target.GetCategories()) {
    categories.push_back(category->GetText());
  }
  return DidYouMean(text, categories);
}

TargetRules::TargetRules(const ScoreModel& model, const xercesc::DOMDocument* document,
                         std::vector<Note>& notes, Faults faults, bool as_written)
    : model_(&model), target_(model.GetTargetVar()), faults_(faults), finite_only_(!as_written) {
  const DOMElement* model_element = FindModelElement(document);
  if (target_ == nullptr) ThrowAt(model_element, code::kNoTarget, "MiningSchema");
  scheme_ = SchemeOf(model_element, target_->GetCategories().size());
  const DOMElement* element =
      FindTarget(model_element, target_->GetName(), model.GetDictionary(), notes);
  std::size_t index = 0;
  for (const ScoreValue* category : target_->GetCategories()) {
    categories_.push_back(transform::FromRecord(category, target_->GetFieldType(), pool_));
    displays_.push_back(target_->GetCategoryDisplay(index++));
    first_equal_.push_back(target_->GetCategoryIndex(category));
  }
  if (scheme_.method == Method::kRegression) {
    ReadSteps(element, notes);
    ReadDefault(element, notes);
    if (target_->GetFieldType().data == DataType::kInteger && cast_ == Cast::kNone) {
      notes.push_back({element != nullptr ? element : model_element,
                       "no castInteger for the target " + target_->GetName(),
                       "prediction-rounded"});
    }
  } else {
    ReadCategories(element, notes);
    if (!as_written) FindResponse(model_element);
  }
}

void TargetRules::ReadSteps(const DOMElement* element, std::vector<Note>& notes) {
  const auto attempt = [&](const char* what, const auto& step) {
    Attempt(faults_, element, std::string(what) + " not used", notes, step);
  };
  attempt("min and max are", [&] { ReadLimits(element); });
  attempt("rescaleFactor is",
          [&] { factor_ = FindNumber(element, "rescaleFactor").value_or(1.0); });
  attempt("rescaleConstant is",
          [&] { constant_ = FindNumber(element, "rescaleConstant").value_or(0.0); });
  attempt("castInteger is", [&] { ReadCast(element); });
}

void TargetRules::ReadLimits(const DOMElement* element) {
  const auto min = FindNumber(element, "min");
  const auto max = FindNumber(element, "max");
  if (min && max && *min > *max) {
    ThrowAt(element, code::kBadContent, "min is greater than max", "Target");
  }
  min_ = min;
  max_ = max;
}

void TargetRules::ReadCast(const DOMElement* element) {
  const std::string cast = FindAttribute(element, "castInteger").value_or("");
  if (cast == "round") {
    cast_ = Cast::kRound;
  } else if (cast == "ceiling") {
    cast_ = Cast::kCeiling;
  } else if (cast == "floor") {
    cast_ = Cast::kFloor;
  } else if (FindAttribute(element, "castInteger")) {
    RefuseValue(element, "castInteger", cast);
  }
}

void TargetRules::ReadDefault(const DOMElement* element, std::vector<Note>& notes) {
  for (const DOMElement* value : Children(element, "TargetValue")) {
    if (!FindAttribute(value, "defaultValue")) continue;
    const bool read = Attempt(faults_, value, "defaultValue is not used", notes, [&] {
      const Value number = OfTargetType(*FindNumber(value, "defaultValue"));
      if (number.IsInvalid()) {
        RefuseValue(value, "defaultValue", *FindAttribute(value, "defaultValue"));
      }
      default_ = number;
    });
    if (read) return;
  }
}

std::optional<double> TargetRules::PriorOf(const DOMElement* value,
                                           std::vector<Note>& notes) const {
  std::optional<double> prior;
  Attempt(faults_, value, "priorProbability is not used", notes, [&] {
    const auto number = FindNumber(value, "priorProbability");
    if (number && !(*number >= 0.0 && *number <= 1.0)) {
      RefuseValue(value, "priorProbability", *FindAttribute(value, "priorProbability"));
    }
    prior = number;
  });
  return prior;
}

void TargetRules::ReadCategories(const DOMElement* element, std::vector<Note>& notes) {
  for (const char* attribute : {"castInteger", "min", "max", "rescaleConstant", "rescaleFactor"}) {
    if (FindAttribute(element, attribute)) {
      notes.push_back({element, std::string(attribute) + " has no effect on a classification"});
    }
  }
  double sum = 0.0;
  double largest = 0.0;
  std::vector<double> priors(categories_.size(), 0.0);
  for (const DOMElement* value : Children(element, "TargetValue")) {
    const auto text = FindAttribute(value, "value");
    if (!text) continue;
    const int category = target_->GetCategoryIndexOfText(*text);
    if (category < 0) {
      notes.push_back({value, "the target has no category " + *text + ": not used", "results",
                       MeantCategory(*target_, *text)});
      continue;
    }
    const auto index = static_cast<std::size_t>(category);
    auto display = FindAttribute(value, "displayValue");
    if (!display) display = FindAttribute(value, "rawDataValue");
    if (display) displays_[index] = *display;
    const auto prior = PriorOf(value, notes);
    if (!prior) continue;
    sum += *prior - priors[index];
    priors[index] = *prior;
    if (*prior <= largest) continue;
    largest = *prior;
    default_category_ = category;
  }
  if (!(sum > 0.0) || default_category_ < 0) return;
  for (double& prior : priors) prior /= sum;
  priors_ = std::move(priors);
  default_ = categories_[static_cast<std::size_t>(default_category_)];
}

// A machine with the extension puts the probability of its response category first, whichever
// category that is.
void TargetRules::FindResponse(const DOMElement* model_element) {
  if (scheme_.method != Method::kBinary || scheme_.percentages != Percentages::kProbabilities) {
    return;
  }
  const DOMElement* extension = MachineExtension(FindChild(model_element, "SupportVectorMachine"));
  const auto response = FindAttribute(FindChild(extension, "ResponseCategory"), "response");
  second_responds_ = response && target_->GetCategoryIndexOfText(*response) == 1;
}

double Outcome::PercentAt(std::size_t position) const {
  if (percents != nullptr) return percents[position * percent_stride];
  if (result == nullptr) return kNotComputed;
  // Results hold either no percentages or one for each category, in the order of the categories.
  const auto& all = result->GetAllValuePercent();
  return position < all.size() ? all[position].second : kNotComputed;
}

Outcome TargetRules::FinishFailed(long status) const {
  Outcome outcome;
  outcome.status = status;
  const bool lacks_inputs = status == MCScore::kCannotScore &&
                            model_->GetMissingValuePolicy() != ScoreModel::kFailOnMissing;
  outcome.ending = lacks_inputs ? Outcome::Ending::kMissing : Outcome::Ending::kFailed;
  if (lacks_inputs && default_.IsPresent()) PredictDefault(outcome);
  return outcome;
}

Outcome TargetRules::Finish(const MCScore::MCStatus& status, const ScoreResult* result) const {
  if (status.IsError()) return FinishFailed(status.GetErrorCode());
  Outcome outcome;
  outcome.ending = Outcome::Ending::kPredicted;
  if (result == nullptr) return outcome;
  if (scheme_.method == Method::kRegression) {
    const ScoreValue* raw = result->GetPrediction();
    if (raw == nullptr || raw->IsMissing()) return outcome;
    const auto* regression = dynamic_cast<const ScoreRegResult*>(result);
    FinishNumber(raw->GetDouble(), regression != nullptr ? regression->GetStdDev() : kNotComputed,
                 outcome);
    const auto* interval = dynamic_cast<const ScoreIntervalResult*>(result);
    double lower = 0.0;
    double upper = 0.0;
    if (regression != nullptr && interval != nullptr && interval->GetInterval(lower, upper)) {
      FinishInterval(lower, upper, outcome);
    }
    RequireFinite(outcome);
    return outcome;
  }
  outcome.category = target_->GetCategoryIndex(result->GetPrediction());
  if (outcome.category >= 0) {
    outcome.prediction = categories_[static_cast<std::size_t>(outcome.category)];
  }
  outcome.confidence = result->GetConfidence();
  outcome.result = dynamic_cast<const ScoreClsResult*>(result);
  RequireFinite(outcome);
  return outcome;
}

Outcome TargetRules::Finish(const BatchResults& results, std::size_t position) const {
  const long status = results.status[position];
  if (status != 0) return FinishFailed(status);
  Outcome outcome;
  outcome.ending = Outcome::Ending::kPredicted;
  if (scheme_.method == Method::kRegression) {
    const double raw = results.value[position];
    if (raw == MCZandor_850::NumericValue::GetSysmisValue()) return outcome;
    FinishNumber(raw, results.std_dev[position], outcome);
    if (results.has_interval[position]) {
      FinishInterval(results.lower[position], results.upper[position], outcome);
    }
    RequireFinite(outcome);
    return outcome;
  }
  if (results.category[position] >= 0) {
    outcome.category = first_equal_[static_cast<std::size_t>(results.category[position])];
    outcome.prediction = categories_[static_cast<std::size_t>(outcome.category)];
  }
  outcome.confidence = results.confidence[position];
  outcome.percents = results.percents + position;
  outcome.percent_stride = results.stride;
  RequireFinite(outcome);
  return outcome;
}

void TargetRules::FinishNumber(double raw, double std_dev, Outcome& outcome) const {
  outcome.prediction = Finished(raw);
  if (outcome.prediction.IsInvalid()) {
    outcome = Outcome();
    outcome.status = MCScore::kInvalidValue;
    return;
  }
  if (scheme_.interval && std_dev != kNotComputed) outcome.std_dev = std_dev * std::fabs(factor_);
}

void TargetRules::FinishInterval(double lower, double upper, Outcome& outcome) const {
  if (!scheme_.interval || !outcome.IsPredicted()) return;
  outcome.has_interval = true;
  outcome.lower = Scale(lower);
  outcome.upper = Scale(upper);
  if (factor_ < 0.0) std::swap(outcome.lower, outcome.upper);
}

void TargetRules::RequireFinite(Outcome& outcome) const {
  if (!finite_only_ || !outcome.IsPredicted()) return;
  bool finite = true;
  if (scheme_.method == Method::kRegression) {
    finite = !outcome.prediction.IsPresent() || std::isfinite(outcome.prediction.GetNumber());
    if (!std::isfinite(outcome.std_dev)) outcome.std_dev = kNotComputed;
    outcome.has_interval =
        outcome.has_interval && std::isfinite(outcome.lower) && std::isfinite(outcome.upper);
  } else if (scheme_.percentages == Percentages::kProbabilities) {
    finite = std::isfinite(outcome.confidence);
    for (std::size_t k = 0; k < categories_.size(); ++k) {
      finite = finite && std::isfinite(outcome.PercentAt(k));
    }
  }
  if (finite) return;
  outcome = Outcome();
  outcome.status = MCScore::kInvalidValue;
}

// A step that the document does not ask for does not change a bit.
double TargetRules::Scale(double raw) const {
  if (factor_ != 1.0) raw *= factor_;
  if (constant_ != 0.0) raw += constant_;
  return raw;
}

Value TargetRules::Finished(double raw) const {
  if (min_ && raw < *min_) raw = *min_;
  if (max_ && raw > *max_) raw = *max_;
  double number = Scale(raw);
  switch (cast_) {
    case Cast::kNone:
      break;
    case Cast::kRound:
      number = transform::RoundHalfUp(number);
      break;
    case Cast::kCeiling:
      number = std::ceil(number);
      break;
    case Cast::kFloor:
      number = std::floor(number);
      break;
  }
  return OfTargetType(number);
}

// A text cannot be computed, so a target that is declared as one keeps the number.
Value TargetRules::OfTargetType(double number) const {
  const FieldType type = target_->GetFieldType();
  const Value value = Value::Double(number);
  if (type.data == DataType::kDouble || type.data == DataType::kString) return value;
  transform::Arena unused;
  return transform::Convert(value, type, unused);
}

void TargetRules::PredictDefault(Outcome& outcome) const {
  outcome.status = 0;
  outcome.ending = Outcome::Ending::kPredictedByDefault;
  outcome.prediction = default_;
  if (priors_.empty()) return;
  outcome.category = default_category_;
  outcome.confidence = priors_[static_cast<std::size_t>(default_category_)];
}

std::optional<double> TargetRules::ShareOf(const Outcome& outcome, int category) const {
  const auto index = static_cast<std::size_t>(category);
  if (category < 0 || index >= categories_.size()) return std::nullopt;
  if (outcome.ending == Outcome::Ending::kPredictedByDefault) {
    if (priors_.empty()) return std::nullopt;
    return priors_[index];
  }
  if (!outcome.IsPredicted() || scheme_.percentages == Percentages::kNone) return std::nullopt;
  const double share = PercentOf(outcome, index);
  if (share < 0.0 || !std::isfinite(share)) return std::nullopt;
  return share;
}

}  // namespace svmscore::output
