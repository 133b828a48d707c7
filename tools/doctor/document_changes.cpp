// Tries changes of the document, one at a time: a change that leads to the expected values explains
// why the document does not.
#include <algorithm>
#include <functional>

#include <fmt/format.h>

#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/transcoder.h"
#include "tools/doctor/comparison.h"

namespace svmscore::tools {
namespace {

using xercesc::DOMElement;

// Each change loads the document again and scores these rows.
constexpr std::size_t kRowsOfAKind = 500;
constexpr std::size_t kMachines = 60;

struct Change {
  KindOfFinding kind;
  std::string what;
  // Returns the element that it changed; null if there is nothing to change.
  std::function<DOMElement*(DOMElement* model)> make;
};

void Set(DOMElement* element, const std::string& name, const std::string& value) {
  element->setAttribute(ToUtf16(name).c_str(), ToUtf16(value).c_str());
}

void Swap(DOMElement* element, const std::string& a, const std::string& b) {
  if (element == nullptr) return;
  const std::string first = AttributeText(element, a);
  const std::string second = AttributeText(element, b);
  if (first.empty() || second.empty()) return;
  Set(element, a, second);
  Set(element, b, first);
}

void SwapSides(DOMElement* machine) {
  Swap(machine, "targetCategory", "alternateTargetCategory");
  Swap(FindChild(FindChild(machine, "Extension"), "ResponseCategory"), "response", "nonResponse");
}

void Multiply(DOMElement* element, const std::string& attribute, double factor) {
  const auto value = ParseNumber(AttributeText(element, attribute));
  if (value && *value != 0.0) Set(element, attribute, FormatNumber(*value * factor));
}

// Multiplies the coefficients and the absoluteValue of the machines; with `only`, of one machine.
Change Factors(KindOfFinding kind, std::string what, double coefficients, double offset,
               std::optional<std::size_t> only) {
  return {kind, std::move(what), [=](DOMElement* model) {
            DOMElement* first = nullptr;
            std::size_t position = 0;
            for (DOMElement* machine : Children(model, "SupportVectorMachine")) {
              if (only && position++ != *only) continue;
              DOMElement* list = FindChild(machine, "Coefficients");
              // Of a change of both, the whole machine is the place.
              if (first == nullptr) first = coefficients == offset ? machine : list;
              Multiply(list, "absoluteValue", offset);
              if (coefficients == 1.0) continue;
              for (DOMElement* coefficient : Children(list, "Coefficient")) {
                Multiply(coefficient, "value", coefficients);
              }
            }
            return first;
          }};
}

Change MaxWins() {
  return {"max-wins-inverted", "the expected values come out with the opposite maxWins",
          [](DOMElement* model) {
            Set(model, "maxWins", AttributeText(model, "maxWins") == "true" ? "false" : "true");
            return model;
          }};
}

Change AllMachinesSwapped() {
  return {"machine-sign",
          "the expected values come out when all machines have their categories swapped",
          [](DOMElement* model) {
            DOMElement* first = FindChild(model, "SupportVectorMachine");
            for (DOMElement* machine : Children(model, "SupportVectorMachine")) SwapSides(machine);
            return first;
          }};
}

Change SwappedMachine(const Element* machine, std::size_t position) {
  return {
      "machine-sign",
      fmt::format("the expected values come out when this machine has \"{}\" and \"{}\" swapped",
                  AttributeText(machine, "targetCategory"),
                  AttributeText(machine, "alternateTargetCategory")),
      [position](DOMElement* model) {
        std::size_t at = 0;
        for (DOMElement* candidate : Children(model, "SupportVectorMachine")) {
          if (at++ != position) continue;
          SwapSides(candidate);
          return candidate;
        }
        return static_cast<DOMElement*>(nullptr);
      }};
}

Change Method() {
  return {"method-mistaken", "the expected values come out with the other classificationMethod",
          [](DOMElement* model) {
            const bool pairs = AttributeText(model, "classificationMethod") == "OneAgainstOne";
            Set(model, "classificationMethod", pairs ? "OneAgainstAll" : "OneAgainstOne");
            return model;
          }};
}

Change KernelDefault(const char* kernel, const char* parameter, std::string value) {
  std::string what =
      fmt::format("the expected values come out when {} is {}, not 1", parameter, value);
  return {"kernel-default-differs", std::move(what),
          [kernel, parameter, value = std::move(value)](DOMElement* model) {
            DOMElement* element = FindChild(model, kernel);
            if (element == nullptr || FindAttribute(element, parameter)) {
              return static_cast<DOMElement*>(nullptr);
            }
            Set(element, parameter, value);
            return element;
          }};
}

std::vector<Change> ChangesOf(const LoadedModel& loaded) {
  const Element* model = FindModelElement(loaded.document.Dom());
  const auto method = loaded.output->Targets().GetScheme().method;
  const std::vector<const Element*> machines = ChildElements(model, "SupportVectorMachine");
  std::vector<Change> changes;
  if (method != output::Method::kRegression) {
    changes.push_back(MaxWins());
    changes.push_back(AllMachinesSwapped());
    changes.push_back(Method());
  }
  const std::string come_out = "the expected values come out when ";
  changes.push_back(Factors("offset-sign", come_out + "absoluteValue has the opposite sign", 1.0,
                            -1.0, std::nullopt));
  changes.push_back(
      Factors("offset-not-wanted", come_out + "absoluteValue is left out", 1.0, 0.0, std::nullopt));
  changes.push_back(Factors("offset-sign", come_out + "all coefficients have the opposite sign",
                            -1.0, 1.0, std::nullopt));
  changes.push_back(Factors("machine-sign", come_out + "all decision values have the opposite sign",
                            -1.0, -1.0, std::nullopt));
  const Element* fields = FindChild(FindChild(model, "VectorDictionary"), "VectorFields");
  const auto positions = static_cast<double>(
      std::max<std::size_t>(ChildElements(fields, "FieldRef").size() +
                                ChildElements(fields, "CategoricalPredictor").size(),
                            1));
  for (const char* kernel :
       {"PolynomialKernelType", "RadialBasisKernelType", "SigmoidKernelType"}) {
    changes.push_back(KernelDefault(kernel, "coef0", "0"));
    changes.push_back(KernelDefault(kernel, "gamma", FormatNumber(1.0 / positions)));
  }
  if (machines.size() < 2 || machines.size() > kMachines) return changes;
  for (std::size_t i = 0; i < machines.size(); ++i) {
    changes.push_back(SwappedMachine(machines[i], i));
    changes.push_back(Factors("offset-sign",
                              come_out + "absoluteValue of this machine has the opposite sign", 1.0,
                              -1.0, i));
    changes.push_back(Factors("machine-sign",
                              come_out + "the decision value of this machine has the opposite sign",
                              -1.0, -1.0, i));
  }
  return changes;
}

// At most so many rows that disagree, and as many that agree.
std::vector<std::size_t> RowsToTry(const Comparison& comparison, std::size_t& wrong) {
  std::vector<std::size_t> rows(comparison.wrong);
  if (rows.size() > kRowsOfAKind) rows.resize(kRowsOfAKind);
  wrong = rows.size();
  for (std::size_t row = 0; row < comparison.rows.size(); ++row) {
    if (rows.size() >= wrong + kRowsOfAKind) break;
    if (comparison.rows[row].agrees) rows.push_back(row);
  }
  return rows;
}

}  // namespace

bool ExplainByChange(const Suspect& suspect, const CaseFiles& files, const Comparison& comparison,
                     FindingList& findings) {
  std::size_t wrong = 0;
  const std::vector<std::size_t> rows = RowsToTry(comparison, wrong);
  // A change may explain one of two faults, so up to a tenth of the rows may still disagree.
  std::size_t limit = wrong / 10 + 1;
  std::optional<Finding> best;
  for (const Change& change : ChangesOf(suspect.loaded)) {
    try {
      PmmlDocument document = suspect.source.Parse();
      document.FixLines();
      MakeReadable(document, IntakeMode::kTolerate);
      DOMElement* element = change.make(FindModelElement(document.Dom()));
      if (element == nullptr) continue;
      const Finding finding{change.kind, {NameOf(element), document.LineOf(element)}, change.what};
      const LoadedModel changed = LoadModel(suspect.plugin, std::move(document));
      const std::size_t left = CountWrong(changed, files, comparison.columns, rows, limit);
      if (left >= limit) continue;
      best = finding;
      if (left > 0) best->detail += fmt::format(", except in {} of {} rows", left, rows.size());
      limit = left;
    } catch (const MCZandor_850::SSException&) {
      // The changed document cannot be loaded.
    }
    if (limit == 0) break;
  }
  if (!best) return false;
  findings.Add(*std::move(best));
  return true;
}

}  // namespace svmscore::tools
