// Vector positions that matter too little or too much, and kernel values that do not distinguish
// vectors.
#include <algorithm>
#include <cmath>
#include <functional>

#include <fmt/format.h>

#include "host/intake/field_graph.h"
#include "host/text/number_text.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

using Type = KernelNumbers::Type;

// The number of vectors whose kernel values are examined, spread over all.
constexpr std::size_t kVectorsLookedAt = 60;
// A field with more than this share of the distance leaves too little for the others.
constexpr double kDominates = 0.9999;
constexpr double kVanishes = 1e-12;
constexpr double kIsOne = 1.0 - 1e-9;

const Element* VectorFieldsOf(const Inspected& document) {
  return FindChild(FindChild(document.model, "VectorDictionary"), "VectorFields");
}

double VarianceAt(const ModelNumbers& numbers, std::size_t position) {
  const auto count = static_cast<double>(numbers.vectors.size());
  double mean = 0.0;
  for (const auto& vector : numbers.vectors) mean += vector[position] / count;
  double variance = 0.0;
  for (const auto& vector : numbers.vectors) {
    variance += (vector[position] - mean) * (vector[position] - mean) / count;
  }
  return variance;
}

bool IsConstant(const ModelNumbers& numbers, std::size_t position) {
  return std::all_of(numbers.vectors.begin(), numbers.vectors.end(), [&](const auto& vector) {
    return vector[position] == numbers.vectors[0][position];
  });
}

void CheckSpread(const Examined& examined, FindingList& findings) {
  const ModelNumbers& numbers = examined.numbers;
  if (numbers.vectors.size() < 2) return;
  std::vector<std::string> constant;
  double sum = 0.0;
  double largest = 0.0;
  std::size_t largest_at = 0;
  for (std::size_t i = 0; i < numbers.fields.size(); ++i) {
    if (IsConstant(numbers, i)) {
      constant.push_back(
          fmt::format("{} ({})", numbers.fields[i], FormatNumber(numbers.vectors[0][i])));
      continue;
    }
    const double variance = VarianceAt(numbers, i);
    sum += variance;
    if (variance <= largest) continue;
    largest = variance;
    largest_at = i;
  }
  const Element* element = VectorFieldsOf(examined.document);
  if (!constant.empty()) {
    findings.Add("constant-field", element,
                 fmt::format("{} of {} positions have one value in all vectors: {}",
                             constant.size(), numbers.fields.size(), Listed(constant)));
  }
  const std::size_t varied = numbers.fields.size() - constant.size();
  if (numbers.kernel.type == Type::kLinear || varied < 2 || !(largest > kDominates * sum)) return;
  findings.Add("field-dominates", element,
               fmt::format("{} makes up {:.4f}% of the squared distance between vectors",
                           numbers.fields[largest_at], 100.0 * largest / sum));
}

void CheckKernelValues(const Examined& examined, FindingList& findings) {
  const ModelNumbers& numbers = examined.numbers;
  const std::size_t step = numbers.vectors.size() / kVectorsLookedAt + 1;
  std::vector<double> values;
  for (std::size_t i = 0; i < numbers.vectors.size(); i += step) {
    for (std::size_t j = 0; j < i; j += step) {
      if (numbers.vectors[i] == numbers.vectors[j]) continue;
      values.push_back(numbers.kernel.Value(numbers.vectors[i], numbers.vectors[j]));
    }
  }
  if (values.size() < 3) return;
  const auto all = [&values](const std::function<bool(double)>& is) {
    return std::all_of(values.begin(), values.end(), is);
  };
  const Element* element = numbers.kernel.element;
  const std::string gamma = "gamma is " + FormatNumber(numbers.kernel.gamma);
  if (numbers.kernel.type == Type::kRadialBasis) {
    if (all([](double value) { return value < kVanishes; })) {
      findings.Add("kernel-vanishes", element, gamma + ", and no two vectors are similar");
    } else if (all([](double value) { return value > kIsOne && value <= 1.0; })) {
      findings.Add("kernel-constant", element, gamma + ", and all vectors look alike");
    }
  } else if (numbers.kernel.type == Type::kSigmoid &&
             all([](double value) { return std::abs(value) > 1.0 - kVanishes; })) {
    findings.Add("kernel-saturates", element, gamma + ", and all kernel values are 1 or -1");
  }
}

// Calls `fits` with every number that vectors hold at the position; true where most do not fit.
template <typename Fits>
bool MostDoNotFit(const ModelNumbers& numbers, std::size_t position, const Fits& fits) {
  const auto misfits = std::count_if(numbers.vectors.begin(), numbers.vectors.end(),
                                     [&](const auto& vector) { return !fits(vector[position]); });
  return static_cast<std::size_t>(misfits) * 2 > numbers.vectors.size();
}

bool IsIndicator(const intake::FieldGraph& graph, const Element* field) {
  if (NameOf(field) == "CategoricalPredictor") return true;
  const Element* derived = graph.Derived(AttributeText(field, "field"));
  return FindChild(derived, "NormDiscrete") != nullptr;
}

bool IsInside(const Element* interval, double value) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::string closure = AttributeText(interval, "closure");
  return Interval{ParseNumber(AttributeText(interval, "leftMargin")).value_or(-infinity),
                  ParseNumber(AttributeText(interval, "rightMargin")).value_or(infinity),
                  closure.starts_with("closed"), closure.ends_with("Closed")}
      .Contains(value);
}

// A linear machine may hold a single vector of weights, which is not a training case.
void CheckReach(const Examined& examined, FindingList& findings) {
  const ModelNumbers& numbers = examined.numbers;
  if (numbers.kernel.type == Type::kLinear || numbers.vectors.size() < 2) return;
  const intake::FieldGraph graph(examined.document.root, examined.document.model);
  const auto& positions = examined.document.vectors.Fields();
  for (std::size_t i = 0; i < positions.size(); ++i) {
    const std::string name = AttributeText(positions[i], "field");
    if (IsIndicator(graph, positions[i])) {
      const auto values = graph.ValuesOf(name);
      if (MostDoNotFit(numbers, i, [&values](double value) {
            return values == nullptr ? value == 0.0 || value == 1.0
                                     : values->Holds(FormatNumber(value));
          })) {
        findings.Add("indicator-not-0-or-1", positions[i],
                     fmt::format("most vectors hold numbers at {} that the field cannot have",
                                 numbers.fields[i]));
      }
      continue;
    }
    const std::vector<const Element*> intervals =
        graph.Derived(name) != nullptr ? std::vector<const Element*>()
                                       : ChildElements(graph.DataField(name), "Interval");
    if (intervals.empty()) continue;
    if (MostDoNotFit(numbers, i, [&intervals](double value) {
          return std::any_of(intervals.begin(), intervals.end(), [value](const Element* interval) {
            return IsInside(interval, value);
          });
        })) {
      findings.Add("vector-outside-interval", positions[i],
                   fmt::format("most vectors are outside the intervals of {}", name));
    }
  }
}

}  // namespace

void CheckScale(const Examined& examined, FindingList& findings) {
  CheckSpread(examined, findings);
  CheckKernelValues(examined, findings);
  CheckReach(examined, findings);
}

}  // namespace svmscore::tools
