#include "tools/calibrate/calibration.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/model/batch_model.h"
#include "host/output/target_rules.h"
#include "tools/base/bad_input.h"
#include "tools/calibrate/calibrated_text.h"
#include "tools/calibrate/conformal.h"
#include "tools/calibrate/holdout.h"
#include "tools/calibrate/pair_model.h"
#include "tools/calibrate/records.h"

namespace svmscore::tools {
namespace {

// A category with fewer cases gets a remark.
constexpr std::size_t kFewCases = 20;
// Rows by which the new document is checked.
constexpr std::size_t kCheckedRows = 1000;

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

class ClassCalibration {
 public:
  ClassCalibration(const CalibrationOrder& order, const BatchModel& model)
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
  }

  void Run(const Holdout& holdout, CalibrationResult& result) {
    holdout_ = &holdout;
    decisions_ = InPairOrder(holdout);
    CountCases(result);
    const std::vector<Sigmoid> sigmoids = FitAll(nullptr, 0);
    AddPairs(sigmoids, result);
    const std::size_t count = categories_.size();
    result.before = FiguresOf(holdout.actual, holdout.predicted, holdout.percents, count);
    const PairModel::Scores after = PairModel(order_.plugin, count, sigmoids).Score(decisions_);
    for (std::size_t c = 0; c < holdout.Size(); ++c) {
      result.changed += after.predicted[c] == holdout.predicted[c] ? 0 : 1;
    }
    if (count == 2 && 2 * result.changed > holdout.Size()) {
      result.remarks.push_back(
          "more than half of the predictions change: the labels may be exchanged, or the decision "
          "values mean the other category");
    }
    const PairModel::Scores validated = CrossValidate();
    result.after = FiguresOf(holdout.actual, validated.predicted, validated.percents, count);
  }

  std::vector<MachineCalibration> Machines(const CalibrationResult& result) const {
    std::vector<MachineCalibration> machines;
    for (const PairCalibration& pair : result.pairs) {
      machines.push_back({pair.machine - 1, pair.response, pair.other, pair.sigmoid, 0.0});
    }
    return machines;
  }

  // Whether the calibrated model, which scored the same rows, gives what was computed.
  bool Confirms(const Holdout& before, const Holdout& after,
                const CalibrationResult& result) const {
    const std::vector<double> decisions = InPairOrder(before);
    if (before.actual != after.actual || decisions != after.decisions) return false;
    std::vector<Sigmoid> sigmoids;
    for (const PairCalibration& pair : result.pairs) sigmoids.push_back(pair.sigmoid);
    const PairModel::Scores scores =
        PairModel(order_.plugin, categories_.size(), sigmoids).Score(decisions);
    return scores.percents == after.percents && scores.predicted == after.predicted;
  }

 private:
  std::vector<double> InPairOrder(const Holdout& holdout) const {
    std::vector<double> ordered;
    ordered.reserve(holdout.decisions.size());
    for (std::size_t c = 0; c < holdout.Size(); ++c) {
      for (const std::size_t m : machines_) {
        ordered.push_back(holdout.decisions[c * holdout.machines + m]);
      }
    }
    return ordered;
  }

  void CountCases(CalibrationResult& result) {
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

  // The sigmoids of all pairs; with `without`, of the cases that are not in that part.
  std::vector<Sigmoid> FitAll(const std::size_t* without, std::size_t part) const {
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

  void AddPairs(const std::vector<Sigmoid>& sigmoids, CalibrationResult& result) const {
    std::size_t m = 0;
    for (std::size_t i = 0; i < categories_.size(); ++i) {
      for (std::size_t j = i + 1; j < categories_.size(); ++j, ++m) {
        result.pairs.push_back({categories_[i], categories_[j], result.cases[i], result.cases[j],
                                sigmoids[m], machines_[m] + 1});
        result.moved += machines_[m] == m ? 0 : 1;
      }
    }
    if (result.moved > 0) {
      result.remarks.push_back(fmt::format(
          "{} machines have another place in the document: the pairs of categories must be in "
          "the order of the target's categories",
          result.moved));
    }
  }

  // Each case by sigmoids of the cases that are not in its part.
  PairModel::Scores CrossValidate() const {
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
          PairModel(order_.plugin, count, FitAll(folds_.data(), part)).Score(decisions);
      for (std::size_t i = 0; i < cases.size(); ++i) {
        all.predicted[cases[i]] = scores.predicted[i];
        std::copy_n(scores.percents.begin() + static_cast<long>(i * count), count,
                    all.percents.begin() + static_cast<long>(cases[i] * count));
      }
    }
    return all;
  }

  const CalibrationOrder& order_;
  const MCZandor_850::ScoreDictVar& target_;
  const Holdout* holdout_ = nullptr;
  std::vector<std::string> categories_;
  std::vector<std::size_t> machines_;  // of each pair
  std::vector<double> decisions_;      // [case * pairs + pair]
  std::vector<std::size_t> folds_;     // of each case
};

class IntervalCalibration {
 public:
  IntervalCalibration(const CalibrationOrder& order, const BatchModel& model)
      : order_(order),
        targets_(order.loaded.output->Targets()),
        rescale_([this](double value) { return targets_.Scale(value); }) {
    if (model.DecisionCount() != 1) {
      throw BadDocument(fmt::format("{}: it cannot be calibrated: a regression with {} machines",
                                    order.name, model.DecisionCount()));
    }
    if (targets_.ScaleFactor() == 0.0) {
      throw BadDocument(fmt::format(
          "{}: it cannot be calibrated: the target's rescaleFactor is 0, so that every interval "
          "has the width 0",
          order.name));
    }
  }

  void Run(const Holdout& holdout, CalibrationResult& result) {
    result.confidence = order_.confidence;
    const std::size_t needed = CasesNeeded(order_.confidence);
    if (holdout.Size() < needed) {
      throw BadCases(fmt::format(
          "{}: {} usable cases are too few for intervals of confidence {}: it takes {}; use more "
          "cases, or a lower --confidence",
          order_.holdout.name, holdout.Size(), order_.confidence, needed));
    }
    for (std::size_t c = 0; c < holdout.Size(); ++c) {
      cases_.push_back({holdout.values[c], holdout.observed[c]});
    }
    result.rank = ConformalRank(cases_.size(), order_.confidence);
    result.deviation = Fit(cases_, result.half_width);
    if (result.half_width == 0.0) {
      result.remarks.push_back(
          "the intervals have the width 0: the model predicts what is known "
          "of the cases exactly, as a table of its own predictions would");
    }
    if (holdout.intervals.size() == holdout.Size()) {
      result.interval_before = FiguresOf(holdout.observed, holdout.intervals);
    }
    CrossValidate(holdout, result);
  }

  bool Confirms(const Holdout& before, const Holdout& after,
                const CalibrationResult& result) const {
    std::vector<std::pair<double, double>> intervals;
    intervals.reserve(before.values.size());
    for (const double value : before.values) {
      intervals.push_back(IntervalOf(value, result.deviation, rescale_));
    }
    return before.observed == after.observed && before.values == after.values &&
           intervals == after.intervals;
  }

 private:
  double Fit(const std::vector<IntervalCase>& cases, double& half_width) const {
    std::vector<double> residuals;
    for (const IntervalCase& one : cases) {
      residuals.push_back(std::fabs(one.observed - targets_.Scale(one.value)));
    }
    half_width = QuantileOf(std::move(residuals), ConformalRank(cases.size(), order_.confidence));
    try {
      return DeviationFor(half_width, targets_.ScaleFactor(), cases, rescale_);
    } catch (const std::domain_error& error) {
      throw BadCases(fmt::format("{}: {}", order_.holdout.name, error.what()));
    }
  }

  // Each case by the interval of the cases that are not in its part.
  void CrossValidate(const Holdout& holdout, CalibrationResult& result) const {
    std::vector<std::pair<double, double>> intervals(cases_.size());
    for (std::size_t part = 0; part < kFolds; ++part) {
      std::vector<IntervalCase> others;
      for (std::size_t c = 0; c < cases_.size(); ++c) {
        if (c % kFolds != part) others.push_back(cases_[c]);
      }
      if (ConformalRank(others.size(), order_.confidence) > others.size()) return;
      double unused = 0.0;
      const double deviation = Fit(others, unused);
      for (std::size_t c = part; c < cases_.size(); c += kFolds) {
        intervals[c] = IntervalOf(cases_[c].value, deviation, rescale_);
      }
    }
    result.interval_after = FiguresOf(holdout.observed, intervals);
  }

  const CalibrationOrder& order_;
  const output::TargetRules& targets_;
  Rescale rescale_;
  std::vector<IntervalCase> cases_;
};

void TellOfRows(const Holdout& holdout, CalibrationResult& result) {
  result.rows = holdout.rows;
  result.unlabelled = holdout.unlabelled;
  result.unscored = holdout.unscored;
  result.used = holdout.Size();
  std::vector<std::string> shown;
  for (const auto& [label, count] : holdout.unknown_labels) {
    result.unknown_labels += count;
    if (shown.size() < 5) shown.push_back('"' + label + '"');
  }
  if (!shown.empty()) {
    result.remarks.push_back(fmt::format(
        "labels that are {}: {}{}",
        result.classification ? "no category of the target" : "no number", fmt::join(shown, ", "),
        holdout.unknown_labels.size() > shown.size() ? ", ..." : ""));
  }
}

std::string NoteOf(const CalibrationOrder& order, const CalibrationResult& result) {
  std::string note = fmt::format("calibrated by svmscore " SVMSCORE_VERSION
                                 ", {}, with {} of {} rows of a hold-out: ",
                                 order.made_at, result.used, result.rows);
  if (!result.classification) {
    note +=
        fmt::format("intervals of confidence {} by split conformal prediction, half-width {:.6g}",
                    result.confidence, result.half_width);
    if (result.interval_after) {
      note +=
          fmt::format("; by {}-fold cross-validation coverage {:.4f}, mean width {:.6g}", kFolds,
                      result.interval_after->coverage, result.interval_after->mean_width);
    }
    return note;
  }
  const ProbabilityFigures& figures = *result.after.probabilities;
  return note + fmt::format(
                    "Platt's sigmoid of each pair of categories; by {}-fold cross-validation Brier "
                    "score {:.4f}, log loss {:.4f}, expected calibration error {:.4f}, accuracy "
                    "{:.4f}",
                    kFolds, figures.brier, figures.log_loss, figures.ece, result.after.accuracy);
}

TextTable SomeRows(const TextTable& table) {
  TextTable some;
  some.name = table.name;
  some.header = table.header;
  const std::size_t step = (table.rows.size() + kCheckedRows - 1) / kCheckedRows;
  for (std::size_t i = 0; i < table.rows.size(); i += step) some.rows.push_back(table.rows[i]);
  return some;
}

// The document of a calibration: written, loaded, compared.
template <typename Calibrated>
void WriteDocument(const CalibrationOrder& order, const Holdout& holdout,
                   const DocumentPlaces& places, const std::vector<MachineCalibration>& machines,
                   const Calibrated& calibrated, CalibrationResult& result) {
  result.document = CalibratedText(order.document, places, machines, result.classification,
                                   NoteOf(order, result));
  const LoadText load = [&order](const std::string& document) {
    return LoadModel(order.plugin,
                     [&] { return PmmlDocument::FromText(document, order.name, order.limits); });
  };
  const TextTable rows = SomeRows(order.holdout);
  const Holdout before = ScoreHoldout(order.loaded, rows, order.actual, order.rules);
  const LoadedModel written = load(result.document);
  const Holdout after = ScoreHoldout(written, rows, order.actual, order.rules);
  if (!calibrated.Confirms(before, after, result)) {
    throw BadDocument(fmt::format(
        "{}: it cannot be calibrated: with the calibration written into it, the document does not "
        "score as it should; svmscore doctor may tell what in it is read in two ways",
        order.name));
  }
  if (HasAllVectors(holdout, written)) {
    result.remarks.push_back(
        "every support vector is among the rows: this looks like the data that the model was "
        "trained on, and not like a hold-out; its figures are too good, and so are the "
        "probabilities or intervals that it gives");
  }
  result.records = UpdateRecords(order.loaded, load, order.name, result.document);
}

}  // namespace

CalibrationResult Calibrate(const CalibrationOrder& order) {
  const auto* model = dynamic_cast<const BatchModel*>(order.loaded.model.get());
  if (model == nullptr) {
    throw BadDocument(
        fmt::format("{}: the plug-in tells no decision values of its model", order.name));
  }
  const DocumentPlaces places = FindPlaces(order.document, order.name);
  if (places.machines.size() != model->DecisionCount()) {
    throw BadDocument(fmt::format(
        "{}: it cannot be calibrated: the model has {} machines, of which {} are found in its text "
        "under the name SupportVectorMachine",
        order.name, model->DecisionCount(), places.machines.size()));
  }
  CalibrationResult result;
  result.classification =
      order.loaded.output->Targets().GetScheme().method != output::Method::kRegression;
  const auto score = [&] {
    Holdout holdout = ScoreHoldout(order.loaded, order.holdout, order.actual, order.rules);
    TellOfRows(holdout, result);
    if (holdout.Size() == 0) {
      throw BadCases(fmt::format(
          "{}: no row can be used: of {}, {} have no label, {} a label that is {}, and {} are not "
          "scored",
          order.holdout.name, result.rows, result.unlabelled, result.unknown_labels,
          result.classification ? "no category of the target" : "no number", result.unscored));
    }
    return holdout;
  };
  if (result.classification) {
    ClassCalibration calibration(order, *model);
    const Holdout holdout = score();
    calibration.Run(holdout, result);
    WriteDocument(order, holdout, places, calibration.Machines(result), calibration, result);
  } else {
    IntervalCalibration calibration(order, *model);
    const Holdout holdout = score();
    calibration.Run(holdout, result);
    WriteDocument(order, holdout, places, {{0, {}, {}, {}, result.deviation}}, calibration, result);
  }
  return result;
}

}  // namespace svmscore::tools
