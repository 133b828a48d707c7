#include "tools/doctor/labelled_cases.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

#include "host/output/scheme.h"
#include "host/output/target_rules.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "tools/calibrate/calibration.h"
#include "tools/calibrate/figures.h"
#include "tools/calibrate/holdout.h"
#include "tools/calibrate/label_scale.h"
#include "tools/calibrate/sigmoid_fit.h"

namespace svmscore::tools {
namespace {

constexpr std::size_t kFewestCases = 20;  // of each category of a pair, or of a regression
// How rare a figure must be among documents that keep what they promise: that of the sigmoids of a
// document, and either side of a coverage.
constexpr double kRare = 1e-4;
constexpr double kRareCoverage = 5e-4;
// What hardly matters: a mean difference of probabilities; odds of missing a case as shares of
// those that should be, between which the intervals that a hundred cases give nearly always are.
constexpr double kSmallDifference = 0.05;
constexpr double kMostOdds = 2.5;
constexpr double kLeastOdds = 0.2;
constexpr double kUsualConfidence = 0.95;

// What scoring makes of a decision value, its limits included.
double ProbabilityOf(double decision, const Sigmoid& sigmoid) {
  const double z = sigmoid.a * decision + sigmoid.b;
  const double e = std::exp(-std::fabs(z));
  return std::clamp(z >= 0.0 ? e / (1.0 + e) : 1.0 / (1.0 + e), 1e-7, 0.9999999);
}

// What a sigmoid is worth on the cases of its pair.
struct Worth {
  std::vector<double> probabilities;
  double log_likelihood = 0.0;
  double mean = 0.0;        // of the probabilities
  double confidence = 0.0;  // mean of the larger of p and 1 - p
  double right = 0.0;       // the share of cases of which the larger is true
  double ece = 0.0;         // the expected calibration error
};

Worth WorthOf(const SigmoidCases& cases, const Sigmoid& sigmoid) {
  Worth worth;
  std::vector<int> actual;
  std::vector<double> percents;
  const auto count = static_cast<double>(cases.decisions.size());
  for (std::size_t c = 0; c < cases.decisions.size(); ++c) {
    const double p = ProbabilityOf(cases.decisions[c], sigmoid);
    const bool positive = cases.positive[c] != 0;
    worth.probabilities.push_back(p);
    worth.log_likelihood += positive ? std::log(p) : std::log1p(-p);
    worth.mean += p / count;
    worth.confidence += std::max(p, 1.0 - p) / count;
    if ((p >= 0.5) == positive) worth.right += 1.0 / count;
    actual.push_back(positive ? 0 : 1);
    percents.insert(percents.end(), {p, 1.0 - p});
  }
  worth.ece = FiguresOf(actual, actual, percents, 2).probabilities->ece;
  return worth;
}

double MeanDifference(const Worth& one, const Worth& other) {
  double sum = 0.0;
  for (std::size_t c = 0; c < one.probabilities.size(); ++c) {
    sum += std::fabs(one.probabilities[c] - other.probabilities[c]);
  }
  return sum / static_cast<double>(one.probabilities.size());
}

// A machine, the sigmoid of its extension, and the categories that its position or, of two
// categories, its response gives it.
struct Calibrated {
  std::size_t machine = 0;
  const Element* element = nullptr;
  Sigmoid sigmoid;
  std::size_t response = 0;
  std::size_t other = 0;
};

std::vector<Calibrated> CalibratedMachines(const LoadedModel& loaded, std::size_t machines) {
  const output::TargetRules& targets = loaded.output->Targets();
  const std::size_t count = targets.Target().GetCategories().size();
  std::vector<const Element*> elements;
  for (const Element* element :
       Children(FindModelElement(loaded.document.Dom()), "SupportVectorMachine")) {
    elements.push_back(element);
  }
  if (count < 2 || elements.size() != machines || machines != count * (count - 1) / 2) return {};
  std::vector<Calibrated> calibrated;
  std::size_t m = 0;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = i + 1; j < count; ++j, ++m) {
      const Element* extension = output::MachineExtension(elements[m]);
      if (extension == nullptr || !output::IsCompleteExtension(extension, true)) return {};
      const Element* parameters = FindChild(extension, "ProbabilityParameters");
      const auto a = ParseNumber(AttributeText(parameters, "A"));
      const auto b = ParseNumber(AttributeText(parameters, "B"));
      if (!a || !b || !std::isfinite(*a) || !std::isfinite(*b)) return {};
      calibrated.push_back({m, elements[m], {*a, *b}, i, j});
    }
  }
  if (count == 2) {
    const int response = targets.Target().GetCategoryIndexOfText(AttributeText(
        FindChild(output::MachineExtension(elements[0]), "ResponseCategory"), "response"));
    if (response < 0) return {};
    if (response == 1) std::swap(calibrated[0].response, calibrated[0].other);
  }
  return calibrated;
}

struct PairNames {
  std::string response;
  std::string other;
};

// In which way the probabilities are off.
std::string VerdictOf(const Worth& stated, double share, double difference,
                      const PairNames& names) {
  const double shift = stated.mean - share;
  if (std::fabs(shift) > 0.5 * difference) {
    return fmt::format("too {} for \"{}\": {:.3f} in the mean, where {:.3f} of the cases are",
                       shift > 0.0 ? "high" : "low", names.response, stated.mean, share);
  }
  return fmt::format(
      "{}: the more probable category has {:.3f} in the mean, and is right in {:.3f}",
      stated.confidence > stated.right ? "too sure" : "not sure enough", stated.confidence,
      stated.right);
}

// Whether twice this gain in log likelihood is too rare, among so many machines, to be chance:
// beyond the quantile of chi-square with two degrees of freedom, whose tail is exp(-x / 2).
bool IsClear(double gain, std::size_t machines) {
  return gain > -std::log(kRare / static_cast<double>(machines));
}

void CheckSigmoid(const Calibrated& machine, const SigmoidCases& cases, const PairNames& names,
                  std::size_t machines, FindingList& findings) {
  const auto count = static_cast<double>(cases.positive.size());
  const auto positive = static_cast<double>(
      std::count_if(cases.positive.begin(), cases.positive.end(), [](auto is) { return is != 0; }));
  const auto few = static_cast<double>(kFewestCases);
  if (positive < few || count - positive < few) return;
  Sigmoid fitted;
  try {
    fitted = FitSigmoid(cases);
  } catch (const std::domain_error&) {
    return;
  }
  const Worth stated = WorthOf(cases, machine.sigmoid);
  const Worth fit = WorthOf(cases, fitted);
  const double difference = MeanDifference(stated, fit);
  if (!IsClear(fit.log_likelihood - stated.log_likelihood, machines) ||
      difference <= kSmallDifference) {
    return;
  }
  const std::string figures = fmt::format(
      "; A {:.6g} and B {:.6g} fit, where the document has {:.6g} and {:.6g}: the probabilities "
      "differ by {:.3f} in the mean, and the expected calibration error is {:.3f} in place of "
      "{:.3f}",
      fitted.a, fitted.b, machine.sigmoid.a, machine.sigmoid.b, difference, fit.ece, stated.ece);
  const std::string on = fmt::format("{:.0f} cases of \"{}\" and {:.0f} of \"{}\"", positive,
                                     names.response, count - positive, names.other);
  const double share = positive / count;
  const double without_slope = positive * std::log(share) + (count - positive) * std::log1p(-share);
  if (machine.sigmoid.a * fitted.a < 0.0 && IsClear(fit.log_likelihood - without_slope, machines)) {
    const Worth turned = WorthOf(cases, {-machine.sigmoid.a, -machine.sigmoid.b});
    findings.Add("probabilities-reversed", machine.element,
                 fmt::format("on {} the probability of \"{}\" {} with the decision value, and the "
                             "share of its cases {}{}; with the signs of A and B changed they "
                             "would differ by {:.3f}",
                             on, names.response, machine.sigmoid.a > 0.0 ? "falls" : "rises",
                             machine.sigmoid.a > 0.0 ? "rises" : "falls", figures,
                             MeanDifference(turned, fit)));
    return;
  }
  findings.Add("probabilities-off", machine.element,
               fmt::format("on {} the probabilities are {}{}", on,
                           VerdictOf(stated, share, difference, names), figures));
}

void CheckSigmoids(const LoadedModel& loaded, const Holdout& holdout, FindingList& findings) {
  const auto& categories = loaded.output->Targets().Target().GetCategories();
  const std::vector<Calibrated> machines = CalibratedMachines(loaded, holdout.machines);
  for (const Calibrated& machine : machines) {
    SigmoidCases cases;
    for (std::size_t c = 0; c < holdout.Size(); ++c) {
      const auto actual = static_cast<std::size_t>(holdout.actual[c]);
      if (actual != machine.response && actual != machine.other) continue;
      cases.Add(holdout.decisions[c * holdout.machines + machine.machine],
                actual == machine.response);
    }
    CheckSigmoid(machine, cases,
                 {categories[machine.response]->GetText(), categories[machine.other]->GetText()},
                 machines.size(), findings);
  }
}

void CheckIntervals(const LoadedModel& loaded, const Holdout& holdout, FindingList& findings) {
  const std::size_t count = holdout.Size();
  if (holdout.intervals.size() != count || count < kFewestCases) return;
  const double confidence = StatedConfidence(loaded.document).value_or(kUsualConfidence);
  const LabelScale scale = ScaleOfLabels(holdout);
  if (!scale.curved.empty()) return;
  const IntervalFigures figures = FiguresOf(holdout.observed, scale.Of(holdout.intervals));
  const auto covered =
      static_cast<std::size_t>(std::lround(figures.coverage * static_cast<double>(count)));
  const std::size_t missed = count - covered;
  const double expected = (1.0 - confidence) * static_cast<double>(count);
  const bool narrow = static_cast<double>(missed) > expected;
  if (!narrow && static_cast<double>(missed) >= expected) return;
  const double chance =
      narrow ? LowerTail(covered, count, confidence) : LowerTail(missed, count, 1.0 - confidence);
  const double odds = static_cast<double>(missed) * confidence /
                      (static_cast<double>(covered) * (1.0 - confidence));
  if (chance > kRareCoverage || (odds >= kLeastOdds && odds <= kMostOdds)) return;
  const Element* machine =
      FindChild(FindModelElement(loaded.document.Dom()), "SupportVectorMachine");
  findings.Add("intervals-off", machine,
               fmt::format("of {} cases {} are in their intervals, {:.4f} of them, where it should "
                           "be {}: the intervals, {:.6g} wide in the mean, are too {}",
                           count, covered, figures.coverage, FormatNumber(confidence),
                           figures.mean_width, narrow ? "narrow" : "wide"));
}

}  // namespace

double LowerTail(std::size_t events, std::size_t trials, double p) {
  const auto n = static_cast<double>(trials);
  auto k = static_cast<double>(events);
  double term = std::exp(std::lgamma(n + 1.0) - std::lgamma(k + 1.0) - std::lgamma(n - k + 1.0) +
                         k * std::log(p) + (n - k) * std::log1p(-p));
  // Below the mean each term is smaller than the one after it.
  double sum = 0.0;
  for (; k >= 0.0 && term > 1e-17 * sum; --k) {
    sum += term;
    term *= k * (1.0 - p) / ((n - k + 1.0) * p);
  }
  return std::min(sum, 1.0);
}

void CheckCalibration(const LoadedModel& loaded, const LabelledCases& labelled,
                      FindingList& findings) {
  const Holdout holdout = ScoreHoldout(loaded, labelled.cases, labelled.actual, labelled.rules);
  RequireUsable(holdout, loaded, labelled.cases.name);
  const output::Scheme& scheme = loaded.output->Targets().GetScheme();
  const bool intervals = scheme.method == output::Method::kRegression && scheme.interval;
  const bool probabilities = scheme.percentages == output::Percentages::kProbabilities;
  if (!(intervals || probabilities)) return;
  if (HasAllVectors(holdout, loaded)) {
    findings.Add("cases-of-training", nullptr, "");
    return;
  }
  if (intervals) {
    CheckIntervals(loaded, holdout, findings);
  } else {
    CheckSigmoids(loaded, holdout, findings);
  }
}

}  // namespace svmscore::tools
