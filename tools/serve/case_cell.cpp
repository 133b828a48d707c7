#include "tools/serve/case_cell.h"

#include <charconv>
#include <cmath>

#include "host/model/score_dict_var.h"
#include "host/text/number_text.h"
#include "tools/score/put_value.h"

namespace svmscore::serve {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;

namespace {

bool IsOfInt32(double number) {
  return number >= std::numeric_limits<std::int32_t>::min() &&
         number <= std::numeric_limits<std::int32_t>::max();
}

}  // namespace

void CaseCell::Put(InputCaseRecord& record, std::size_t position,
                   const tools::CellRules& rules) const {
  switch (kind_) {
    case Kind::kMissing:
      record.SetMissing(position);
      return;
    case Kind::kNumber:
      return tools::PutNumber(record, position, number_);
    case Kind::kWhole:
      return tools::PutWhole(record, position, whole_);
    case Kind::kBool:
      return tools::PutBool(record, position, whole_ != 0);
    case Kind::kText:
    case Kind::kSpelled:
      break;
  }
  const std::string_view text(text_, size_);
  if (rules.IsMissing(text, record.Variable(position))) {
    record.SetMissing(position);
  } else {
    record.SetText(position, text);
  }
}

tools::GivenText CaseCell::Given(const ScoreDictVar& var, const tools::CellRules& rules) const {
  switch (kind_) {
    case Kind::kMissing:
      return {};
    case Kind::kNumber:
      return {FormatNumber(number_), false};
    case Kind::kWhole:
      return {std::to_string(whole_), false};
    case Kind::kBool:
      if (var.GetFieldType().data == DataType::kString) {
        return {whole_ != 0 ? "true" : "false", false};
      }
      return {whole_ != 0 ? "1" : "0", false};
    case Kind::kText:
    case Kind::kSpelled:
      break;
  }
  const std::string_view text(text_, size_);
  return {std::string(text), rules.IsMissing(text, var)};
}

bool CaseCell::IsOf(std::string_view type) const {
  constexpr double kAbove = 9223372036854775808.0;  // 2^63
  switch (kind_) {
    case Kind::kMissing:
      return true;
    case Kind::kNumber:
      if (type == "INT64") return number_ == std::floor(number_) && std::abs(number_) < kAbove;
      if (type == "INT32") return number_ == std::floor(number_) && IsOfInt32(number_);
      return type == "FP64" || type == "FP32";
    case Kind::kWhole:
      if (type == "BOOL") return whole_ == 0 || whole_ == 1;
      if (type == "INT32") return IsOfInt32(static_cast<double>(whole_));
      return type != "BYTES";
    case Kind::kBool:
      return type == "BOOL";
    case Kind::kText:
      return type == "BYTES";
    case Kind::kSpelled:
      return type == "FP64" || type == "FP32";
  }
  return false;
}

CaseCell CaseCell::InSinglePrecision() const {
  const auto single = [](double number) {
    return Number(static_cast<double>(static_cast<float>(number)));
  };
  if (kind_ == Kind::kNumber) return single(number_);
  if (kind_ == Kind::kWhole) return single(static_cast<double>(whole_));
  double number = 0.0;
  if (kind_ == Kind::kSpelled && ReadDecimal(text_, text_ + size_, number) == text_ + size_) {
    return single(number);
  }
  return *this;
}

namespace {

CaseCell CellOfNumber(JsonScanner& scanner) {
  double number = 0.0;
  const std::string_view spelling = scanner.Number(number);
  if (spelling != "-0" && spelling.find_first_of(".eE") == std::string_view::npos) {
    std::int64_t whole = 0;
    const char* const end = spelling.data() + spelling.size();
    if (std::from_chars(spelling.data(), end, whole).ec == std::errc()) {
      return CaseCell::Whole(whole);
    }
    return CaseCell::Spelled(spelling);  // a field of texts has all its digits
  }
  return std::isfinite(number) ? CaseCell::Number(number) : CaseCell::Spelled(spelling);
}

}  // namespace

bool ReadCell(JsonScanner& scanner, CaseCell& cell) {
  switch (scanner.Peek()) {
    case JsonKind::kNumber:
      cell = CellOfNumber(scanner);
      return true;
    case JsonKind::kString:
      cell = CaseCell::Text(scanner.String());
      return true;
    case JsonKind::kTrue:
    case JsonKind::kFalse:
      cell = CaseCell::Bool(scanner.Bool());
      return true;
    case JsonKind::kNull:
      scanner.Null();
      cell = {};
      return true;
    case JsonKind::kNan:
      scanner.Nan();
      cell = {};
      return true;
    default:
      scanner.Skip();
      return false;
  }
}

}  // namespace svmscore::serve
