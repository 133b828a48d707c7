#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "app/report/bar_picture.h"
#include "app/report/histogram_picture.h"
#include "app/report/html_text.h"
#include "app/report/page_parts.h"
#include "app/report/sections.h"

namespace svmscore::app {

using tools::Histogram;
using tools::MachineDistribution;
using tools::ReportData;
using tools::ScoredCases;
namespace {

constexpr std::size_t kCategoriesShown = 12;
constexpr std::size_t kScoreBins = 24;
// Columns of a name beside another one above a picture.
constexpr std::size_t kSideColumns = 18;

std::string CasesText(const ReportData& data) {
  const ScoredCases& cases = *data.cases;
  std::string html =
      fmt::format("{} of {}", Counted(cases.Size(), "scored case"), Name(data.cases_name));
  if (cases.drawn < cases.rows) {
    html += fmt::format(", from a random draw of {} of {} rows (the same at every run)",
                        Count(cases.drawn), Count(cases.rows));
  }
  if (cases.missing > 0) html += fmt::format("; {} with a missing input", Count(cases.missing));
  if (cases.invalid > 0) html += fmt::format("; {} with an invalid value", Count(cases.invalid));
  return Paragraph(html + ".");
}

// Where no case has a label the sides of the threshold tell the bars apart.
Histogram BySide(const MachineDistribution& machine) {
  Histogram histogram = machine.histogram;
  if (std::isnan(machine.threshold)) return histogram;
  for (std::size_t b = 0; b < histogram.Bins(); ++b) {
    const double middle = histogram.low + (static_cast<double>(b) + 0.5) * histogram.width;
    const std::size_t side = middle > machine.threshold ? 0 : 1;
    histogram.counts[side][b] = histogram.counts[2][b];
    histogram.counts[2][b] = 0;
  }
  return histogram;
}

std::size_t Sum(const std::vector<std::size_t>& counts) {
  std::size_t sum = 0;
  for (const std::size_t count : counts) sum += count;
  return sum;
}

std::string MachineFigure(const ReportData& data, const MachineDistribution& machine) {
  const bool labelled = data.cases->figures.has_value();
  HistogramPicture picture;
  picture.histogram = labelled ? machine.histogram : BySide(machine);
  picture.kinds = {"one", "two", "other"};
  picture.label = "decision value";
  picture.mark = machine.threshold;
  picture.left_kind = "two";
  picture.right_kind = "one";
  if (machine.below >= 0) {
    picture.left = CategoryBrief(data, machine.below, kSideColumns);
  }
  if (machine.above >= 0) {
    picture.right = CategoryBrief(data, machine.above, kSideColumns);
  }
  if (!std::isnan(machine.threshold)) {
    picture.mark_label = "threshold " + Number(machine.threshold);
  }
  const Histogram by_side = BySide(machine);
  picture.title = fmt::format("Decision values of machine {}", machine.machine + 1);
  picture.description =
      fmt::format("Histogram from {} to {}.", Number(by_side.low), Number(by_side.High()));
  std::string note;
  if (labelled && machine.histogram.counts.size() == 3) {
    const auto cases = [&machine](std::size_t group) {
      return Count(Sum(machine.histogram.counts[group]));
    };
    std::vector<std::string> counts;
    const auto add = [&](int category, std::size_t group) {
      if (category < 0) return;
      counts.push_back(fmt::format("{}: {}", CategoryName(data, category), cases(group)));
    };
    add(machine.below, 1);
    add(machine.above, 0);
    if (data.model->categories.size() > 2) counts.push_back("others: " + cases(2));
    note = fmt::format("{}", fmt::join(counts, " \u00B7 "));
    picture.description += fmt::format(
        " {} of the category on the right, {} of the one on the "
        "left, {} of others.",
        cases(0), cases(1), cases(2));
  }
  return Figure(MachineName(data, machine, machine.machine), Draw(picture), note);
}

std::string HowToReadMachines(const ReportData& data) {
  const bool labelled = data.cases->figures.has_value();
  if (!data.machines.empty() && std::isnan(data.machines.front().threshold)) {
    std::string html = fmt::format(
        "Each category has a machine of its own; the answer is the category whose machine has the "
        "{} "
        "decision value.",
        data.model->max_wins ? "largest" : "smallest");
    if (labelled) html += " The filled part of a bar is cases that really are of its category.";
    return html;
  }
  const std::string rule =
      "By itself, a machine answers with the category on the right where its decision value is "
      "right of the dashed line";
  if (!labelled) return rule + ", and with the hatched one otherwise.";
  return rule +
         ". The filling of a bar is what its cases really are: plain for the category on the "
         "right, "
         "hatched for the one on the left, empty for others. Plain bars on the left and hatched "
         "ones "
         "on the right are the machine\u2019s mistakes.";
}

std::string MachineFigures(const ReportData& data) {
  std::vector<std::string> figures;
  for (const MachineDistribution& machine : data.machines) {
    figures.push_back(MachineFigure(data, machine));
  }
  const std::size_t all = data.cases->machines;
  std::string html = "<h3>Decision values</h3>\n";
  html += Paragraph(HowToReadMachines(data));
  if (all > figures.size()) {
    html += Note(fmt::format("The first {} of {} machines are shown; {} are left out.",
                             figures.size(), Count(all), Count(all - figures.size())));
  }
  return html + Figures(figures);
}

std::string CategoryFigure(const ReportData& data) {
  BarPicture picture;
  picture.title = "Predicted categories";
  const bool labelled = data.cases->figures.has_value();
  const std::size_t shown = std::min(data.categories.size(), kCategoriesShown);
  std::vector<tools::CategoryCount> counts(data.categories.begin(),
                                           data.categories.begin() + std::ptrdiff_t(shown));
  if (shown == data.categories.size()) {
    // Where all are there, they are found at their usual places.
    std::sort(counts.begin(), counts.end(),
              [](const auto& a, const auto& b) { return a.category < b.category; });
  }
  for (std::size_t i = 0; i < shown; ++i) {
    const tools::CategoryCount& count = counts[i];
    picture.bars.push_back(
        {CategoryBrief(data, count.category, 30),
         labelled ? fmt::format("{}, in truth {}", Count(count.predicted), Count(count.actual))
                  : Count(count.predicted),
         static_cast<double>(count.predicted), 0.0});
    picture.description += fmt::format("{}{}: {}", i > 0 ? ", " : "",
                                       CategoryText(data, count.category), count.predicted);
  }
  std::string note;
  if (data.categories.size() > shown) {
    note = fmt::format("The most frequent {}; {} more occur.", shown,
                       Count(data.categories.size() - shown));
  }
  return Figure("Predicted categories <small>cases predicted for each</small>", Draw(picture),
                note);
}

std::string ProbabilityFigure(const ReportData& data) {
  const ScoredCases& cases = *data.cases;
  constexpr std::size_t kParts = 20;
  HistogramPicture picture;
  picture.histogram.width = 1.0 / kParts;
  picture.histogram.counts.assign(1, std::vector<std::size_t>(kParts, 0));
  for (const double probability : cases.probabilities) {
    const double part = std::floor(probability * kParts);
    if (std::isnan(part)) continue;
    ++picture.histogram.counts[0][static_cast<std::size_t>(std::clamp(part, 0.0, kParts - 1.0))];
  }
  picture.kinds = {"one"};
  const bool two = data.model->categories.size() == 2;
  const bool calibrated = data.model->scheme.percentages == tools::Percentages::kProbabilities;
  const char* what = calibrated ? "Probability" : "Share of votes";
  picture.label = calibrated ? "probability" : "share of votes";
  picture.title =
      fmt::format("{} of {}", what, two ? CategoryText(data, 0) : "the predicted category");
  picture.description = "Histogram from 0 to 1.";
  return Figure(fmt::format("{} of {}", what,
                            two ? CategoryName(data, 0) : std::string("the predicted category")),
                Draw(picture), "");
}

std::string PredictionFigure(const ReportData& data) {
  HistogramPicture picture;
  picture.histogram = tools::HistogramOf(data.cases->values, {}, 1,
                                         std::numeric_limits<double>::quiet_NaN(), kScoreBins);
  picture.kinds = {"one"};
  picture.label = data.cases->own_unit.empty() ? Brief(data.model->target, 40)
                                               : std::string("prediction, in a unit of its own");
  picture.title = "Predictions";
  const auto [low, high] =
      std::minmax_element(data.cases->values.begin(), data.cases->values.end());
  picture.description = fmt::format("Histogram from {} to {}.", Number(*low), Number(*high));
  return Figure("Predictions <small>of all scored cases</small>", Draw(picture), "");
}

}  // namespace

std::string ScoresSection(const ReportData& data) {
  const std::string why = WhyNoCases(data);
  if (!why.empty()) return Give(why);
  std::string html = CasesText(data);
  if (!data.cases->classification) return html + Figures({PredictionFigure(data)});
  std::vector<std::string> figures = {CategoryFigure(data)};
  if (!data.cases->probabilities.empty()) figures.push_back(ProbabilityFigure(data));
  return html + Figures(figures) + MachineFigures(data);
}

}  // namespace svmscore::app
