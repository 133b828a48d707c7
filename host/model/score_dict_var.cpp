#include "host/model/score_dict_var.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include "host/text/field_text.h"
#include "host/text/printable.h"

namespace MCZandor_850 {

using svmscore::DataType;
using svmscore::OpType;

ScoreDictVar::ScoreDictVar(std::string name, OpType op_type, svmscore::FieldType type)
    : name_(std::move(name)), op_type_(op_type), type_(type) {}

ScoreDictVar::~ScoreDictVar() = default;

int ScoreDictVar::GetKindCode() const {
  constexpr int kNoReplacement = 3;
  switch (type_.data) {
    case DataType::kString:
    case DataType::kInteger:
    case DataType::kFloat:
    case DataType::kDouble:
      return GetStorageType();
    default:
      return kNoReplacement;
  }
}

int ScoreDictVar::GetCategoryCount() const {
  return op_type_ == OpType::kContinuous ? 1 : static_cast<int>(categories_.size());
}

int ScoreDictVar::GetCategoryIndex(const ScoreValue* value) const {
  if (value == nullptr || value->IsMissing() || value->IsInvalid()) return -1;
  if (GetStorageType() == 1) {
    const auto* text = dynamic_cast<const StringValue*>(value);
    const auto found =
        text_index_.find(text != nullptr ? text->GetTextReference() : value->GetText());
    return found == text_index_.end() ? -1 : found->second;
  }
  const auto found = number_index_.find({value->GetDouble(), value->GetRest()});
  return found == number_index_.end() ? -1 : found->second;
}

int ScoreDictVar::GetCategoryIndexOfText(const std::string& text) const {
  return GetCategoryIndex(ValueFromText(text).get());
}

bool ScoreDictVar::DeclaresNoValues() const {
  return op_type_ != OpType::kContinuous && !values_declared_;
}

bool ScoreDictVar::AddCategory(const ScoreValue& value, const std::string& text) {
  if (GetCategoryIndex(&value) >= 0 || value.IsInvalid() || value.IsMissing()) return false;
  const int index = static_cast<int>(categories_.size());
  if (GetStorageType() == 1) {
    categories_.push_back(std::make_unique<StringValue>(text));
    text_index_.emplace(text, index);
  } else {
    const svmscore::NumberKey key{value.GetDouble(), value.GetRest()};
    categories_.push_back(std::make_unique<NumericValue>(key, text));
    number_index_.emplace(key, index);
  }
  category_views_.push_back(categories_.back().get());
  displays_.push_back(text);
  return true;
}

void ScoreDictVar::DeclareCategory(const std::string& text, const std::string& display) {
  values_declared_ = true;
  const std::size_t before = categories_.size();
  AddCategory(*ValueFromText(text), text);
  if (categories_.size() > before && !display.empty()) displays_.back() = display;
}

void ScoreDictVar::Declare(Declared& set, const std::string& text, svmscore::FieldType type) {
  set.texts.push_back(text);
  const auto number = svmscore::KeyFromFieldText(text, type);
  if (number) set.numbers.push_back(*number);
}

void ScoreDictVar::DeclareMissing(const std::string& text) {
  Declare(missing_, text, type_);
}
void ScoreDictVar::DeclareInvalid(const std::string& text) {
  Declare(invalid_, text, type_);
}

bool ScoreDictVar::Declared::Holds(const ScoreValue& value) const {
  if (texts.empty()) return false;
  if (value.IsNumeric() && !value.IsInvalid()) {
    const svmscore::NumberKey key{value.GetDouble(), value.GetRest()};
    const bool nan = std::isnan(key.number);
    return std::any_of(numbers.begin(), numbers.end(), [&](const svmscore::NumberKey& declared) {
      return declared == key || (nan && std::isnan(declared.number));
    });
  }
  const auto* string = dynamic_cast<const StringValue*>(&value);
  if (string != nullptr) {
    return std::find(texts.begin(), texts.end(), string->GetTextReference()) != texts.end();
  }
  return std::find(texts.begin(), texts.end(), value.GetText()) != texts.end();
}

bool ScoreDictVar::IsMissingValue(const ScoreValue* value) const {
  if (value == nullptr || value->IsMissing()) return true;
  // A replacement stays a value even where it equals a code that is declared to mean "missing".
  if (value == GetMissingReplacement()) return false;
  return missing_.Holds(*value);
}

bool ScoreDictVar::IsValidValue(const ScoreValue* value) const {
  // Replacements take the place of the original input and are not checked.
  if (value == GetMissingReplacement() || value == treatment_.invalid_replacement.get()) {
    return true;
  }
  if (value->IsInvalid()) return false;
  const bool number = GetStorageType() == 0;
  if (number && (!value->IsNumeric() || !std::isfinite(value->GetDouble()))) return false;
  return treatment_.invalid == FieldTreatment::Invalid::kAsIs || IsDeclaredValid(*value);
}

bool ScoreDictVar::IsDeclaredValid(const ScoreValue& value) const {
  if (invalid_.Holds(value)) return false;
  const bool listed = values_declared_ && GetCategoryIndex(&value) >= 0;
  if (GetStorageType() == 0 && op_type_ == OpType::kContinuous && !intervals_.empty()) {
    return listed || IsInIntervals(value.GetDouble());
  }
  return listed || !values_declared_;
}

bool ScoreDictVar::TakesEveryNumber() const {
  return intervals_.empty() && TakesNumbersInIntervals();
}

bool ScoreDictVar::TakesNumbersInIntervals() const {
  return type_.data == DataType::kDouble && !values_declared_ && missing_.texts.empty() &&
         invalid_.texts.empty() && treatment_.outliers == FieldTreatment::Outliers::kAsIs;
}

void ScoreDictVar::Display(std::ostream& os) const {
  os << svmscore::Printable(name_, svmscore::kLongestInsert) << '\n';
}

std::unique_ptr<ScoreValue> ScoreDictVar::ValueFromText(std::string_view text) const {
  if (GetStorageType() == 1) return std::make_unique<StringValue>(std::string(text));
  const auto number = svmscore::KeyFromFieldText(text, type_);
  if (number) return std::make_unique<NumericValue>(*number, std::string(text));
  auto value = std::make_unique<NumericValue>(NumericValue::GetSysmisValue());
  value->SetInvalid(text);
  return value;
}

}  // namespace MCZandor_850
