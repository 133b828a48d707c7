#include "app/calibrate/calibration_text.h"

#include <fmt/format.h>

#include "host/text/printable.h"

namespace svmscore::app {
namespace {

using tools::CalibrationResult;
using tools::ClassFigures;
using tools::IntervalFigures;
using tools::Tenth;

// Pairs of categories that are written for people; the JSON has all.
constexpr std::size_t kPairsShown = 45;

std::string Inserted(const std::string& name) {
  return Printable(name, kLongestInsert);
}

std::string RowsText(const CalibrationResult& result) {
  std::string text = fmt::format("rows: {} read, {} used", result.rows, result.used);
  const auto add = [&text](std::size_t count, const char* what) {
    if (count > 0) text += fmt::format(", {} {}", count, what);
  };
  add(result.unlabelled, "without a label");
  add(result.unknown_labels, result.classification ? "whose label is no category of the target"
                                                   : "whose label is no number");
  add(result.unscored, "not scored");
  return text + "\n";
}

std::string PairsText(const CalibrationResult& result) {
  std::string text =
      "f: the decision value of the pair's machine, which score --decisions writes\n";
  std::size_t shown = 0;
  for (const tools::PairCalibration& pair : result.pairs) {
    if (++shown > kPairsShown) {
      return text + fmt::format("... and {} more pairs\n", result.pairs.size() - kPairsShown);
    }
    text += fmt::format(
        "P({0} rather than {1}) = 1 / (1 + exp(A f + B)): A {2:.6g}, B {3:.6g}; {4} "
        "cases of {0}, {5} of {1}\n",
        Inserted(pair.response), Inserted(pair.other), pair.sigmoid.a, pair.sigmoid.b,
        pair.response_cases, pair.other_cases);
  }
  return text;
}

std::string Figure(const ClassFigures& figures, double tools::ProbabilityFigures::*which) {
  if (!figures.probabilities) return "-";
  return fmt::format("{:.4f}", (*figures.probabilities).*which);
}

std::string TenthText(const ClassFigures& figures, std::size_t t) {
  if (!figures.probabilities) return fmt::format("{:>7}{:>8}{:>8}", "", "", "");
  const Tenth& tenth = figures.probabilities->tenths[t];
  if (tenth.cases == 0) return fmt::format("{:>7}{:>8}{:>8}", 0, "-", "-");
  return fmt::format("{:>7}{:>8.3f}{:>8.3f}", tenth.cases, tenth.mean, tenth.share);
}

std::string ClassText(const CalibrationResult& result) {
  using Figures = tools::ProbabilityFigures;
  const ClassFigures& before = result.before;
  const ClassFigures& after = result.after;
  std::string text = fmt::format("\n{:30}{:>10}{:>10}\n{:30}{:>10.4f}{:>10.4f}\n", "", "before",
                                 "after", "accuracy", before.accuracy, after.accuracy);
  const auto add = [&](const char* name, double Figures::*which) {
    text += fmt::format("{:30}{:>10}{:>10}\n", name, Figure(before, which), Figure(after, which));
  };
  add("Brier score", &Figures::brier);
  add("log loss", &Figures::log_loss);
  add("expected calibration error", &Figures::ece);
  const std::string of = result.categories.size() == 2
                             ? "probability of " + Inserted(result.categories[0])
                             : std::string("probability of the predicted category");
  text += fmt::format("\n{}: cases, their mean probability, the share that it is true of\n{:10}",
                      of, "");
  text += fmt::format("{:>7}{:>8}{:>8}{:>5}{:>7}{:>8}{:>8}\n", "before", "mean", "share", "",
                      "after", "mean", "share");
  for (std::size_t t = 0; t < 10; ++t) {
    std::string line = fmt::format("{:.1f} - {:.1f} {}{:>5}{}", static_cast<double>(t) / 10.0,
                                   static_cast<double>(t + 1) / 10.0, TenthText(before, t), "",
                                   TenthText(after, t));
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  if (!before.probabilities) text += "before: the model gives no probabilities\n";
  return text + fmt::format(
                    "\n\"after\" is by cross-validation in {} parts: no case is judged by a "
                    "sigmoid that it helped to fit, which would\nflatter. The document has the "
                    "sigmoids of all cases; with them {} of {} predictions differ from those "
                    "before.\n",
                    tools::kFolds, result.changed, result.used);
}

std::string IntervalText(const CalibrationResult& result) {
  std::string text = fmt::format(
      "interval: {} -+ {:.6g}, the residual of rank {} of {}; confidence {}\n\n{:14}{:>12}"
      "{:>12}\n",
      result.output_field.empty() ? "prediction" : Inserted(result.output_field), result.half_width,
      result.rank, result.used, result.confidence, "", "coverage", "mean width");
  const auto add = [&text](const char* name, const std::optional<IntervalFigures>& figures) {
    text += fmt::format("{:14}", name);
    text += figures ? fmt::format("{:>12.4f}{:>12.6g}\n", figures->coverage, figures->mean_width)
                    : fmt::format("{:>12}{:>12}\n", "-", "-");
  };
  add("before", result.interval_before);
  add("after", result.interval_after);
  if (!result.interval_before) text += "before: the model gives no intervals\n";
  if (!result.interval_after) {
    return text + "after: too few cases for a cross-validation of this confidence\n";
  }
  return text + fmt::format(
                    "\n\"after\" is by cross-validation in {} parts: no case is judged by an "
                    "interval that it helped to fit, which would\nflatter.\n",
                    tools::kFolds);
}

std::string RecordsText(const CalibrationResult& result) {
  switch (result.records) {
    case tools::RecordsFate::kNone:
      return {};
    case tools::RecordsFate::kKept:
      return "verification records: kept, they agree\n";
    case tools::RecordsFate::kRewritten:
      return "verification records: written anew, with the scores that their cases have now\n";
    case tools::RecordsFate::kDropped:
      return "verification records: dropped, for records of their cases cannot be made anew\n";
    case tools::RecordsFate::kDroppedAsWrong:
      return "verification records: dropped, for they did not agree with the model before\n";
  }
  return {};
}

}  // namespace

std::string CalibrationText(const CalibrationResult& result, const std::string& output) {
  std::string text = RowsText(result);
  if (result.classification) {
    text += PairsText(result) + ClassText(result);
  } else {
    text += IntervalText(result);
  }
  text += RecordsText(result);
  for (const std::string& remark : result.remarks) text += "note: " + Printable(remark) + "\n";
  text += output.empty() ? "no document is written: name one with -o\n"
                         : fmt::format("calibrated document: {}\n", Inserted(output));
  return text;
}

}  // namespace svmscore::app
