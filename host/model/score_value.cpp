#include "host/model/score_value.h"

#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "host/text/number_text.h"

namespace MCZandor_850 {
namespace {

constexpr std::size_t kSmallText = 1024;

// Keeps the buffer, unless it is far larger than the text needs: values live as long as a table is
// read, one for every column and thread.
void Assign(std::string& kept, std::string_view text) {
  if (kept.capacity() > kSmallText && text.size() < kept.capacity() / 4) std::string().swap(kept);
  if (text.empty()) {
    kept.clear();  // the case for every number, and cheaper than assigning an empty text
  } else {
    kept.assign(text);
  }
}

}  // namespace

ScoreValue::~ScoreValue() = default;

NumericValue::NumericValue(double value) : value_(value) {}

NumericValue::NumericValue(double value, std::string text)
    : value_(value), text_(std::move(text)) {}

NumericValue::NumericValue(const svmscore::NumberKey& key, std::string text)
    : value_(key.number), rest_(key.rest), text_(std::move(text)) {}

double NumericValue::GetSysmisValue() {
  return std::numeric_limits<double>::lowest();
}

void NumericValue::SetDoubleValue(double value) {
  SetKey(svmscore::KeyOf(value));
}

void NumericValue::SetKey(const svmscore::NumberKey& key) {
  value_ = key.number;
  rest_ = key.rest;
  invalid_ = false;
  Assign(text_, {});
}

void NumericValue::SetInvalid(std::string_view text) {
  value_ = std::numeric_limits<double>::quiet_NaN();
  rest_ = 0;
  invalid_ = true;
  Assign(text_, text);
}

bool NumericValue::IsMissing() const {
  return !invalid_ && value_ == GetSysmisValue();
}

std::string NumericValue::GetText() const {
  if (IsMissing()) return {};
  if (!text_.empty() || invalid_) return text_;
  return rest_ == 0 ? svmscore::FormatNumber(value_)
                    : std::to_string(svmscore::WholeOf({value_, rest_}));
}

bool NumericValue::IsEqual(const ScoreValue* other) const {
  if (other == nullptr || !other->IsNumeric()) return false;
  if (invalid_ || other->IsInvalid() || IsMissing() || other->IsMissing()) return false;
  return value_ == other->GetDouble() && rest_ == other->GetRest();
}

std::unique_ptr<ScoreValue> NumericValue::Clone() const {
  return std::make_unique<NumericValue>(*this);
}

StringValue::StringValue(const char* text) : text_(text == nullptr ? "" : text) {}

StringValue::StringValue(const std::string& text) : text_(text) {}

void StringValue::SetText(const char* text, std::size_t size) {
  Assign(text_, {text, size});
  invalid_ = false;
}

void StringValue::SetInvalid() {
  invalid_ = true;
  Assign(text_, {});
}

double StringValue::GetDouble() const {
  return svmscore::ParseNumber(text_).value_or(std::numeric_limits<double>::quiet_NaN());
}

bool StringValue::IsEqual(const ScoreValue* other) const {
  if (other == nullptr || other->IsNumeric() || invalid_ || other->IsInvalid()) return false;
  const auto* string = dynamic_cast<const StringValue*>(other);
  return string != nullptr ? text_ == string->text_ : text_ == other->GetText();
}

std::unique_ptr<ScoreValue> StringValue::Clone() const {
  return std::make_unique<StringValue>(*this);
}

}  // namespace MCZandor_850
