// A translator takes INF, NaN and numbers beyond the range as they are, and whatever is computed
// from them says nothing about its case.
#include "host/pmml/intake/finite.h"

#include <array>
#include <cmath>

#include "host/number_text.h"
#include "host/pmml/elements.h"
#include "host/pmml/intake/steps.h"
#include "host/pmml/intake/target.h"
#include "host/tags.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;

constexpr StepKind kNotFinite{
    "number-not-finite",
    "a number is infinite, beyond the range of numbers, or NaN, and scores that it enters are no "
    "results of the model"};
constexpr StepKind kNegative{"deviation-negative",
                             "a StandardDeviation below 0 turns the interval around; -1 leaves it "
                             "out"};

// Few words are looked at twice.
bool IsFinite(WideView word) {
  const std::size_t exponent = word.find_first_of(u"eE");
  const bool large = exponent != WideView::npos && word.size() - exponent > 3;
  const bool special = word.ends_with(u'N') || word.ends_with(u'F');
  if (!large && !special && word.size() < 300) return true;
  const std::optional<double> number = ParseNumber(Narrow(word));
  return !number || std::isfinite(*number);
}

void Check(Intake& intake, const DOMElement* element, const XMLCh* name) {
  const WideView text = AttributeView(element, name);
  WideView rest = text;
  if (text.data() == nullptr || IsFinite(NextWord(rest))) return;
  intake.Doubt(kNotFinite, element, code::kBadValue, Narrow(text), Narrow(name), NameOf(element));
}

void CheckExtension(Intake& intake, const DOMElement* extension) {
  const DOMElement* sigmoid = FindChild(extension, tags::XML_ELE_SVM_PROBABILITYPARAM);
  for (const XMLCh* name : {u"A", u"B"}) Check(intake, sigmoid, name);
  const DOMElement* deviation = FindChild(extension, tags::XML_ELE_SVM_STANDARDDEVIATION);
  if (deviation == nullptr) return;
  WideText joined;
  const WideView text = TextView(deviation, joined);
  CheckFiniteWords(intake, deviation, text);
  if (ParseNumber(Narrow(text)).value_or(0.0) < 0.0) {
    intake.Doubt(kNegative, deviation, code::kBadContent, "a negative number", NameOf(deviation));
  }
}

}  // namespace

void CheckFiniteWords(Intake& intake, const DOMElement* element, WideView text) {
  for (WideView word = NextWord(text); !word.empty(); word = NextWord(text)) {
    if (IsFinite(word)) continue;
    return intake.Doubt(kNotFinite, element, code::kBadContent, "the number " + Narrow(word),
                        NameOf(element));
  }
}

void CheckFiniteNumbers(Intake& intake) {
  Check(intake, intake.Model(), u"threshold");
  for (const std::string& kind :
       {tags::XML_ELE_SVM_KFTPOLY, tags::XML_ELE_SVM_KFTRBF, tags::XML_ELE_SVM_KFTSIGMOID}) {
    for (const XMLCh* name : {u"gamma", u"coef0", u"degree"}) {
      Check(intake, intake.ModelChild(kind), name);
    }
  }
  for (const DOMElement* machine : Children(intake.Model(), tags::XML_ELE_SVM_SVM)) {
    Check(intake, machine, u"threshold");
    const DOMElement* coefficients = FindChild(machine, tags::XML_ELE_SVM_COEFFICIENTS);
    Check(intake, coefficients, u"absoluteValue");
    for (const DOMElement* coefficient : Children(coefficients, tags::XML_ELE_SVM_COEFFICIENT)) {
      Check(intake, coefficient, u"value");
    }
    CheckExtension(intake, VendorExtension(machine));
  }
  for (const DOMElement* target : Children(intake.ModelChild(tags::XML_ELE_TARGETS), "Target")) {
    for (const XMLCh* name : {u"rescaleConstant", u"rescaleFactor"}) Check(intake, target, name);
  }
}

}  // namespace svmscore::intake
