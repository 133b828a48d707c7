#include "tools/serve/case_cell.h"

#include <charconv>
#include <cmath>

#include "host/model/score_dict_var.h"
#include "host/text/number_text.h"
#include "tools/score/put_value.h"

namespace svmscore::serve {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;

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
      break;
  }
  const std::string_view text(text_, size_);
  return {std::string(text), rules.IsMissing(text, var)};
}

CaseCell CaseCell::InSinglePrecision() const {
  const auto single = [](double number) {
    return Number(static_cast<double>(static_cast<float>(number)));
  };
  if (kind_ == Kind::kNumber) return single(number_);
  if (kind_ == Kind::kWhole) return single(static_cast<double>(whole_));
  return *this;
}

namespace {

CaseCell CellOfNumber(JsonScanner& scanner) {
  constexpr std::size_t kSurelyWhole = 18;  // so many characters are no more than 64 bits
  double number = 0.0;
  const std::string_view spelling = scanner.Number(number);
  if (spelling.size() <= kSurelyWhole && spelling != "-0" &&
      spelling.find_first_of(".eE") == std::string_view::npos) {
    std::int64_t whole = 0;
    std::from_chars(spelling.data(), spelling.data() + spelling.size(), whole);
    return CaseCell::Whole(whole);
  }
  return std::isfinite(number) ? CaseCell::Number(number) : CaseCell::Text(spelling);
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
