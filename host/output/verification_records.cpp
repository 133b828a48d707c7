#include "host/output/verification_records.h"

#include <cmath>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "host/transform/value/conversion.h"
#include "host/xml/attributes.h"

namespace svmscore::output {
namespace {

using transform::Value;
using xercesc::DOMElement;

double AllowanceFrom(const DOMElement* element, const char* attribute, double standard) {
  const auto number = FindNumber(element, attribute);
  if (!number) return standard;
  if (!(*number >= 0.0)) RefuseValue(element, attribute, *FindAttribute(element, attribute));
  return *number;
}

void CheckCount(const DOMElement* element, const char* attribute, std::size_t actual,
                std::vector<Note>& notes) {
  const auto text = FindAttribute(element, attribute);
  if (!text || ParseNumber(*text) == static_cast<double>(actual)) return;
  notes.push_back({element, std::string(attribute) + " is " + *text + ", but there are " +
                                std::to_string(actual)});
}

bool IsNumber(DataType type) {
  return type == DataType::kInteger || type == DataType::kFloat || type == DataType::kDouble;
}

Judgement JudgeNumbers(double expected, double actual, const Allowance& allowance) {
  Judgement judgement;
  const double distance = std::fabs(actual - expected);
  const double size = std::fabs(expected);
  const bool zeros =
      size <= allowance.zero_threshold && std::fabs(actual) <= allowance.zero_threshold;
  const bool close = std::isfinite(size) && distance <= allowance.precision * size;
  const bool equal = actual == expected || (std::isnan(actual) && std::isnan(expected));
  judgement.agrees = equal || zeros || close;
  const double deviation = equal ? 0.0 : distance / size;
  if (!std::isnan(deviation)) judgement.deviation = deviation;
  judgement.near_zero = !judgement.agrees && size <= allowance.zero_threshold;
  return judgement;
}

}  // namespace

std::optional<Verification> ReadVerification(const xercesc::DOMDocument* document) {
  Verification read;
  read.element = FindChild(FindModelElement(document), "ModelVerification");
  if (read.element == nullptr) return std::nullopt;
  const DOMElement* fields = FindChild(read.element, "VerificationFields");
  if (fields == nullptr) {
    ThrowAt(read.element, code::kChildMissing, "VerificationFields", "ModelVerification");
  }
  for (const DOMElement* element : Children(fields, "VerificationField")) {
    VerificationColumn column;
    column.element = element;
    column.field = RequireAttribute(element, "field");
    column.column = FindAttribute(element, "column").value_or(column.field);
    column.allowance.precision = AllowanceFrom(element, "precision", column.allowance.precision);
    column.allowance.zero_threshold =
        AllowanceFrom(element, "zeroThreshold", column.allowance.zero_threshold);
    read.columns.push_back(std::move(column));
  }
  read.table = transform::InlineTableOf(read.element);
  if (read.table == nullptr) {
    ThrowAt(read.element, code::kChildMissing, "InlineTable", "ModelVerification");
  }
  std::size_t records = 0;
  ForEachRecord(read, [&records](transform::Cells) { ++records; });
  CheckCount(read.element, "recordCount", records, read.notes);
  CheckCount(read.element, "fieldCount", read.columns.size(), read.notes);
  return read;
}

void ForEachRecord(const Verification& verification,
                   const std::function<void(transform::Cells)>& visit) {
  std::vector<std::string> names;
  for (const VerificationColumn& column : verification.columns) names.push_back(column.column);
  transform::ForEachRow(verification.table, names, 0,
                        [&visit](const DOMElement*, transform::Cells cells) { visit(cells); });
}

Judgement Judge(std::string_view expected, const Value& actual, const Allowance& allowance) {
  if (!actual.IsPresent()) return {};
  if (IsNumber(actual.Data())) {
    auto number = ParseNumber(expected);
    if (!number) return {};
    if (actual.Data() == DataType::kFloat) {
      number = static_cast<double>(static_cast<float>(*number));
    }
    return JudgeNumbers(*number, actual.GetNumber(), allowance);
  }
  transform::Arena arena;
  const Value value = transform::FromDocument(expected, actual.Type(), arena);
  Judgement judgement;
  judgement.agrees =
      value.IsPresent() && transform::Compare(value, actual) == transform::Comparison::kEqual;
  return judgement;
}

}  // namespace svmscore::output
