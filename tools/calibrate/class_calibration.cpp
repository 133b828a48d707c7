#include "tools/calibrate/class_calibration.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/output/target_rules.h"
#include "tools/base/bad_input.h"

namespace svmscore::tools {
namespace {

// A category with fewer cases gets a remark.
constexpr std::size_t kFewCases = 20;

// The machine that decides between each pair of categories, in the order of the pairs.
std::vector<std::size_t> MachinesOfPairs(const BatchModel& model, std::size_t categories,
                                         const std::string& name) {
  const std::size_t machines = model.DecisionCount();
  const std::size_t pairs = categories * (categories - 1) / 2;
  if (machines != pairs) {
    throw BadDocument(fmt::format(
        "{}: it cannot be calibrated: {} machine{} for {} categories, where there must be one for "
        "each of {} pair{}",
        name, machines, machines == 1 ? "" : "s", categories, pairs, pairs == 1 ? "" : "s"));
  }
  // Of two categories there is one machine, whatever it names.
  if (categories == 2) return {0};
  std::map<std::pair<int, int>, std::size_t> known;
  for (std::size_t m = 0; m < machines; ++m) {
    const auto [target, alternate] = model.DecisionCategories(m);
    const bool named = target >= 0 && alternate >= 0 && target != alternate;
    if (!named || !known.emplace(std::minmax({target, alternate}), m).second) {
      throw BadDocument(fmt::format("{}: it cannot be calibrated: machine {} {}", name, m + 1,
                                    named ? "decides between the same categories as an earlier one"
                                          : "does not name two categories of the target"));
    }
  }
  std::vector<std::size_t> order;
  order.reserve(known.size());
  for (const auto& [pair, machine] : known) order.push_back(machine);
  return order;
}

}  // namespace

ClassCalibration::ClassCalibration(const CalibrationOrder& order, const BatchModel& model)
    : order_(order), target_(order.loaded.output->Targets().Target()) {
  for (const MCZandor_850::ScoreValue* category : target_.GetCategories()) {
    categories_.push_back(category->GetText());
  }
  if (order.loaded.output->Targets().GetScheme().method == output::Method::kOneAgainstAll) {
    throw BadDocument(fmt::format(
        "{}: it cannot be calibrated: each machine decides between one category and all others "
        "(one-against-all), and the document can hold probabilities of pairs of categories only; "
        "train one machine for each pair (one-against-one)",
        order.name));
  }
  if (categories_.size() < 2) {
    throw BadDocument(
        fmt::format("{}: it cannot be calibrated: its target has one category", order.name));
  }
  machines_ = MachinesOfPairs(model, categories_.size(), order.name);
  for (const std::size_t m : machines_) {
    const auto [target, alternate] = model.DecisionCategories(m);
    target_is_later_.push_back(target > alternate);
  }
}

void ClassCalibration::Run(const Holdout& holdout, CalibrationResult& result) {
  holdout_ = &holdout;
  decisions_ = InPairOrder(holdout);
  CountCases(result);
  const std::vector<Sigmoid> sigmoids = FitAll(nullptr, 0);
  AddPairs(sigmoids, result);
  const std::size_t count = categories_.size();
  result.before = FiguresOf(holdout.actual, holdout.predicted, holdout.percents, count);
  const PairModel::Scores after =
      PairModel(order_.plugin, count, sigmoids, order_.limits).Score(decisions_);
  for (std::size_t c = 0; c < holdout.Size(); ++c) {
    result.changed += after.predicted[c] == holdout.predicted[c] ? 0 : 1;
  }
  if (2 * result.changed > holdout.Size()) {
    result.remarks.push_back(
        "more than half of the predictions change: the labels may be exchanged, or the decision "
        "values mean the other category");
  }
  const PairModel::Scores validated = CrossValidate();
  result.after = FiguresOf(holdout.actual, validated.predicted, validated.percents, count);
  TellOfBefore(result);
}

void ClassCalibration::TellOfBefore(CalibrationResult& result) const {
  const auto& before = result.before.probabilities;
  if (!before) return;
  const output::Percentages percentages = order_.loaded.output->Targets().GetScheme().percentages;
  if (percentages == output::Percentages::kVoteShares) {
    result.remarks.push_back("before: the figures are those of vote shares, not of probabilities");
  }
  const ProbabilityFigures& after = *result.after.probabilities;
  if (after.brier > before->brier && after.log_loss > before->log_loss) {
    result.remarks.push_back(
        "the probabilities become worse, by Brier score and log loss: leave the document as it is, "
        "or calibrate it with more cases");
  }
}

std::vector<MachineCalibration> ClassCalibration::Machines(const CalibrationResult& result) const {
  std::vector<MachineCalibration> machines;
  for (const PairCalibration& pair : result.pairs) {
    machines.push_back({pair.machine - 1, pair.response, pair.other, pair.sigmoid, 0.0});
  }
  return machines;
}

bool ClassCalibration::Confirms(const Holdout& before, const Holdout& after,
                                const CalibrationResult& result) const {
  const std::vector<double> decisions = InPairOrder(before);
  if (before.actual != after.actual || decisions != after.decisions) return false;
  std::vector<Sigmoid> sigmoids;
  for (const PairCalibration& pair : result.pairs) sigmoids.push_back(pair.sigmoid);
  const PairModel::Scores scores =
      PairModel(order_.plugin, categories_.size(), sigmoids, order_.limits).Score(decisions);
  return scores.percents == after.percents && scores.predicted == after.predicted;
}

std::vector<double> ClassCalibration::InPairOrder(const Holdout& holdout) const {
  std::vector<double> ordered;
  ordered.reserve(holdout.decisions.size());
  for (std::size_t c = 0; c < holdout.Size(); ++c) {
    for (const std::size_t m : machines_) {
      ordered.push_back(holdout.decisions[c * holdout.machines + m]);
    }
  }
  return ordered;
}

void ClassCalibration::CountCases(CalibrationResult& result) {
  result.categories = categories_;
  result.cases.assign(categories_.size(), 0);
  folds_.clear();
  for (const int actual : holdout_->actual) {
    folds_.push_back(result.cases[static_cast<std::size_t>(actual)]++ % kFolds);
  }
  std::vector<std::string> absent;
  std::vector<std::string> few;
  for (std::size_t k = 0; k < categories_.size(); ++k) {
    if (result.cases[k] == 0) absent.push_back(categories_[k]);
    if (result.cases[k] < kFewCases) {
      few.push_back(fmt::format("{} of {}", result.cases[k], categories_[k]));
    }
  }
  if (!absent.empty()) {
    throw BadCases(fmt::format(
        "{}: no usable row has the label {}: a probability of a category takes cases of it",
        order_.holdout.name, fmt::join(absent, ", ")));
  }
  if (!few.empty()) {
    result.remarks.push_back(
        fmt::format("few cases, so that probabilities are rough: {}", fmt::join(few, ", ")));
  }
}

std::vector<Sigmoid> ClassCalibration::FitAll(const std::size_t* without, std::size_t part) const {
  const std::size_t count = categories_.size();
  std::vector<SigmoidCases> cases(machines_.size());
  for (std::size_t c = 0; c < holdout_->Size(); ++c) {
    if (without != nullptr && without[c] == part) continue;
    const auto actual = static_cast<std::size_t>(holdout_->actual[c]);
    for (std::size_t other = 0; other < count; ++other) {
      if (other == actual) continue;
      const auto [i, j] = std::minmax({actual, other});
      const std::size_t pair = i * count - i * (i + 1) / 2 + j - i - 1;
      cases[pair].Add(decisions_[c * machines_.size() + pair], actual == i);
    }
  }
  std::vector<Sigmoid> sigmoids;
  try {
    for (const SigmoidCases& pair : cases) sigmoids.push_back(FitSigmoid(pair));
  } catch (const std::domain_error& error) {
    throw BadCases(fmt::format("{}: {}", order_.holdout.name, error.what()));
  }
  return sigmoids;
}

void ClassCalibration::AddPairs(const std::vector<Sigmoid>& sigmoids,
                                CalibrationResult& result) const {
  std::size_t m = 0;
  for (std::size_t i = 0; i < categories_.size(); ++i) {
    for (std::size_t j = i + 1; j < categories_.size(); ++j, ++m) {
      result.pairs.push_back({categories_[i], categories_[j], result.cases[i], result.cases[j],
                              sigmoids[m], machines_[m] + 1});
      result.moved += machines_[m] == m ? 0 : 1;
    }
  }
  TellOfOddMachines(result);
  if (result.moved > 0) {
    result.remarks.push_back(fmt::format(
        "{} machines have another place in the document: the pairs of categories must be in "
        "the order of the target's categories",
        result.moved));
  }
}

bool ClassCalibration::Separates(std::size_t pair, std::size_t i, std::size_t j,
                                 const Sigmoid& sigmoid) const {
  std::size_t cases[2] = {0, 0};
  std::size_t right[2] = {0, 0};
  for (std::size_t c = 0; c < holdout_->Size(); ++c) {
    const auto actual = static_cast<std::size_t>(holdout_->actual[c]);
    if (actual != i && actual != j) continue;
    const bool first = sigmoid.a * decisions_[c * machines_.size() + pair] + sigmoid.b < 0.0;
    ++cases[actual == i ? 0 : 1];
    right[actual == i ? 0 : 1] += first == (actual == i) ? 1 : 0;
  }
  return 4 * right[0] >= 3 * cases[0] && 4 * right[1] >= 3 * cases[1];
}

void ClassCalibration::TellOfOddMachines(CalibrationResult& result) const {
  std::vector<std::string> odd[2];  // by the sign of A, were all target categories the earlier ones
  std::size_t machines[2] = {0, 0};
  std::size_t pair = 0;
  for (std::size_t i = 0; i < categories_.size(); ++i) {
    for (std::size_t j = i + 1; j < categories_.size(); ++j, ++pair) {
      const Sigmoid& sigmoid = result.pairs[pair].sigmoid;
      const std::size_t sign = (sigmoid.a > 0.0) != target_is_later_[pair] ? 1 : 0;
      ++machines[sign];
      // The sign of one that hardly separates its categories is chance.
      if (!Separates(pair, i, j, sigmoid)) continue;
      odd[sign].push_back(fmt::format("{} and {}", categories_[i], categories_[j]));
    }
  }
  const std::size_t fewer = machines[1] < machines[0] ? 1 : 0;
  if (machines[0] == machines[1] || odd[fewer].empty()) return;
  result.remarks.push_back(fmt::format(
      "unlike most machines, these decide mostly for the wrong one of their categories: {}; their "
      "categories or the signs of their coefficients may be exchanged",
      fmt::join(odd[fewer], ", ")));
}

PairModel::Scores ClassCalibration::CrossValidate() const {
  const std::size_t count = categories_.size();
  const std::size_t pairs = machines_.size();
  PairModel::Scores all;
  all.percents.resize(holdout_->Size() * count);
  all.predicted.resize(holdout_->Size());
  for (std::size_t part = 0; part < kFolds; ++part) {
    std::vector<std::size_t> cases;
    std::vector<double> decisions;
    for (std::size_t c = 0; c < folds_.size(); ++c) {
      if (folds_[c] != part) continue;
      cases.push_back(c);
      decisions.insert(decisions.end(), decisions_.begin() + static_cast<long>(c * pairs),
                       decisions_.begin() + static_cast<long>((c + 1) * pairs));
    }
    if (cases.empty()) continue;
    const PairModel::Scores scores =
        PairModel(order_.plugin, count, FitAll(folds_.data(), part), order_.limits)
            .Score(decisions);
    for (std::size_t i = 0; i < cases.size(); ++i) {
      all.predicted[cases[i]] = scores.predicted[i];
      std::copy_n(scores.percents.begin() + static_cast<long>(i * count), count,
                  all.percents.begin() + static_cast<long>(cases[i] * count));
    }
  }
  return all;
}

}  // namespace svmscore::tools
