#include <algorithm>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "app/report/histogram_picture.h"
#include "app/report/html_text.h"
#include "app/report/page_parts.h"
#include "app/report/reliability_picture.h"
#include "app/report/scatter_picture.h"
#include "app/report/sections.h"
#include "tools/report/regression_figures.h"

namespace svmscore::app {

using tools::ClassFigures;
using tools::Confusion;
using tools::ReportData;
using tools::ScoredCases;
namespace {

constexpr std::size_t kResidualBins = 24;
// Points of a picture; more lie on top of each other.
constexpr std::size_t kPoints = 600;

std::string LabelsText(const ReportData& data, std::size_t judged) {
  const ScoredCases& cases = *data.cases;
  std::string html = fmt::format("{} with a label in the column {}", Counted(judged, "scored case"),
                                 Name(data.actual));
  if (cases.unlabelled > 0) html += fmt::format("; {} without", Count(cases.unlabelled));
  if (cases.unknown_labels > 0) {
    html += fmt::format("; {} whose label is {}", Count(cases.unknown_labels),
                        cases.classification ? "no category of the target" : "no number");
  }
  return Paragraph(html + ". Of cases that the model was trained on, all this flatters.");
}

std::string ReliabilityFigure(const ReportData& data, const tools::ProbabilityFigures& figures) {
  const bool two = data.model->categories.size() == 2;
  const bool calibrated = data.model->scheme.percentages == tools::Percentages::kProbabilities;
  const std::string what = calibrated ? "probability" : "share of votes";
  ReliabilityPicture picture;
  picture.tenths = figures.tenths;
  picture.title = "Reliability diagram";
  picture.x_label = two ? fmt::format("{} of {}", what, CategoryBrief(data, 0, 24))
                        : what + " of the predicted category";
  picture.y_label = two ? fmt::format("share that is {}", CategoryBrief(data, 0, 24))
                        : "share that is predicted right";
  for (std::size_t t = 0; t < 10; ++t) {
    const tools::Tenth& tenth = figures.tenths[t];
    if (tenth.cases == 0) continue;
    picture.description +=
        fmt::format("{}mean {}, true of {} ({})", picture.description.empty() ? "" : "; ",
                    Fixed(tenth.mean, 2), Fixed(tenth.share, 2), Counted(tenth.cases, "case"));
  }
  return Figure("Reliability diagram <small>cases by tenths of what the model states</small>",
                Draw(picture), "");
}

std::string TenthsText(const ReportData& data, const tools::ProbabilityFigures& figures) {
  PageTable table;
  table.name = "Table of the reliability diagram";
  table.caption_html = data.model->categories.size() == 2
                           ? "By the probability of " + CategoryName(data, 0)
                           : std::string("By the probability of the predicted category");
  table.head_html = {"Tenth", "Cases", "Mean stated", "Share true"};
  table.is_number = {false, true, true, true};
  for (std::size_t t = 0; t < 10; ++t) {
    const tools::Tenth& tenth = figures.tenths[t];
    const bool none = tenth.cases == 0;
    table.rows_html.push_back({fmt::format("{} to {}", Fixed(static_cast<double>(t) / 10.0, 1),
                                           Fixed(static_cast<double>(t + 1) / 10.0, 1)),
                               Count(tenth.cases), none ? kDash : Fixed(tenth.mean, 3),
                               none ? kDash : Fixed(tenth.share, 3)});
  }
  return Paragraph(
             "On the dashed line, what is stated comes true that often; below it, the model "
             "is too sure. Upright lines: the shares that so few cases leave likely "
             "(95\u00A0%). Bars: how many cases each point stands for.") +
         Table(table);
}

std::string ClassOf(std::size_t count, std::size_t row_sum, bool right) {
  std::string kinds;
  if (count == 0) {
    kinds = "zero";
  } else {
    const double share = static_cast<double>(count) / static_cast<double>(row_sum);
    kinds = share > 0.5 ? "w3" : share > 0.1 ? "w2" : "w1";
  }
  if (right) kinds += " right";
  return kinds;
}

std::string ConfusionTable(const ReportData& data) {
  const Confusion& confusion = *data.confusion;
  const std::size_t own = confusion.categories.size();
  const auto name = [&](std::size_t i, std::size_t longest) {
    if (i >= own) return std::string("others");
    const auto category = static_cast<std::size_t>(confusion.categories[i]);
    return Name(data.model->categories[category], longest);
  };
  std::string html =
      "<div class=\"scroll\" role=\"region\" tabindex=\"0\" aria-label=\"Confusion matrix\">\n"
      "<table class=\"matrix\">\n<caption>Confusion matrix: rows are what cases are, columns what "
      "is predicted; right answers are framed, and darker cells hold more of their "
      "row.</caption>\n<thead><tr><th scope=\"col\">In truth</th>";
  for (std::size_t i = 0; i < confusion.Size(); ++i) {
    html += fmt::format("<th scope=\"col\" class=\"number\">{}</th>", name(i, 14));
  }
  html += "<th scope=\"col\" class=\"number\">Found</th></tr></thead>\n<tbody>\n";
  for (std::size_t row = 0; row < confusion.Size(); ++row) {
    std::size_t sum = 0;
    for (std::size_t column = 0; column < confusion.Size(); ++column)
      sum += confusion.At(row, column);
    html += fmt::format("<tr><th scope=\"row\">{}</th>", name(row, 30));
    for (std::size_t column = 0; column < confusion.Size(); ++column) {
      const std::size_t count = confusion.At(row, column);
      html += fmt::format("<td class=\"{}\">{}</td>",
                          ClassOf(count, sum, row == column && row < own), Count(count));
    }
    const bool known = sum > 0 && row < own;
    html += fmt::format(
        "<td>{}</td></tr>\n",
        known ? Percent(static_cast<double>(confusion.At(row, row)) / static_cast<double>(sum))
              : kDash);
  }
  html += "</tbody>\n</table>\n</div>\n";
  if (confusion.others > 0) {
    html +=
        Note(fmt::format("The {} most frequent categories have rows of their own; {} more are "
                         "\u201Cothers\u201D, right answers among them included.",
                         own, Count(confusion.others)));
  }
  return html;
}

std::string ClassAccuracy(const ReportData& data) {
  const ClassFigures& figures = *data.cases->figures;
  std::vector<Tile> tiles = {{Percent(figures.accuracy), "accuracy: predictions that are right"}};
  std::string pictures;
  if (figures.probabilities) {
    const tools::ProbabilityFigures& of = *figures.probabilities;
    const bool two = data.model->categories.size() == 2;
    tiles.push_back(
        {Fixed(of.brier, 4), two ? "Brier score, 0 (best) to 1" : "Brier score, 0 (best) to 2"});
    tiles.push_back({Fixed(of.log_loss, 4), "log loss, 0 is best"});
    tiles.push_back({Fixed(of.ece, 4), "expected calibration error, 0 is best"});
    pictures = Beside(ReliabilityFigure(data, of), TenthsText(data, of));
  }
  std::string html = LabelsText(data, figures.cases) + Tiles(tiles);
  html += "<h3>What is taken for what</h3>\n" + ConfusionTable(data);
  if (!pictures.empty()) html += "<h3>Do probabilities keep what they state?</h3>\n" + pictures;
  return html;
}

std::string AgreementFigure(const ReportData& data) {
  const ScoredCases& cases = *data.cases;
  ScatterPicture picture;
  picture.title = "Predictions against what cases are";
  picture.description = "Each point is a case; on the dashed line both are equal.";
  picture.x_label = "predicted";
  picture.y_label = "in truth";
  picture.diagonal = true;
  std::vector<std::size_t> known;
  for (std::size_t c = 0; c < cases.Size(); ++c) {
    if (!std::isnan(cases.observed[c])) known.push_back(c);
  }
  const std::size_t all = known.size();
  tools::ThinOut(known, kPoints);
  for (const std::size_t c : known) picture.points.push_back({cases.values[c], cases.observed[c]});
  std::string note = "On the dashed line a prediction is right.";
  if (known.size() < all) {
    note += fmt::format(" {} of {} cases, drawn at random.", Count(known.size()), Count(all));
  }
  return Figure(fmt::format("Predictions against {}", Name(data.actual)), Draw(picture), note);
}

std::string ResidualFigure(const ReportData& data) {
  const ScoredCases& cases = *data.cases;
  std::vector<double> residuals;
  for (std::size_t c = 0; c < cases.Size(); ++c) {
    residuals.push_back(cases.observed[c] - cases.values[c]);
  }
  HistogramPicture picture;
  picture.histogram = tools::HistogramOf(residuals, {}, 1, 0.0, kResidualBins);
  picture.kinds = {"one"};
  picture.label = "residual: in truth less predicted";
  picture.mark = 0.0;
  picture.mark_label = "0";
  picture.title = "Residuals";
  picture.description = fmt::format("Histogram from {} to {}.", Number(picture.histogram.low),
                                    Number(picture.histogram.High()));
  return Figure("Residuals <small>what predictions are off by</small>", Draw(picture), "");
}

std::string RegressionAccuracy(const ReportData& data) {
  const tools::RegressionFigures figures = tools::FiguresOf(*data.cases);
  std::vector<Tile> tiles = {
      {Number(figures.root_mean_square), "root mean square of the residuals"},
      {Number(figures.mean_absolute), "mean size of the residuals"}};
  if (figures.r_squared) tiles.push_back({Fixed(*figures.r_squared, 3), "R\u00B2, 1 is best"});
  if (figures.intervals) {
    tiles.push_back({Percent(figures.intervals->coverage), "of cases lie in their interval"});
    tiles.push_back({Number(figures.intervals->mean_width), "mean width of the intervals"});
  }
  return LabelsText(data, figures.cases) + Tiles(tiles) +
         Figures({AgreementFigure(data), ResidualFigure(data)});
}

}  // namespace

std::string AccuracySection(const ReportData& data) {
  const std::string why = WhyNoCases(data);
  if (!why.empty()) return Give(why);
  const ScoredCases& cases = *data.cases;
  if (!cases.has_labels) {
    return Give(
        "Give <code>--actual COLUMN</code>, the column of the cases with what they really "
        "are, to see this.");
  }
  if (!cases.own_unit.empty()) {
    return Paragraph(fmt::format(
        "What the model predicts is farther from the labels in the column {} than these are from "
        "each other, and its output field {} computes another number: it seems that predictions "
        "are in a unit of the model\u2019s own, as of a standardised target. They are not compared "
        "with the labels, which would say nothing; compare the output field, which "
        "<code>svmscore score</code> writes.",
        Name(data.actual), Name(cases.own_unit)));
  }
  const bool judged = cases.classification
                          ? cases.figures.has_value()
                          : std::any_of(cases.observed.begin(), cases.observed.end(),
                                        [](double number) { return !std::isnan(number); });
  if (!judged) {
    return Give(
        fmt::format("No scored case has a label that counts in the column {}.", Name(data.actual)));
  }
  return cases.classification ? ClassAccuracy(data) : RegressionAccuracy(data);
}

}  // namespace svmscore::app
