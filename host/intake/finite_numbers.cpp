// A translator takes INF, NaN and numbers beyond the range as they are, and what is computed from
// them says nothing about the case.
#include "host/intake/finite_numbers.h"

#include <array>
#include <cmath>
#include <string>
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/text/field_types.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/elements.h"

namespace svmscore::intake {
namespace {

// Most words pass the quick test; only the others are parsed.
bool IsFinite(WideView word) {
  const std::size_t exponent = word.find_first_of(u"eE");
  const bool large = exponent != WideView::npos && word.size() - exponent > 3;
  const bool special = word.ends_with(u'N') || word.ends_with(u'F');
  if (!large && !special && word.size() < 300) return true;
  const std::optional<double> number = ParseNumber(Narrow(word));
  return !number || std::isfinite(*number);
}

void CheckExtension(Intake& intake, const DOMElement* extension) {
  const DOMElement* sigmoid = FindChild(extension, "ProbabilityParameters");
  for (const char* name : {"A", "B"}) CheckFiniteAttribute(intake, sigmoid, name);
  const DOMElement* deviation = FindChild(extension, "StandardDeviation");
  if (deviation == nullptr) return;
  WideText joined;
  const WideView text = TextView(deviation, joined);
  CheckFiniteWords(intake, deviation, text);
  if (ParseNumber(Narrow(text)).value_or(0.0) < 0.0) {
    intake.Tell("deviation-negative", deviation, "a negative number", NameOf(deviation));
  }
}

// Replacements of missing values, of fields that are numbers.
void CheckReplacements(Intake& intake) {
  std::unordered_set<std::string> numbers;
  for (const DOMElement* field :
       Children(FindChild(intake.Root(), "DataDictionary"), "DataField")) {
    const auto type = ParseDataType(AttributeText(field, "dataType"));
    const bool continuous = AttributeView(field, "optype") == u"continuous";
    if (continuous && type && IsNumberStored(type->data)) {
      numbers.insert(AttributeText(field, "name"));
    }
  }
  for (const DOMElement* field : Children(intake.ModelChild("MiningSchema"), "MiningField")) {
    if (AttributeView(field, "missingValueReplacement").empty()) continue;
    if (!numbers.contains(AttributeText(field, "name"))) continue;
    CheckFiniteAttribute(intake, field, "missingValueReplacement");
  }
}

}  // namespace

void CheckFiniteAttribute(Intake& intake, const DOMElement* element, const char* name) {
  CheckFiniteAttribute(intake, element, name, AttributeView(element, name));
}

void CheckFiniteAttribute(Intake& intake, const DOMElement* element, const char* name,
                          WideView text) {
  WideView rest = text;
  if (text.data() == nullptr || IsFinite(NextWord(rest))) return;
  intake.Tell("number-not-finite", element, name + (" " + Narrow(text)), NameOf(element));
}

void CheckFiniteWords(Intake& intake, const DOMElement* element, WideView text) {
  for (WideView word = NextWord(text); !word.empty(); word = NextWord(text)) {
    if (IsFinite(word)) continue;
    return intake.Tell("number-not-finite", element, "the number " + Narrow(word), NameOf(element));
  }
}

void CheckFiniteNumbers(Intake& intake) {
  CheckReplacements(intake);
  CheckFiniteAttribute(intake, intake.Model(), "threshold");
  for (const char* kind : {"PolynomialKernelType", "RadialBasisKernelType", "SigmoidKernelType"}) {
    for (const char* name : {"gamma", "coef0", "degree"}) {
      CheckFiniteAttribute(intake, intake.ModelChild(kind), name);
    }
  }
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    CheckFiniteAttribute(intake, machine, "threshold");
    CheckFiniteAttribute(intake, FindChild(machine, "Coefficients"), "absoluteValue");
    CheckExtension(intake, VendorExtension(machine));
  }
  for (const DOMElement* target : Children(intake.ModelChild("Targets"), "Target")) {
    for (const char* name : {"rescaleConstant", "rescaleFactor"})
      CheckFiniteAttribute(intake, target, name);
  }
}

}  // namespace svmscore::intake
