#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "app/report/bar_picture.h"
#include "app/report/html_text.h"
#include "app/report/page_parts.h"
#include "app/report/scatter_picture.h"
#include "app/report/sections.h"
#include "app/report/surface_picture.h"

namespace svmscore::app {

using tools::BackgroundKind;
using tools::CaseChoice;
using tools::ExplainedCase;
using tools::Explanation;
using tools::InputShare;
using tools::ReportData;
namespace {

constexpr std::size_t kNameColumns = 34;
constexpr std::size_t kAxisColumns = 30;

// The values of a picture with as many decimals as give the largest three digits.
int DecimalsFor(const std::vector<InputShare>& shares, double rest) {
  double largest = std::fabs(rest);
  for (const InputShare& share : shares) largest = std::max(largest, std::fabs(share.value));
  if (!(largest > 0.0)) return 0;
  return static_cast<int>(std::clamp(2.0 - std::floor(std::log10(largest)), 0.0, 6.0));
}

std::string ValueText(double number, int decimals, bool with_sign) {
  if (std::fabs(number) >= 1e7 || (number != 0.0 && std::fabs(number) < 1e-6)) {
    return Number(number, 3);
  }
  return (with_sign && number > 0.0 ? "+" : "") + Fixed(number, decimals);
}

std::string BackgroundText(const Explanation& of) {
  const bool is_draw = of.background_rows + of.background_unscored < of.background_of;
  const std::string drawn = is_draw ? Count(of.background_rows) + " drawn of " : "";
  const std::uint64_t all = is_draw ? of.background_of : of.background_rows;
  switch (of.background) {
    case BackgroundKind::kTable: {
      std::string text = fmt::format("{}the {} of the background that was given", drawn,
                                     Counted(all, is_draw ? "row" : "usable row"));
      if (of.background_unscored == 0) return text;
      const bool seen_all = of.background_drawn == of.background_of;
      return text + fmt::format(" ({}{} cannot be scored)", Count(of.background_unscored),
                                seen_all ? ""
                                         : fmt::format(" of {} that were looked at",
                                                       Count(of.background_drawn)));
    }
    case BackgroundKind::kVectors:
      return fmt::format("{}the {} of the model, each as likely as another", drawn,
                         Counted(all, "distinct support vector"));
    case BackgroundKind::kCases:
      return fmt::format("{}the {} themselves", drawn, Counted(all, "case"));
  }
  return {};
}

std::string Introduction(const ReportData& data) {
  const Explanation& of = *data.explanation;
  std::string html = fmt::format(
      "A Shapley value is how much of a decision value, beyond its mean over a background, is due "
      "to one input; those of all inputs add up to the whole difference. The background is {}. "
      "They explain what the model does, not what causes what.",
      BackgroundText(of));
  if (of.cases_are_vectors) {
    html +=
        " No cases were given: the cases below are support vectors, which lie closer to the "
        "threshold than most cases, or on the wrong side of it; <code>--input CASES</code> "
        "shows yours.";
  }
  if (of.sampled) {
    html +=
        " The values are means over drawn orders of the inputs; a thin line through a bar "
        "reaches two standard errors to each side.";
  }
  return Paragraph(html);
}

std::string StrongestFigure(const ReportData& data) {
  const Explanation& of = *data.explanation;
  BarPicture picture;
  picture.title = "Mean sizes of Shapley values";
  const int decimals = DecimalsFor(of.strongest, 0.0);
  for (const InputShare& share : of.strongest) {
    picture.bars.push_back({Brief(share.name, kNameColumns),
                            ValueText(share.value, decimals, false), share.value, 0.0});
  }
  if (!of.strongest.empty()) {
    picture.description = fmt::format("The largest is {}.", Number(of.strongest.front().value, 3));
  }
  std::string note = fmt::format("Means over {}{}", Count(of.cases),
                                 of.cases_are_vectors ? " support vectors" : " cases");
  if (of.cases + of.unexplained < of.cases_of) {
    note += fmt::format(" drawn from {}", Count(of.cases_of));
  }
  if (of.machines > 1) note += fmt::format(" and all {} machines", Count(of.machines));
  if (of.unexplained > 0) {
    note += fmt::format("; {} left out, whose values are beyond the range of numbers",
                        Count(of.unexplained));
  }
  return Figure(fmt::format("Which inputs matter <small>mean size of their Shapley values, {}"
                            "</small>",
                            of.machines > 1 ? "those of each machine as shares of the sum of its "
                                              "coefficients\u2019 sizes"
                                            : "in units of the decision value"),
                Draw(picture), note + ".");
}

std::string Reason(const ReportData& data, const ExplainedCase& shown) {
  const tools::MachineSides& sides = data.explanation->sides;
  // A machine without a threshold is not sure of anything by itself.
  const bool decides = !std::isnan(sides.threshold);
  switch (shown.choice) {
    case CaseChoice::kSurestAbove:
      return !decides || sides.above < 0 ? "the highest decision value"
                                         : "surest for " + CategoryName(data, sides.above);
    case CaseChoice::kSurestBelow:
      return !decides || sides.below < 0 ? "the lowest decision value"
                                         : "surest for " + CategoryName(data, sides.below);
    case CaseChoice::kTypicalAbove:
      return "typical for " + CategoryName(data, sides.above);
    case CaseChoice::kTypicalBelow:
      return "typical for " + CategoryName(data, sides.below);
    case CaseChoice::kClosest:
      return "closest to the threshold";
    case CaseChoice::kWorstMistake:
      return "the machine\u2019s surest mistake";
    case CaseChoice::kHighest:
      return "the highest prediction";
    case CaseChoice::kLowest:
      return "the lowest prediction";
    case CaseChoice::kMiddle:
      return "in the middle";
    case CaseChoice::kLargestResidual:
      return "the largest residual";
  }
  return {};
}

// What is known of the case beside its decision value.
std::string Outcome(const ReportData& data, const ExplainedCase& shown) {
  if (data.explanation->cases_are_vectors || !data.cases) return {};
  const tools::ScoredCases& cases = *data.cases;
  std::string html;
  if (cases.classification) {
    html += "; predicted " + CategoryName(data, cases.predicted[shown.at]);
    if (cases.actual[shown.at] >= 0) {
      html += ", in truth " + CategoryName(data, cases.actual[shown.at]);
    }
  } else if (!std::isnan(cases.observed[shown.at])) {
    html += fmt::format("; predicted {}, in truth {}", Number(cases.values[shown.at]),
                        Number(cases.observed[shown.at]));
  }
  return html;
}

std::string CaseFigure(const ReportData& data, const ExplainedCase& shown) {
  const Explanation& of = *data.explanation;
  BarPicture picture;
  // Vectors have names in a document, but no numbers.
  const std::string what =
      of.cases_are_vectors ? "A support vector" : fmt::format("Row {}", Count(shown.number));
  picture.title =
      fmt::format("Shapley values of {}",
                  of.cases_are_vectors ? "a support vector" : "row " + Count(shown.number));
  picture.description = fmt::format("They add up to {}.", Number(shown.decision - of.base, 3));
  if (of.sides.above >= 0) picture.right = CategoryBrief(data, of.sides.above, 18);
  if (of.sides.below >= 0) picture.left = CategoryBrief(data, of.sides.below, 18);
  if (picture.left.empty()) picture.left = "lowers";
  if (picture.right.empty()) picture.right = "raises";
  const int decimals = DecimalsFor(shown.shares, shown.rest);
  for (const InputShare& share : shown.shares) {
    picture.bars.push_back({Brief(share.name, kNameColumns), ValueText(share.value, decimals, true),
                            share.value, 2.0 * share.error});
  }
  if (shown.more > 0) {
    picture.bars.push_back({fmt::format("{} together", Counted(shown.more, "other input")),
                            ValueText(shown.rest, decimals, true), shown.rest, 0.0});
  }
  return Figure(fmt::format("{}: {}<small>decision value {}, background {}{}</small>", what,
                            Reason(data, shown), Number(shown.decision, 3), Number(of.base, 3),
                            Outcome(data, shown)),
                Draw(picture), "");
}

std::string HowChosen(const Explanation& of) {
  if (of.sides.above < 0 && of.sides.below < 0) {
    return "Chosen are the cases with the highest and the lowest prediction, and the one whose "
           "prediction is farthest off or, without labels, one in the middle.";
  }
  const std::string bars = of.sides.above < 0
                               ? "A bar to the left speaks for the category on the left."
                               : "A bar to the right speaks for the category on the right.";
  if (std::isnan(of.sides.threshold)) {
    return "Chosen are the cases with the highest and the lowest decision value. " + bars;
  }
  return "Chosen are the surest cases, those in the middle of each side "
         "(\u201Ctypical\u201D), the one closest to the threshold, and, where labels are known, "
         "the machine\u2019s surest mistake. " +
         bars;
}

std::string DependenceFigure(const ReportData& data, const tools::Dependence& dependence) {
  const Explanation& of = *data.explanation;
  ScatterPicture picture;
  picture.title = fmt::format("Decision value against input {}",
                              &dependence - data.explanation->dependences.data() + 1);
  picture.x_label = Brief(dependence.name, kAxisColumns);
  picture.y_label = "decision value";
  for (const tools::CasePlace& place : dependence.cases) {
    picture.points.push_back({place.x, place.y});
    picture.is_second.push_back(place.is_below);
  }
  for (const tools::CasePlace& place : dependence.curve) {
    picture.curve.push_back({place.x, place.y});
  }
  picture.level = of.sides.threshold;
  picture.level_label = "threshold";
  picture.description = "Points are cases, the line is the mean over the background.";
  if (!picture.curve.empty()) {
    picture.description +=
        fmt::format(" The line goes from {} to {}.", Number(picture.curve.front().y, 3),
                    Number(picture.curve.back().y, 3));
  }
  return Figure(Name(dependence.name), Draw(picture), "");
}

std::string SurfaceFigure(const ReportData& data) {
  const Explanation& of = *data.explanation;
  const tools::DecisionSurface& surface = *of.surface;
  SurfacePicture picture{"Decision value over two inputs",
                         "Bands of equal decision values, lines between them, and cases.",
                         Brief(surface.x_name, kAxisColumns),
                         Brief(surface.y_name, kAxisColumns),
                         surface,
                         surface.Crosses(of.sides.threshold)
                             ? of.sides.threshold
                             : std::numeric_limits<double>::quiet_NaN(),
                         of.sides.above < 0 ? "" : CategoryBrief(data, of.sides.above, 16),
                         of.sides.below < 0 ? "" : CategoryBrief(data, of.sides.below, 16)};
  return Figure(fmt::format("{} and {}", Name(surface.x_name), Name(surface.y_name)), Draw(picture),
                "");
}

std::string SurfaceText(const Explanation& of) {
  std::string html = Paragraph(
      fmt::format("The decision value where two inputs change, by bands of equal values. All other "
                  "inputs are those of one case: {}.",
                  of.surface->of_closest
                      ? "the one closest to the threshold, since around the row of the "
                        "background that is closest to its mean these two inputs alone do not "
                        "change the answer"
                      : "the row of the background that is closest to its mean"));
  html += Paragraph(of.surface->Crosses(of.sides.threshold)
                        ? "The thick line is the threshold, where the machine changes its answer."
                        : "Along a line the decision value is the number on it.");
  return html + Paragraph(
                    "Cases are shown at their own two numbers. Their other inputs differ, so "
                    "that a case may lie in a band that is not its own. Where no case is "
                    "near, the model has little to go by.");
}

std::string Effects(const ReportData& data) {
  const Explanation& of = *data.explanation;
  if (of.dependences.empty()) return {};
  std::string html = "<h3>One input at a time</h3>\n";
  html += Paragraph(fmt::format(
      "A point is a case with its decision value{}. The line is the mean decision "
      "value of the background if this input had that number in all its rows: where "
      "inputs depend on each other, some of these rows are cases that do not occur.",
      std::isnan(of.sides.threshold) ? "" : ", a diamond where it is below the threshold"));
  std::vector<std::string> figures;
  for (const tools::Dependence& dependence : of.dependences) {
    figures.push_back(DependenceFigure(data, dependence));
  }
  html += Figures(figures);
  if (of.surface)
    html += "<h3>Two inputs together</h3>\n" + Beside(SurfaceFigure(data), SurfaceText(of));
  return html;
}

}  // namespace

std::string InputsSection(const ReportData& data) {
  if (!data.explanation) return Give(WhyNoCases(data));
  const Explanation& of = *data.explanation;
  if (!of.why_not.empty()) {
    return Give(fmt::format("There is no explanation: {}.{}", Escaped(of.why_not),
                            of.cases_may_help
                                ? " With <code>--input CASES</code>, and <code>--background "
                                  "FILE</code>, there may be one."
                                : ""));
  }
  std::string html = Introduction(data);
  html = Beside(StrongestFigure(data), html);
  if (!of.chosen.empty()) {
    html += "<h3>Some cases</h3>\n";
    html += Paragraph(HowChosen(of));
    if (of.machines > 1) {
      html += Paragraph(fmt::format(
          "From here on, all is about one machine, the one whose cases lie closest to its "
          "threshold on the average: {}.",
          MachineName(data, of.sides, of.machine)));
    }
    std::vector<std::string> figures;
    for (const ExplainedCase& shown : of.chosen) figures.push_back(CaseFigure(data, shown));
    html += Figures(figures);
  }
  return html + Effects(data);
}

}  // namespace svmscore::app
