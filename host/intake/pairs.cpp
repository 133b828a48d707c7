// A translator takes the probability of the n-th machine for that of the n-th pair of the target's
// categories, whatever categories the machine names. Here the machines get into that order.
#include <algorithm>
#include <numeric>
#include <optional>
#include <unordered_map>

#include "host/intake/steps.h"
#include "host/intake/target_categories.h"
#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

struct Machine {
  DOMElement* element;
  DOMElement* pair = nullptr;     // ResponseCategory
  DOMElement* sigmoid = nullptr;  // ProbabilityParameters
  std::size_t place = kNone;      // among all pairs, where the extension names one
  bool reversed = false;          // the response is the later category
};

class Pairs {
 public:
  explicit Pairs(const Target& target) {
    const LabelKeys keys(target.data_field);
    std::unordered_map<std::string, std::size_t> known;
    for (const std::string& category : ListedCategories(target)) {
      if (known.emplace(keys.Of(category), known.size()).second) {
        index_.emplace(category, index_.size());
      }
    }
  }

  std::size_t Categories() const { return index_.size(); }
  std::size_t Count() const { return index_.size() * (index_.size() - 1) / 2; }

  Machine Read(DOMElement* element) const {
    Machine machine{element};
    DOMElement* extension = VendorExtension(element);
    if (!output::IsCompleteExtension(extension, true)) return machine;
    machine.pair = FindChild(extension, "ResponseCategory");
    machine.sigmoid = FindChild(extension, "ProbabilityParameters");
    const auto first = index_.find(*FindAttribute(machine.pair, "response"));
    const auto second = index_.find(*FindAttribute(machine.pair, "nonResponse"));
    if (first == index_.end() || second == index_.end() || first == second) return machine;
    const auto [low, high] = std::minmax(first->second, second->second);
    machine.place = low * (2 * Categories() - low - 1) / 2 + high - low - 1;
    machine.reversed = first->second > second->second;
    return machine;
  }

 private:
  std::unordered_map<std::string, std::size_t> index_;
};

// The same probability seen from the other category: 1 - 1 / (1 + exp(A f + B)).
void Reverse(const Machine& machine) {
  const std::string response = *FindAttribute(machine.pair, "response");
  SetAttribute(machine.pair, "response", *FindAttribute(machine.pair, "nonResponse"));
  SetAttribute(machine.pair, "nonResponse", response);
  for (const char* name : {"A", "B"}) {
    SetAttribute(machine.sigmoid, name, FormatNumber(-*FindNumber(machine.sigmoid, name)));
  }
}

void Reorder(DOMElement* model, std::vector<Machine>& machines) {
  DOMNode* mark = model->getOwnerDocument()->createTextNode(u"");
  model->insertBefore(mark, machines.front().element);
  std::sort(machines.begin(), machines.end(),
            [](const Machine& a, const Machine& b) { return a.place < b.place; });
  for (const Machine& machine : machines) {
    if (machine.reversed) Reverse(machine);
    model->insertBefore(machine.element, mark);
  }
  model->removeChild(mark)->release();
}

}  // namespace

void OrderPairs(Intake& intake) {
  if (!intake.IsClassification()) return;
  const Pairs pairs(FindTarget(intake));
  std::vector<Machine> machines;
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    machines.push_back(pairs.Read(machine));
  }
  // Two categories need no order. The last machine decides whether there are probabilities at all.
  if (pairs.Categories() < 3 || machines.empty() || machines.back().pair == nullptr) return;
  const Machine* stray = nullptr;
  bool complete = machines.size() == pairs.Count();
  // Of many categories there may be far more pairs than anything that the document holds.
  std::vector<bool> taken(complete ? pairs.Count() : 0);
  for (std::size_t i = 0; i < machines.size(); ++i) {
    const Machine& machine = machines[i];
    if (stray == nullptr && (machine.place != i || machine.reversed)) stray = &machine;
    complete = complete && machine.place != kNone && !taken[machine.place];
    if (complete) taken[machine.place] = true;
  }
  if (stray == nullptr && complete) return;
  // Nothing is taken for another pair: whoever looks at the extensions tells of the missing one.
  if (stray != nullptr && stray->pair == nullptr) return;
  const DOMElement* at = stray != nullptr ? stray->element : intake.Model();
  if (complete) {
    intake.Tell("pairs-ordered", at);
    Reorder(intake.Model(), machines);
  } else {
    intake.Tell("pair-out-of-order", at, "a probability that belongs to no pair of its place",
                NameOf(at));
  }
}

}  // namespace svmscore::intake
