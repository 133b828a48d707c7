// What a mining schema says and a translator passes over, or takes in a way of its own.
#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>
#include <unordered_set>

#include "host/intake/steps.h"
#include "host/text/number_key.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr StepKind kNoField{"mining-field-ignored",
                            "a mining field that the data dictionary does not declare is not read"};
constexpr StepKind kTwice{
    "mining-field-repeated",
    "of several mining fields of one name the last decides, and of several replacements of missing "
    "values the last one that is given"};
constexpr StepKind kUsage{"usage-ignored", "a field whose usageType is not known is no input"};
constexpr StepKind kTreatment{"missing-treatment-ignored",
                              "a missingValueTreatment that is not known has no effect"};
constexpr StepKind kFraction{
    "fractional-replacement",
    "a fraction that replaces missing values of an integer field is used as it stands"};

constexpr StepKind kRounded{
    "rounded-replacement",
    "a whole number beyond 2^53 that replaces missing values is used as the nearest double"};
constexpr StepKind kInterval{"interval-ignored",
                             "an Interval of a field that is not continuous is not read"};
constexpr StepKind kOutliers{
    "outliers-ignored",
    "the treatment of outliers has no effect on a field that is not a continuous number"};

constexpr std::array kUsages = {"active", "predicted", "target",          "supplementary",
                                "group",  "order",     "frequencyWeight", "analysisWeight"};
constexpr std::array kMissingTreatments = {"asIs",     "asMean",  "asMode",
                                           "asMedian", "asValue", "returnInvalid"};

// Doubts an attribute whose text is none of the known words.
template <std::size_t kCount>
void CheckWord(Intake& intake, const DOMElement* field, const char* attribute,
               const std::array<const char*, kCount>& known, const StepKind& kind) {
  const auto text = FindAttribute(field, attribute);
  if (!text || std::find(known.begin(), known.end(), *text) != known.end()) return;
  intake.Doubt(kind, field, code::kBadValue, *text, attribute, "MiningField");
}

void CheckReplacement(Intake& intake, const DOMElement* field, const DOMElement* declared) {
  if (AttributeView(declared, "dataType") != u"integer") return;
  const auto text = FindAttribute(field, "missingValueReplacement");
  const auto number = text ? ParseNumber(*text) : std::nullopt;
  if (!number) return;
  const auto whole = ParseInteger(*text);
  const bool fraction = *number != std::floor(*number);
  if (!fraction && (!whole || KeyOf(*whole).rest == 0)) return;
  intake.Doubt(fraction ? kFraction : kRounded, field, code::kBadValue, *text,
               "missingValueReplacement", "MiningField");
}

// What is declared of a field for numbers only. `use` may be null, and overrides the operation
// type.
void CheckNumbersOnly(Intake& intake, const DOMElement* declared, const DOMElement* use) {
  WideView type = AttributeView(use, "optype");
  if (type.data() == nullptr) type = AttributeView(declared, "optype");
  const bool text = AttributeView(declared, "dataType") == u"string";
  if (type != u"continuous") {
    for (const DOMElement* interval : Children(declared, "Interval")) {
      intake.Doubt(kInterval, interval, code::kBadContent,
                   "an Interval of a field that is not continuous", "DataField");
    }
  }
  const WideView outliers = AttributeView(use, "outliers");
  if ((type == u"continuous" && !text) || outliers.empty() || outliers == u"asIs") return;
  intake.Doubt(kOutliers, use, code::kBadValue, Narrow(outliers), "outliers", "MiningField");
}

}  // namespace

void CheckMiningSchema(Intake& intake) {
  const DOMElement* dictionary = FindChild(intake.Root(), "DataDictionary");
  std::unordered_map<std::string, const DOMElement*> declared;
  for (const DOMElement* field : Children(dictionary, "DataField")) {
    declared.try_emplace(Narrow(AttributeView(field, "name")), field);
  }
  std::unordered_set<std::string> seen;
  for (const DOMElement* field : Children(intake.ModelChild("MiningSchema"), "MiningField")) {
    const auto name = FindAttribute(field, "name");
    // A translator says that it is missing.
    if (!name) continue;
    const auto found = declared.find(*name);
    if (found == declared.end()) {
      intake.Doubt(kNoField, field, code::kUnknownField, *name, "MiningField");
      continue;
    }
    if (!seen.insert(*name).second) {
      intake.Doubt(kTwice, field, code::kDuplicateName, *name, "MiningField");
      continue;
    }
    CheckWord(intake, field, "usageType", kUsages, kUsage);
    CheckWord(intake, field, "missingValueTreatment", kMissingTreatments, kTreatment);
    CheckReplacement(intake, field, found->second);
    CheckNumbersOnly(intake, found->second, field);
  }
  for (const DOMElement* field : Children(dictionary, "DataField")) {
    const std::string name = Narrow(AttributeView(field, "name"));
    if (!seen.contains(name)) CheckNumbersOnly(intake, field, nullptr);
  }
}

}  // namespace svmscore::intake
