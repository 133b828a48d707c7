// Statements of a mining schema that a translator ignores or reads differently.
#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/intake/steps.h"
#include "host/text/number_key.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr std::array kUsages = {"active", "predicted", "target",          "supplementary",
                                "group",  "order",     "frequencyWeight", "analysisWeight"};
constexpr std::array kMissingTreatments = {"asIs",     "asMean",  "asMode",
                                           "asMedian", "asValue", "returnInvalid"};

// Remarks on an attribute whose text is not one of the known words.
template <std::size_t kCount>
void CheckWord(Intake& intake, const DOMElement* field, const char* attribute,
               const std::array<const char*, kCount>& known, Kind kind) {
  const auto text = FindAttribute(field, attribute);
  if (!text || std::find(known.begin(), known.end(), *text) != known.end()) return;
  intake.TellNearName(*text, {known.begin(), known.end()}, kind, field, *text, attribute,
                      "MiningField");
}

// The first target is predicted; its name is kept in `target`.
void CheckTarget(Intake& intake, const DOMElement* field, const std::string& name,
                 std::string& target) {
  const WideView usage = AttributeView(field, "usageType");
  if (usage != u"target" && usage != u"predicted") return;
  if (target.empty()) {
    target = name;
  } else {
    intake.Tell("second-target", field, "a second target, " + name + ',', "MiningField");
  }
}

void CheckReplacement(Intake& intake, const DOMElement* field, const DOMElement* declared) {
  if (AttributeView(declared, "dataType") != u"integer") return;
  const auto text = FindAttribute(field, "missingValueReplacement");
  const auto number = text ? ParseNumber(*text) : std::nullopt;
  if (!number) return;
  const auto whole = ParseInteger(*text);
  const bool fraction = *number != std::floor(*number);
  if (!fraction && (!whole || KeyOf(*whole).rest == 0)) return;
  intake.Tell(fraction ? Kind("fractional-replacement") : Kind("rounded-replacement"), field, *text,
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
      intake.Tell("interval-ignored", interval, "an Interval of a field that is not continuous",
                  "DataField");
    }
  }
  const WideView outliers = AttributeView(use, "outliers");
  if ((type == u"continuous" && !text) || outliers.empty() || outliers == u"asIs") return;
  intake.Tell("outliers-ignored", use, Narrow(outliers), "outliers", "MiningField");
}

}  // namespace

void CheckMiningSchema(Intake& intake) {
  const DOMElement* dictionary = FindChild(intake.Root(), "DataDictionary");
  std::unordered_map<std::string, const DOMElement*> declared;
  std::vector<std::string> names;
  for (const DOMElement* field : Children(dictionary, "DataField")) {
    names.push_back(Narrow(AttributeView(field, "name")));
    declared.try_emplace(names.back(), field);
  }
  std::unordered_set<std::string> seen;
  std::string target;
  for (const DOMElement* field : Children(intake.ModelChild("MiningSchema"), "MiningField")) {
    const auto name = FindAttribute(field, "name");
    // A translator says that it is missing.
    if (!name) continue;
    const auto found = declared.find(*name);
    if (found == declared.end()) {
      intake.TellNearName(*name, names, "unknown-mining-field", field, *name, "MiningField");
      continue;
    }
    if (!seen.insert(*name).second) {
      intake.Tell("mining-field-repeated", field, *name, "MiningField");
      continue;
    }
    CheckWord(intake, field, "usageType", kUsages, "unknown-usage");
    CheckTarget(intake, field, *name, target);
    CheckWord(intake, field, "missingValueTreatment", kMissingTreatments,
              "missing-treatment-ignored");
    CheckReplacement(intake, field, found->second);
    CheckNumbersOnly(intake, found->second, field);
  }
  for (const DOMElement* field : Children(dictionary, "DataField")) {
    const std::string name = Narrow(AttributeView(field, "name"));
    if (!seen.contains(name)) CheckNumbersOnly(intake, field, nullptr);
  }
}

}  // namespace svmscore::intake
