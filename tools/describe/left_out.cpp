#include "tools/describe/left_out.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "host/text/number_text.h"

namespace svmscore::tools {
namespace {

constexpr std::array kKernels = {"LinearKernelType", "PolynomialKernelType",
                                 "RadialBasisKernelType", "SigmoidKernelType"};

// Of several models, and of several headers of a producer, the first is read.
void CheckOthers(const Inspected& inspected, FindingList& findings) {
  for (const Element* child : ChildElements(inspected.root)) {
    if (child == inspected.model || !NameOf(child).ends_with("Model")) continue;
    findings.Add("other-model", child,
                 "not read: only the first SupportVectorMachineModel of a document is");
  }
  const Element* first = nullptr;
  for (const Element* header : Children(inspected.root, "Header")) {
    for (const Element* application : Children(header, "Application")) {
      if (first != nullptr) {
        findings.Add("second-application", application,
                     "not read: the first Application names the producer");
      }
      first = application;
    }
  }
}

void CheckModelAttributes(const Inspected& inspected, FindingList& findings) {
  const Element* model = inspected.model;
  const auto threshold = FindAttribute(model, "threshold");
  if (threshold && !ParseNumber(*threshold)) {
    findings.Add("bad-threshold", model,
                 fmt::format("the threshold \"{}\" is not a number: 0 is used", *threshold));
  }
  if (!inspected.classification) return;
  const auto method = FindAttribute(model, "classificationMethod");
  if (method && *method != "OneAgainstOne" && *method != "OneAgainstAll") {
    findings.Add("unknown-method", model,
                 fmt::format("the classificationMethod \"{}\" is not known: OneAgainstAll is used",
                             *method));
  }
  const auto max_wins = FindAttribute(model, "maxWins");
  if (max_wins && *max_wins != "true" && *max_wins != "false") {
    findings.Add("bad-max-wins", model,
                 fmt::format("maxWins=\"{}\" is neither true nor false: false is used", *max_wins));
  }
}

void CheckKernel(const Inspected& inspected, FindingList& findings) {
  const Element* used = nullptr;
  for (const char* name : kKernels) {
    for (const Element* kernel : Children(inspected.model, name)) {
      if (used != nullptr) {
        findings.Add("second-kernel", kernel,
                     fmt::format("not used: the model's kernel is the {}", NameOf(used)));
      } else {
        used = kernel;
      }
    }
  }
}

// What the document declares of its results and does not get, or gets in a way worth telling.
void CheckResults(const Inspected& inspected, FindingList& findings) {
  if (inspected.output == nullptr) return;
  for (const output::Note& note : inspected.output->Notes()) {
    findings.Add("results", note.element, note.text);
  }
}

}  // namespace

void CheckDocument(const Inspected& inspected, FindingList& findings) {
  CheckOthers(inspected, findings);
  CheckModelAttributes(inspected, findings);
  CheckKernel(inspected, findings);
  CheckResults(inspected, findings);
}

void CheckCount(const Element* element, const std::string& attribute, std::size_t actual,
                std::string_view what, FindingList& findings) {
  const std::string text = AttributeText(element, attribute);
  if (text.empty() || ParseNumber(text) == static_cast<double>(actual)) return;
  findings.Add("count-disagrees", element,
               fmt::format("{} says {}, and there are {} {}: what is there counts", attribute, text,
                           actual, what));
}

void CheckLeftOut(const Inspected& inspected, FindingList& findings) {
  CheckDocument(inspected, findings);
  CheckFields(inspected, findings);
  CheckVectors(inspected, findings);
  CheckMachines(inspected, findings);
}

}  // namespace svmscore::tools
