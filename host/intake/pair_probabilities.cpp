// A translator assigns the probability of the n-th machine to the n-th pair of the target's
// categories, with the earlier category as response, whatever categories the machine names: the
// position of the machine decides. A document that means something else gets a finding.
#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/output/scheme.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

using Positions = std::unordered_map<std::string, std::size_t>;

// The target's categories by their texts.
Positions CategoryPositions(const Target& target) {
  const LabelKeys keys(target.data_field);
  std::unordered_map<std::string, std::size_t> known;
  Positions positions;
  for (const std::string& category : ListedCategories(target)) {
    if (known.emplace(keys.Of(category), known.size()).second) {
      positions.emplace(category, positions.size());
    }
  }
  return positions;
}

// Walks the pairs (0,1), (0,2), ..., (1,2), ... of so many categories.
class PairWalk {
 public:
  explicit PairWalk(std::size_t categories) : categories_(categories) {}
  std::size_t Earlier() const { return earlier_; }
  std::size_t Later() const { return later_; }
  bool AtEnd() const { return later_ >= categories_; }
  void Next() {
    if (++later_ < categories_) return;
    ++earlier_;
    later_ = earlier_ + 1;
  }

 private:
  std::size_t categories_;
  std::size_t earlier_ = 0;
  std::size_t later_ = 1;
};

// Remarks on a machine whose extension names a pair other than that of its position, or names the
// pair in the opposite order.
void CheckPair(Intake& intake, const DOMElement* machine, const Positions& positions,
               const PairWalk& place) {
  const DOMElement* pair = FindChild(VendorExtension(machine), "ResponseCategory");
  const auto response = positions.find(FindAttribute(pair, "response").value_or(""));
  const auto other = positions.find(FindAttribute(pair, "nonResponse").value_or(""));
  const bool known = response != positions.end() && other != positions.end();
  const auto names = [&](std::size_t first, std::size_t second) {
    return known && !place.AtEnd() && response->second == first && other->second == second;
  };
  const auto target = positions.find(AttributeText(machine, "targetCategory"));
  const auto alternate = positions.find(AttributeText(machine, "alternateTargetCategory"));
  const bool named = target != positions.end() && alternate != positions.end();
  if (named && known &&
      std::minmax(target->second, alternate->second) !=
          std::minmax(response->second, other->second)) {
    intake.Tell("pair-out-of-order", machine,
                "an extension for another pair than it decides between", NameOf(machine));
    return;
  }
  if (names(place.Earlier(), place.Later())) return;
  if (names(place.Later(), place.Earlier())) {
    intake.Tell("response-later", machine, "a response that is the later category of its pair",
                NameOf(machine));
  } else {
    intake.Tell("pair-out-of-order", machine,
                "a probability for a pair other than that of its position", NameOf(machine));
  }
}

std::string Listed(const std::vector<std::size_t>& machines) {
  constexpr std::size_t kShown = 12;
  std::string text = machines.size() == 1 ? "machine " : "the machines ";
  for (std::size_t i = 0; i < machines.size(); ++i) {
    if (i > 0) text += ", ";
    if (i == kShown) return text + "...";
    text += std::to_string(machines[i]);
  }
  return text;
}

// Whether every machine can vote: one of a pair must name both of its categories.
bool CanVote(const Intake& intake) {
  const bool pairs = AttributeText(intake.Model(), "classificationMethod") == "OneAgainstOne" ||
                     CategoryPositions(FindTarget(intake)).size() < 3;
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    if (AttributeView(machine, "targetCategory").empty()) return false;
    if (pairs && AttributeView(machine, "alternateTargetCategory").empty()) return false;
  }
  return true;
}

}  // namespace

void UseCalibrationOfAll(Intake& intake) {
  if (!intake.IsClassification()) return;
  std::vector<std::size_t> lacking;
  const DOMElement* first = nullptr;
  DOMElement* last = nullptr;
  std::size_t machines = 0;
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    ++machines;
    last = machine;
    if (output::IsCompleteExtension(VendorExtension(machine), true)) continue;
    lacking.push_back(machines);
    if (first == nullptr) first = machine;
  }
  if (lacking.empty() || lacking.size() == machines) return;
  if (!CanVote(intake)) {
    return intake.Tell("probabilities-missing", first, "no probability of " + Listed(lacking),
                       NameOf(first));
  }
  intake.Tell("extension-on-some", first, "no probability of " + Listed(lacking), NameOf(first));
  // The last machine decides for all.
  if (lacking.back() == machines) return;
  SetAttribute(VendorExtension(last), "extender", "svmscore, not used");
}

void CheckPairs(Intake& intake) {
  if (!intake.IsClassification()) return;
  const Positions positions = CategoryPositions(FindTarget(intake));
  const DOMElement* last = nullptr;
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    last = machine;
  }
  // With two categories the response is found by its name. The last machine decides whether there
  // are probabilities at all.
  if (positions.size() < 3 || !output::IsCompleteExtension(VendorExtension(last), true)) return;
  PairWalk place(positions.size());
  for (const DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    if (output::IsCompleteExtension(VendorExtension(machine), true)) {
      CheckPair(intake, machine, positions, place);
    }
    place.Next();
  }
  if (place.AtEnd() && place.Earlier() + 1 == positions.size()) return;
  intake.Tell("pair-out-of-order", intake.Model(),
              "a number of machines other than the number of pairs", NameOf(intake.Model()));
}

}  // namespace svmscore::intake
