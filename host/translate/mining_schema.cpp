#include "host/translate/mining_schema.h"

#include <memory>
#include <optional>
#include <string>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/attributes.h"

namespace svmscore {
namespace {

using MCZandor_850::FieldTreatment;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreValue;
using MCZandor_850::VarStats;
using xercesc::DOMElement;
using Invalid = FieldTreatment::Invalid;
using Outliers = FieldTreatment::Outliers;

// An attribute's text as a value of `var`; refused where it is not one.
std::unique_ptr<ScoreValue> ReplacementFrom(const DOMElement* field, const ScoreDictVar& var,
                                            const std::string& attribute, const std::string& text) {
  std::unique_ptr<ScoreValue> value = var.ValueFromText(text);
  if (value->IsInvalid()) RefuseValue(field, attribute, text);
  return value;
}

void ReadOutliers(const DOMElement* field, const ScoreDictVar& var, FieldTreatment& treatment) {
  const std::string text = FindAttribute(field, "outliers").value_or("asIs");
  if (text == "asIs") return;
  if (text == "asMissingValues") {
    treatment.outliers = Outliers::kAsMissing;
  } else if (text == "asExtremeValues") {
    treatment.outliers = Outliers::kAsExtreme;
  } else {
    RefuseValue(field, "outliers", text);
  }
  const std::optional<double> low = FindNumber(field, "lowValue");
  const std::optional<double> high = FindNumber(field, "highValue");
  if (!low && !high)
    ThrowAt(field, code::kAttributeMissing, "lowValue or highValue", "MiningField");
  treatment.low = low.value_or(treatment.low);
  treatment.high = high.value_or(treatment.high);
  if (treatment.low > treatment.high) {
    ThrowAt(field, code::kBadContent, "lowValue is greater than highValue", "MiningField");
  }
  // Only continuous variables can have outliers.
  if (var.GetTypeCode() != static_cast<int>(OpType::kContinuous))
    treatment.outliers = Outliers::kAsIs;
}

void ReadInvalid(const DOMElement* field, const ScoreDictVar& var, FieldTreatment& treatment) {
  const std::string text = FindAttribute(field, "invalidValueTreatment").value_or("returnInvalid");
  if (text == "returnInvalid") {
    treatment.invalid = Invalid::kReturnInvalid;
  } else if (text == "asIs") {
    treatment.invalid = Invalid::kAsIs;
  } else if (text == "asMissing") {
    treatment.invalid = Invalid::kAsMissing;
  } else if (text == "asValue") {
    treatment.invalid = Invalid::kAsValue;
    treatment.invalid_replacement = ReplacementFrom(
        field, var, "invalidValueReplacement", RequireAttribute(field, "invalidValueReplacement"));
  } else {
    RefuseValue(field, "invalidValueTreatment", text);
  }
}

void ReadMissing(const DOMElement* field, ScoreDictVar& var, FieldTreatment& treatment) {
  const std::string text = FindAttribute(field, "missingValueTreatment").value_or("asIs");
  treatment.missing_is_invalid = text == "returnInvalid";
  const auto replacement = FindAttribute(field, "missingValueReplacement");
  if (!replacement || replacement->empty()) return;
  // Replacements that are plain numbers and texts are left to the translator, where any number may
  // replace one of an integer field, as a mean does.
  constexpr int kHighestPlainKind = 2;
  if (var.GetKindCode() <= kHighestPlainKind) return;
  const std::unique_ptr<ScoreValue> value =
      ReplacementFrom(field, var, "missingValueReplacement", *replacement);
  auto stats = std::make_unique<VarStats>();
  stats->SetMissingReplacement(value.get());
  var.SetVarStats(stats.release());
}

}  // namespace

void ApplyMiningSchema(const DOMElement* schema, const MCZandor_850::ScoreDictionary& dictionary) {
  for (const DOMElement* field : Children(schema, "MiningField")) {
    const auto name = FindAttribute(field, "name");
    ScoreDictVar* var = name ? dictionary.FindVar(*name) : nullptr;
    if (var == nullptr) continue;
    if (const auto text = FindAttribute(field, "optype")) {
      const auto op_type = ParseOpType(*text);
      if (!op_type) RefuseValue(field, "optype", *text);
      var->SetOpType(*op_type);
    }
    FieldTreatment treatment;
    ReadOutliers(field, *var, treatment);
    ReadInvalid(field, *var, treatment);
    ReadMissing(field, *var, treatment);
    var->SetTreatment(treatment);
  }
}

}  // namespace svmscore
