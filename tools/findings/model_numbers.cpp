#include "tools/findings/model_numbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/xml/limits.h"

namespace svmscore::tools {
namespace {

using Type = KernelNumbers::Type;

double NumberOr(const Element* element, const std::string& name, double otherwise) {
  return ParseNumber(AttributeText(element, name)).value_or(otherwise);
}

KernelNumbers ReadKernel(const Element* model) {
  const std::array<std::pair<const char*, Type>, 4> kinds = {
      {{"LinearKernelType", Type::kLinear},
       {"PolynomialKernelType", Type::kPolynomial},
       {"RadialBasisKernelType", Type::kRadialBasis},
       {"SigmoidKernelType", Type::kSigmoid}}};
  for (const auto& [name, type] : kinds) {
    const Element* element = FindChild(model, name);
    if (element == nullptr) continue;
    return {type, element, NumberOr(element, "gamma", 1.0), NumberOr(element, "coef0", 1.0),
            NumberOr(element, "degree", 1.0)};
  }
  return {};
}

std::vector<double> ReadVector(const Element* instance, std::size_t fields) {
  std::vector<double> values(fields, 0.0);
  const Element* array = FindChild(instance, "REAL-SparseArray");
  const std::vector<std::string> indices = TokensOf(FindChild(array, "Indices"));
  const std::vector<std::string> entries = TokensOf(EntriesOf(array));
  for (std::size_t i = 0; i < std::min(indices.size(), entries.size()); ++i) {
    const int index = TruncateToInt(NumberPrefix(indices[i].c_str()));
    if (index < 1 || static_cast<std::size_t>(index) > fields) continue;
    values[static_cast<std::size_t>(index) - 1] = NumberPrefix(entries[i].c_str());
  }
  return values;
}

std::string NameOfPosition(const Element* field) {
  if (NameOf(field) == "FieldRef") return AttributeText(field, "field");
  return AttributeText(field, "name") + "=" + AttributeText(field, "value");
}

MachineNumbers ReadMachine(const Element* element, const VectorIndex& index,
                           const std::unordered_map<std::string, std::size_t>& positions,
                           double threshold) {
  MachineNumbers machine;
  machine.element = element;
  machine.coefficients_element = FindChild(element, "Coefficients");
  machine.target = AttributeText(element, "targetCategory");
  machine.alternate = AttributeText(element, "alternateTargetCategory");
  machine.offset = NumberOr(machine.coefficients_element, "absoluteValue", 0.0);
  machine.threshold = NumberOr(element, "threshold", threshold);
  const MachineTerms terms = TermsOf(element, index);
  for (std::size_t i = 0; i < std::min(terms.vectors.size(), terms.coefficients.size()); ++i) {
    const auto found = positions.find(AttributeText(terms.vectors[i], "vectorId"));
    const double value = NumberOr(terms.coefficients[i], "value", 0.0);
    if (found == positions.end() || value == 0.0 || !std::isfinite(value)) continue;
    machine.vectors.push_back(found->second);
    machine.coefficients.push_back(value);
  }
  return machine;
}

}  // namespace

double KernelNumbers::Value(const std::vector<double>& x, const std::vector<double>& y) const {
  double sum = 0.0;
  for (std::size_t k = 0; k < x.size(); ++k) {
    sum += type == Type::kRadialBasis ? (x[k] - y[k]) * (x[k] - y[k]) : x[k] * y[k];
  }
  switch (type) {
    case Type::kNone:
    case Type::kLinear:
      return sum;
    case Type::kPolynomial:
      return std::pow(gamma * sum + coef0, degree);
    case Type::kRadialBasis:
      return std::exp(-gamma * sum);
    case Type::kSigmoid:
      return std::tanh(gamma * sum + coef0);
  }
  return sum;
}

ModelNumbers ReadNumbers(const Inspected& inspected) {
  ModelNumbers numbers;
  for (const Element* field : inspected.vectors.Fields()) {
    numbers.fields.push_back(NameOfPosition(field));
  }
  const std::uint64_t most = LimitsOf(inspected.model->getOwnerDocument()).entries;
  std::unordered_map<std::string, std::size_t> positions;
  for (const VectorInstance& instance : inspected.vectors.Instances()) {
    if (!instance.dropped.empty()) continue;
    positions.emplace(instance.id, numbers.vectors.size());
    // Here every position of a vector takes memory, also those that the document leaves out.
    if (positions.size() * numbers.fields.size() > most) {
      numbers.beyond_limit = instance.element;
      numbers.vectors.clear();
      numbers.instances.clear();
      return numbers;
    }
    numbers.vectors.push_back(ReadVector(instance.element, numbers.fields.size()));
    numbers.instances.push_back(instance.element);
  }
  numbers.kernel = ReadKernel(inspected.model);
  numbers.max_wins = AttributeText(inspected.model, "maxWins") == "true";
  const double threshold = NumberOr(inspected.model, "threshold", 0.0);
  for (const Element* machine : Children(inspected.model, "SupportVectorMachine")) {
    numbers.machines.push_back(ReadMachine(machine, inspected.vectors, positions, threshold));
  }
  return numbers;
}

bool FormPairs(const ModelNumbers& numbers) {
  std::set<std::string> names;
  std::set<std::pair<std::string, std::string>> pairs;
  for (const MachineNumbers& machine : numbers.machines) {
    if (machine.target.empty() || machine.alternate.empty()) return false;
    names.insert({machine.target, machine.alternate});
    if (machine.target == machine.alternate ||
        !pairs.insert(std::minmax(machine.target, machine.alternate)).second)
      return false;
  }
  return names.size() > 2 && pairs.size() == names.size() * (names.size() - 1) / 2;
}

std::string Listed(const std::vector<std::string>& names, std::size_t more) {
  const std::size_t shown = std::min(names.size(), kMostListed);
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  more += names.size() - shown;
  if (more > 0) text += fmt::format(" and {} more", more);
  return text;
}

}  // namespace svmscore::tools
