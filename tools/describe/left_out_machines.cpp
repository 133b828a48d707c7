// Machines: terms that are lost, values that are defaults, and extensions that do not count.
#include <algorithm>
#include <string>
#include <unordered_set>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/text/number_text.h"
#include "tools/describe/left_out.h"

namespace svmscore::tools {
namespace {

using output::IsCompleteExtension;
using output::MachineExtension;
using output::Percentages;
using output::Scheme;

using Names = std::unordered_set<std::string>;

void CheckTerms(const Inspected& inspected, const Element* machine, FindingList& findings) {
  const MachineTerms terms = TermsOf(machine, inspected.vectors);
  const std::size_t pairs = std::min(terms.vectors.size(), terms.coefficients.size());
  for (std::size_t i = 0; i < pairs; ++i) {
    const std::string id = AttributeText(terms.vectors[i], "vectorId");
    if (!inspected.vectors.IsKept(id)) {
      findings.Add("unknown-vector", terms.vectors[i],
                   fmt::format("no vector \"{}\" is kept: the machine loses this term", id));
    }
    const auto value = FindAttribute(terms.coefficients[i], "value");
    if (!value) {
      findings.Add("no-coefficient-value", terms.coefficients[i], "it has no value: 0 is used");
    } else if (!ParseNumber(*value)) {
      findings.Add("bad-coefficient", terms.coefficients[i],
                   fmt::format("the value \"{}\" is not a number: 0 is used", *value));
    }
  }
  if (terms.vectors.size() > pairs) {
    findings.Add("surplus-vectors", terms.vectors[pairs],
                 fmt::format("{} support vectors have no coefficient: they are not used",
                             terms.vectors.size() - pairs));
  }
  if (terms.coefficients.size() > pairs) {
    findings.Add("surplus-coefficients", terms.coefficients[pairs],
                 fmt::format("{} coefficients have no support vector: they are not used",
                             terms.coefficients.size() - pairs));
  }
  if (terms.kept == 0) {
    findings.Add("empty-machine", machine,
                 "none of its terms is left: its decision value is the same for every case");
  }
}

void CheckAttributes(const Inspected& inspected, const Names& categories, const Element* machine,
                     FindingList& findings) {
  const auto threshold = FindAttribute(machine, "threshold");
  if (threshold && !ParseNumber(*threshold)) {
    findings.Add(
        "bad-threshold", machine,
        fmt::format("the threshold \"{}\" is not a number: the model's is used", *threshold));
  }
  const Element* coefficients = FindChild(machine, "Coefficients");
  const auto offset = FindAttribute(coefficients, "absoluteValue");
  if (coefficients != nullptr && !offset) {
    findings.Add("no-absolute-value", coefficients, "it has no absoluteValue: 0 is used");
  } else if (offset && !ParseNumber(*offset)) {
    findings.Add("bad-absolute-value", coefficients,
                 fmt::format("the absoluteValue \"{}\" is not a number: 0 is used", *offset));
  }
  if (!inspected.classification) return;
  for (const char* name : {"targetCategory", "alternateTargetCategory"}) {
    const std::string text = AttributeText(machine, name);
    if (text.empty() || categories.contains(text)) continue;
    findings.Add("unknown-category", machine,
                 fmt::format("{} \"{}\" is no category of the target: a vote for it counts for "
                             "nothing",
                             name, text));
  }
}

void CheckCounts(const Inspected& inspected, const Element* machine, FindingList& findings) {
  for (const char* name : {"SupportVectors", "Coefficients"}) {
    const std::vector<const Element*> lists = ChildElements(machine, name);
    for (std::size_t i = 1; i < lists.size(); ++i) {
      findings.Add("second-list", lists[i],
                   fmt::format("not read: the first {} of a machine is", name));
    }
  }
  const Element* vectors = FindChild(machine, "SupportVectors");
  CheckCount(vectors, "numberOfSupportVectors", ChildElements(vectors, "SupportVector").size(),
             "SupportVector elements", findings);
  CheckCount(vectors, "numberOfAttributes", inspected.vectors.Fields().size(), "vector fields",
             findings);
  const Element* coefficients = FindChild(machine, "Coefficients");
  CheckCount(coefficients, "numberOfCoefficients",
             ChildElements(coefficients, "Coefficient").size(), "Coefficient elements", findings);
}

// Returns true for a machine whose extension counts.
bool CheckExtension(const Inspected& inspected, const Names& categories, const Element* machine,
                    FindingList& findings) {
  const Element* extension = MachineExtension(machine);
  const std::vector<const Element*> all = ChildElements(machine, "Extension");
  for (std::size_t i = 1; i < all.size(); ++i) {
    if (AttributeText(all[i], "extender") != "svmscore") continue;
    findings.Add("extension-not-first", all[i],
                 "not read: it counts only as the first Extension of its machine");
  }
  if (extension == nullptr) return false;
  if (!IsCompleteExtension(extension, inspected.classification)) {
    findings.Add("extension-incomplete", extension,
                 inspected.classification
                     ? "not used: it needs ResponseCategory with response and nonResponse, and "
                       "ProbabilityParameters with the numbers A and B"
                     : "not used: it needs StandardDeviation");
    return false;
  }
  const Element* pair = FindChild(extension, "ResponseCategory");
  for (const char* name : {"response", "nonResponse"}) {
    if (!inspected.classification) break;
    const std::string text = AttributeText(pair, name);
    if (categories.contains(text)) continue;
    findings.Add("unknown-category", pair,
                 fmt::format("{} \"{}\" is no category of the target: it can never be predicted",
                             name, text));
  }
  return true;
}

// Of two categories the probabilities are written in the order response, nonResponse.
void CheckOrder(const Inspected& inspected, const std::vector<const Element*>& machines,
                FindingList& findings) {
  if (inspected.categories.size() != 2 || machines.size() != 1) return;
  const Scheme scheme = output::SchemeOf(inspected.model, 2);
  if (scheme.percentages != Percentages::kProbabilities) return;
  const Element* pair = FindChild(MachineExtension(machines[0]), "ResponseCategory");
  const std::string& first = inspected.categories[0];
  const std::string& second = inspected.categories[1];
  if (first == second || AttributeText(pair, "response") != second) return;
  findings.Add("percentages-exchanged", pair,
               fmt::format("the response \"{1}\" is the second category of the target: the model's "
                           "results hold its percentage as that of \"{0}\", and the other way "
                           "round; the columns of this program put them right",
                           first, second));
}

// Of three and more categories the machines' probabilities are taken for those of the pairs of the
// target's categories, in their order, whatever the machines say.
void CheckPairs(const Inspected& inspected, const std::vector<const Element*>& machines,
                FindingList& findings) {
  const std::vector<std::string>& categories = inspected.categories;
  const Scheme scheme = output::SchemeOf(inspected.model, categories.size());
  if (categories.size() < 3 || scheme.percentages != Percentages::kProbabilities) return;
  std::size_t m = 0;
  for (std::size_t i = 0; i < categories.size() && m < machines.size(); ++i) {
    for (std::size_t j = i + 1; j < categories.size() && m < machines.size(); ++j, ++m) {
      const Element* pair = FindChild(MachineExtension(machines[m]), "ResponseCategory");
      const std::string response = AttributeText(pair, "response");
      const std::string non_response = AttributeText(pair, "nonResponse");
      if (pair == nullptr || (response == categories[i] && non_response == categories[j])) continue;
      findings.Add("pair-out-of-order", pair,
                   fmt::format("the response \"{}\" against \"{}\" is taken for \"{}\" against "
                               "\"{}\", the pair of this machine's place: the probabilities are "
                               "those of other categories",
                               response, non_response, categories[i], categories[j]));
    }
  }
  const std::size_t pairs = categories.size() * (categories.size() - 1) / 2;
  if (machines.size() == pairs) return;
  findings.Add("machine-count", inspected.model,
               fmt::format("it has {} machines for the {} pairs of its categories: the "
                           "probabilities are not those of its machines",
                           machines.size(), pairs));
}

void CheckMethod(const Inspected& inspected, const std::vector<const Element*>& machines,
                 std::size_t extended, FindingList& findings) {
  const std::size_t categories = inspected.categories.size();
  const Scheme scheme = output::SchemeOf(inspected.model, categories);
  const bool last = !machines.empty() && scheme.percentages == Percentages::kProbabilities;
  if (extended > 0 && extended < machines.size()) {
    findings.Add(
        "extension-on-some", machines.back(),
        fmt::format("{} of {} machines have a usable Extension, and the last machine decides: "
                    "{}",
                    extended, machines.size(),
                    last ? "probabilities are computed, without those that the other "
                           "machines lack"
                         : "no probabilities are computed"));
  }
  const bool one_against_all =
      AttributeText(inspected.model, "classificationMethod") != "OneAgainstOne";
  if (categories <= 2 || !one_against_all) return;
  if (last) {
    findings.Add("method-not-used", inspected.model,
                 "the machines' Extension makes the model decide one-against-one, whatever its "
                 "classificationMethod says");
  } else if (machines.size() != categories) {
    findings.Add("machine-count", inspected.model,
                 fmt::format("it has {} machines for {} categories: one-against-all needs one for "
                             "each, and this model can predict only what its machines name",
                             machines.size(), categories));
  }
}

}  // namespace

void CheckMachines(const Inspected& inspected, FindingList& findings) {
  const std::vector<const Element*> machines =
      ChildElements(inspected.model, "SupportVectorMachine");
  const Names categories(inspected.categories.begin(), inspected.categories.end());
  std::size_t extended = 0;
  for (const Element* machine : machines) {
    CheckAttributes(inspected, categories, machine, findings);
    CheckCounts(inspected, machine, findings);
    CheckTerms(inspected, machine, findings);
    if (CheckExtension(inspected, categories, machine, findings)) ++extended;
  }
  if (!inspected.classification) return;
  CheckMethod(inspected, machines, extended, findings);
  CheckOrder(inspected, machines, findings);
  CheckPairs(inspected, machines, findings);
}

}  // namespace svmscore::tools
