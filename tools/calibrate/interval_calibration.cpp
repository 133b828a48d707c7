#include "tools/calibrate/interval_calibration.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "host/output/output_plan.h"
#include "tools/base/bad_input.h"

namespace svmscore::tools {

IntervalCalibration::IntervalCalibration(const CalibrationOrder& order, const BatchModel& model)
    : order_(order),
      targets_(order.loaded.output->Targets()),
      rescale_([this](double value) { return scale_.Of(targets_.Scale(value)); }) {
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

void IntervalCalibration::Run(const Holdout& holdout, CalibrationResult& result) {
  result.confidence = order_.confidence;
  const std::size_t needed = CasesNeeded(order_.confidence);
  if (holdout.Size() < needed) {
    throw BadCases(fmt::format(
        "{}: {} usable cases are too few for intervals of confidence {}: it takes {}; use more "
        "cases, or a lower confidence",
        order_.holdout.name, holdout.Size(), order_.confidence, needed));
  }
  ChooseScale(holdout, result);
  for (std::size_t c = 0; c < holdout.Size(); ++c) {
    cases_.push_back({holdout.values[c], holdout.observed[c]});
  }
  result.rank = ConformalRank(cases_.size(), order_.confidence);
  result.deviation = Fit(cases_, result.half_width);
  TellOfDistance(result);
  TellOfRules(holdout, result);
  if (holdout.intervals.size() == holdout.Size()) {
    result.interval_before = FiguresOf(holdout.observed, scale_.Of(holdout.intervals));
  }
  CrossValidate(holdout, result);
}

void IntervalCalibration::ChooseScale(const Holdout& holdout, CalibrationResult& result) {
  scale_ = ScaleOfLabels(holdout);
  if (!scale_.curved.empty()) {
    throw BadCases(fmt::format(
        "{}: what is known of the cases is not on the scale of the prediction, but closer to the "
        "output field {}, which is no straight line of the prediction: an interval of the "
        "prediction would not be one of that field; give labels on the scale of the prediction, "
        "which score --columns raw writes",
        order_.holdout.name, scale_.curved));
  }
  result.output_field = scale_.field;
}

void IntervalCalibration::TellOfRules(const Holdout& holdout, CalibrationResult& result) const {
  const std::vector<output::OutputField>& fields = order_.loaded.output->Fields();
  const auto is_bound = [](const output::OutputField& field) {
    return field.is_final && (field.feature == output::Feature::kIntervalLower ||
                              field.feature == output::Feature::kIntervalUpper);
  };
  if (!scale_.field.empty()) {
    result.remarks.push_back(fmt::format(
        "what is known of the cases is on the scale of the output field {0}, which is {1:.6g} "
        "times the prediction plus {2:.6g}: the figures here are of that scale; score writes "
        "intervals of the prediction, which are {3:.6g} wide on either side, and their bounds "
        "become those of {0} in the same way",
        scale_.field, scale_.slope, scale_.intercept, result.half_width / std::fabs(scale_.slope)));
  }
  if (!fields.empty() && std::none_of(fields.begin(), fields.end(), is_bound)) {
    result.remarks.push_back(
        "the document's output fields do not show the intervals; score --columns raw writes them");
  }
  std::size_t changed = 0;
  for (std::size_t c = 0; c < cases_.size(); ++c) {
    const double plain = targets_.Scale(cases_[c].value);
    // A float has seven digits.
    if (std::fabs(holdout.predictions[c] - plain) > 1e-6 * std::fabs(plain)) ++changed;
  }
  if (changed > 0) {
    result.remarks.push_back(fmt::format(
        "the document's rules for its target (limits, whole numbers) change {} of {} predictions: "
        "residuals and intervals are those of the value before, and may be wider than the "
        "prediction that is written would need",
        changed, cases_.size()));
  }
}

void IntervalCalibration::TellOfDistance(CalibrationResult& result) const {
  const auto count = static_cast<double>(cases_.size());
  double mean = 0.0;
  std::vector<double> sizes;
  for (const IntervalCase& one : cases_) {
    mean += one.observed / count;
    sizes.push_back(std::fabs(one.observed));
  }
  double by_model = 0.0;
  double by_mean = 0.0;
  for (const IntervalCase& one : cases_) {
    by_model += std::pow(one.observed - rescale_(one.value), 2.0);
    by_mean += std::pow(one.observed - mean, 2.0);
  }
  // Next to a typical label, whatever the largest is.
  if (result.half_width <= 1e-9 * QuantileOf(std::move(sizes), (cases_.size() + 1) / 2)) {
    result.remarks.push_back(
        "the intervals have next to no width: the model predicts what is known of the cases "
        "exactly, as a table of its own predictions would");
  }
  if (by_model <= by_mean) return;
  result.remarks.push_back(
      "the predictions are farther from what is known of the cases than its mean is: it may have "
      "another unit; intervals are those of the prediction before output fields");
}

bool IntervalCalibration::Confirms(const Holdout& before, const Holdout& after,
                                   const CalibrationResult& result) const {
  std::vector<std::pair<double, double>> intervals;
  intervals.reserve(before.values.size());
  const Rescale written = [this](double value) { return targets_.Scale(value); };
  for (const double value : before.values) {
    intervals.push_back(IntervalOf(value, result.deviation, written));
  }
  return before.observed == after.observed && before.values == after.values &&
         intervals == after.intervals;
}

double IntervalCalibration::Fit(const std::vector<IntervalCase>& cases, double& half_width) const {
  std::vector<double> residuals;
  residuals.reserve(cases.size());
  for (const IntervalCase& one : cases) {
    residuals.push_back(std::fabs(one.observed - rescale_(one.value)));
  }
  half_width = QuantileOf(std::move(residuals), ConformalRank(cases.size(), order_.confidence));
  try {
    return DeviationFor(half_width, targets_.ScaleFactor() * scale_.slope, cases, rescale_);
  } catch (const std::domain_error& error) {
    throw BadCases(fmt::format("{}: {}", order_.holdout.name, error.what()));
  }
}

void IntervalCalibration::CrossValidate(const Holdout& holdout, CalibrationResult& result) const {
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

}  // namespace svmscore::tools
