// Which category a positive decision value means, compared between the places that say so.
#include <map>
#include <set>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "tools/calibrate/calibration.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

constexpr std::size_t kNeededVectors = 3;  // vectors that must contradict a machine
constexpr double kClear = 0.9;             // the share of them that makes it clear

struct Sides {
  std::string positive;
  std::string negative;
};

Sides SidesByVotes(const MachineNumbers& machine, bool max_wins) {
  return max_wins ? Sides{machine.target, machine.alternate}
                  : Sides{machine.alternate, machine.target};
}

// The two categories of each machine by its position; empty if positions do not count. With three
// or more categories, probabilities go by position: the machines are those of the pairs of the
// target's categories in order, whatever their labels say.
std::vector<Sides> PairsInOrder(const Examined& examined) {
  const std::vector<std::string>& categories = examined.document.categories;
  const auto scheme = output::SchemeOf(examined.document.model, categories.size());
  std::vector<Sides> pairs;
  if (scheme.percentages != output::Percentages::kProbabilities || categories.size() < 3) return {};
  for (std::size_t i = 0; i < categories.size(); ++i) {
    for (std::size_t j = i + 1; j < categories.size(); ++j) {
      pairs.push_back({categories[i], categories[j]});
    }
  }
  return pairs.size() == examined.numbers.machines.size() ? pairs : std::vector<Sides>();
}

// By the machine's extension: 1 / (1 + exp(A f + B)) is the probability of the response category.
// `in_order` are the categories of its position, if positions count.
std::optional<Sides> SidesByExtension(const MachineNumbers& machine, const Sides* in_order) {
  const Element* extension = output::MachineExtension(machine.element);
  if (extension == nullptr || !output::IsCompleteExtension(extension, true)) return std::nullopt;
  const Element* pair = FindChild(extension, "ResponseCategory");
  const double slope =
      ParseNumber(AttributeText(FindChild(extension, "ProbabilityParameters"), "A")).value_or(0.0);
  if (slope == 0.0) return std::nullopt;
  Sides sides{AttributeText(pair, "response"), AttributeText(pair, "nonResponse")};
  if (in_order != nullptr) sides = *in_order;
  if (slope > 0.0) std::swap(sides.positive, sides.negative);
  return sides;
}

void CheckExtensions(const ModelNumbers& numbers, bool is_calibrated, FindingList& findings) {
  for (const MachineNumbers& machine : numbers.machines) {
    const auto extension = SidesByExtension(machine, nullptr);
    const Sides votes = SidesByVotes(machine, numbers.max_wins);
    if (!extension || votes.positive.empty() || extension->positive == votes.positive ||
        extension->positive != votes.negative || extension->negative != votes.positive) {
      continue;
    }
    findings.Add(
        "extension-contradicts-votes", machine.element,
        fmt::format(
            "a positive decision value means \"{}\" by its extension, and \"{}\" by its votes{}",
            extension->positive, votes.positive,
            is_calibrated
                ? "; svmscore calibrate has fitted the extension to cases: leave it as it "
                  "is, and set maxWins"
                : ""));
  }
}

// A vector used by several machines belongs to the category that their pairs share.
std::vector<std::string> CategoriesOfVectors(const ModelNumbers& numbers) {
  std::vector<std::optional<std::set<std::string>>> possible(numbers.vectors.size());
  std::vector<std::size_t> uses(numbers.vectors.size(), 0);
  for (const MachineNumbers& machine : numbers.machines) {
    for (const std::size_t vector : machine.vectors) {
      ++uses[vector];
      auto& left = possible[vector];
      if (!left) {
        left = {machine.target, machine.alternate};
      } else {
        std::erase_if(*left, [&machine](const std::string& category) {
          return category != machine.target && category != machine.alternate;
        });
      }
    }
  }
  std::vector<std::string> categories(numbers.vectors.size());
  for (std::size_t i = 0; i < categories.size(); ++i) {
    if (uses[i] > 1 && possible[i]->size() == 1) categories[i] = *possible[i]->begin();
  }
  return categories;
}

// True if the machine puts vectors of known categories on the wrong side; nothing if too few are
// known, or if they do not agree.
std::optional<bool> IsReversed(const MachineNumbers& machine, const Sides& sides,
                               const std::vector<std::string>& categories) {
  std::size_t right = 0;
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < machine.vectors.size(); ++i) {
    const std::string& category = categories[machine.vectors[i]];
    if (category.empty()) continue;
    const bool positive = machine.coefficients[i] > 0.0;
    ++(category == (positive ? sides.positive : sides.negative) ? right : wrong);
  }
  const auto known = static_cast<double>(right + wrong);
  if (right + wrong < kNeededVectors) return std::nullopt;
  if (static_cast<double>(wrong) >= kClear * known) return true;
  if (static_cast<double>(right) >= kClear * known) return false;
  return std::nullopt;
}

void CheckSharedVectors(const Examined& examined, const std::vector<Sides>& pairs,
                        FindingList& findings) {
  const ModelNumbers& numbers = examined.numbers;
  const std::vector<std::string> categories = CategoriesOfVectors(numbers);
  std::vector<const MachineNumbers*> reversed;
  std::size_t upright = 0;
  bool extended = false;
  for (std::size_t i = 0; i < numbers.machines.size(); ++i) {
    const MachineNumbers& machine = numbers.machines[i];
    const auto extension = SidesByExtension(machine, i < pairs.size() ? &pairs[i] : nullptr);
    extended = extended || extension;
    const auto is_reversed = IsReversed(
        machine, extension.value_or(SidesByVotes(machine, numbers.max_wins)), categories);
    if (is_reversed && *is_reversed) reversed.push_back(&machine);
    if (is_reversed && !*is_reversed) ++upright;
  }
  if (reversed.size() > 1 && upright == 0 && !extended) {
    findings.Add("max-wins-inverted", examined.document.model,
                 fmt::format("by maxWins=\"{}\" each machine assigns the vectors that it shares "
                             "with others to a different category than they do",
                             numbers.max_wins));
    return;
  }
  for (const MachineNumbers* machine : reversed) {
    findings.Add("machine-sign", machine->element,
                 fmt::format("it assigns the vectors that it shares with other machines to the "
                             "wrong one of \"{}\" and \"{}\"",
                             machine->target, machine->alternate));
  }
}

}  // namespace

void CheckSigns(const Examined& examined, FindingList& findings) {
  if (!examined.document.classification) return;
  CheckExtensions(examined.numbers, IsCalibrated(examined.document.document), findings);
  const std::vector<Sides> pairs = PairsInOrder(examined);
  const auto scheme =
      output::SchemeOf(examined.document.model, examined.document.categories.size());
  if (scheme.method == output::Method::kOneAgainstOne && FormPairs(examined.numbers)) {
    CheckSharedVectors(examined, pairs, findings);
  }
}

}  // namespace svmscore::tools
