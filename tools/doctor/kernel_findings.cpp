// The kernel element and its parameters.
#include <algorithm>
#include <array>
#include <cmath>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/xml/transcoder.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

using Type = KernelNumbers::Type;

constexpr std::array kKernels = {"LinearKernelType", "PolynomialKernelType",
                                 "RadialBasisKernelType", "SigmoidKernelType"};
constexpr std::array kAttributes = {"gamma", "coef0", "degree", "description"};

template <typename List>
bool Holds(const List& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

std::vector<std::string> ParametersOf(Type type) {
  switch (type) {
    case Type::kPolynomial:
      return {"gamma", "coef0", "degree"};
    case Type::kRadialBasis:
      return {"gamma"};
    case Type::kSigmoid:
      return {"gamma", "coef0"};
    case Type::kNone:
    case Type::kLinear:
      break;
  }
  return {};
}

std::vector<std::string> UnknownAttributes(const Element* kernel) {
  std::vector<std::string> unknown;
  const auto* attributes = kernel->getAttributes();
  for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
    const std::string name = ToUtf8(attributes->item(i)->getNodeName());
    const bool foreign =
        name.starts_with("x-") || name.find(':') != std::string::npos || name.starts_with("xmlns");
    if (!foreign && !Holds(kAttributes, name)) unknown.push_back(name);
  }
  return unknown;
}

void CheckParameters(const KernelNumbers& kernel, FindingList& findings) {
  std::vector<std::string> absent;
  for (const std::string& name : ParametersOf(kernel.type)) {
    if (!FindAttribute(kernel.element, name)) absent.push_back(name);
  }
  const std::vector<std::string> unknown = UnknownAttributes(kernel.element);
  if (!unknown.empty() && !absent.empty()) {
    findings.Add("kernel-parameter-misnamed", kernel.element,
                 fmt::format("no kernel has an attribute {}, and this one lacks {}: 1 is used",
                             Listed(unknown), Listed(absent)));
  } else if (!unknown.empty()) {
    findings.Add("unknown-kernel-attribute", kernel.element,
                 fmt::format("no kernel has an attribute {}", Listed(unknown)));
  } else if (!absent.empty()) {
    findings.Add("kernel-parameter-absent", kernel.element,
                 fmt::format("it does not state {}: 1 is used", Listed(absent)));
  }
}

}  // namespace

void CheckKernel(const Examined& examined, FindingList& findings) {
  for (const Element* child : ChildElements(examined.document.model)) {
    const std::string name = NameOf(child);
    const bool kernel = name.ends_with("KernelType") || name.ends_with("Kernel");
    if (!kernel || Holds(kKernels, name)) continue;
    findings.Add("unknown-kernel", child, fmt::format("there is no kernel {}", name));
  }
  const KernelNumbers& kernel = examined.numbers.kernel;
  if (kernel.element == nullptr) return;
  CheckParameters(kernel, findings);
  if (kernel.type == Type::kRadialBasis && kernel.gamma < 0.0) {
    findings.Add("negative-gamma", kernel.element,
                 fmt::format("gamma is {}", FormatNumber(kernel.gamma)));
  }
  if (kernel.type == Type::kPolynomial && kernel.degree != std::floor(kernel.degree)) {
    findings.Add("fractional-degree", kernel.element,
                 fmt::format("the degree is {}", FormatNumber(kernel.degree)));
  }
}

}  // namespace svmscore::tools
