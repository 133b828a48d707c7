// Rewrites attributes in the one spelling that a translator understands.
#include <optional>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/text/field_text.h"
#include "host/text/field_types.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

// In lower case, without the white space around it.
std::string Plain(std::string text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  text = text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

// A translator reads every text but "true" as false.
void SpellMaxWins(Intake& intake) {
  const std::string text = FindAttribute(intake.Model(), "maxWins").value_or("");
  const auto truth = ParseBoolean(text);
  if (truth == false || text == "true" || Plain(text).empty()) return;
  if (!truth) {
    if (!intake.IsClassification()) return;
    return intake.Tell("bad-max-wins", intake.Model(), text, "maxWins",
                       "SupportVectorMachineModel");
  }
  intake.Tell("boolean-spelling", intake.Model());
  SetAttribute(intake.Model(), "maxWins", "true");
}

// A translator refuses "false" in any case, and reads every other text as true.
void CheckIsScorable(Intake& intake) {
  const std::string text = FindAttribute(intake.Model(), "isScorable").value_or("");
  if (ParseBoolean(text) != false) return;
  intake.Refuse(intake.Model(), code::kNotScorable, "isScorable", "PMML");
}

void SpellMethod(Intake& intake) {
  const auto text = FindAttribute(intake.Model(), "classificationMethod");
  if (!text) return;
  for (const char* known : {"OneAgainstOne", "OneAgainstAll"}) {
    if (*text == known) return;
    // With another number of machines, one-against-one would not be possible.
    if (Plain(*text) != Plain(known) || !FitsPairs(intake)) continue;
    intake.Tell("method-spelling", intake.Model());
    return SetAttribute(intake.Model(), "classificationMethod", known);
  }
  if (!intake.IsClassification()) return;
  intake.Tell("unknown-method", intake.Model(), *text, "classificationMethod",
              "SupportVectorMachineModel");
}

// The PMML type of a type written as xs:double, or the text as it is.
std::string PmmlType(const std::string& text) {
  const std::size_t colon = text.find(':');
  std::string local = colon == std::string::npos ? text : text.substr(colon + 1);
  if (ParseDataType(local)) return local;
  if (local == "decimal") return "double";
  if (local == "int" || local == "long" || local == "short") return "integer";
  return text;
}

void SpellDataType(Intake& intake, DOMElement* field) {
  const WideView stated = AttributeView(field, "dataType");
  const WideView other = AttributeView(field, "datatype");
  const std::string text = Narrow(stated.data() != nullptr ? stated : other);
  const std::string type = PmmlType(text);
  if (!ParseDataType(type) || (stated.data() != nullptr && type == text)) return;
  intake.Tell("data-type-spelling", field);
  SetAttribute(field, "dataType", type);
}

}  // namespace

void UseKnownSpellings(Intake& intake) {
  SpellMaxWins(intake);
  CheckIsScorable(intake);
  SpellMethod(intake);
  const DOMElement* const holders[] = {FindChild(intake.Root(), "DataDictionary"),
                                       FindChild(intake.Root(), "TransformationDictionary"),
                                       intake.ModelChild("LocalTransformations"),
                                       intake.ModelChild("Output")};
  for (const DOMElement* holder : holders) {
    for (DOMElement* field = FirstElement(const_cast<DOMElement*>(holder)); field != nullptr;
         field = NextElement(field)) {
      SpellDataType(intake, field);
    }
  }
}

}  // namespace svmscore::intake
