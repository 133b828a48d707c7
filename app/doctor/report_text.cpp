#include "app/doctor/report_text.h"

#include <map>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "host/text/printable.h"

namespace svmscore::app {
namespace {

// Findings of a kind that are written for people, before the rest is only counted.
constexpr std::size_t kShown = 5;

// Counts the places that have no finding of their own too.
std::string Summary(const std::vector<Finding>& findings) {
  if (findings.empty()) return "no findings";
  std::size_t all = 0;
  std::size_t changing = 0;
  for (const Finding& finding : findings) {
    all += 1 + finding.more;
    if (finding.IsError()) changing += 1 + finding.more;
  }
  return fmt::format("{} finding{}, {} change{} scores", all, all == 1 ? "" : "s",
                     changing == 0 ? "none" : fmt::to_string(changing), changing > 1 ? "" : "s");
}

std::string PlaceOf(const Finding& finding) {
  if (finding.place.element.empty()) return {};
  const std::string element = Printable(finding.place.element, kLongestInsert);
  if (finding.place.line == 0) return ", " + element;
  return fmt::format(", line {}, {}", finding.place.line, element);
}

}  // namespace

std::string ReportText(const std::string& file, const tools::Examination& examination) {
  const std::vector<Finding>& findings = examination.findings;
  std::string text = fmt::format("{}: {}\n", Printable(file), Summary(findings));
  if (examination.agreement) text += "\n" + examination.agreement->Text();
  std::map<std::string_view, std::size_t> kinds;
  for (const Finding& finding : findings) kinds[finding.Name()] += 1 + finding.more;
  std::map<std::string_view, std::size_t> left;
  for (const Finding& finding : findings) ++left[finding.Name()];
  std::map<std::string_view, std::size_t> met;
  for (const Finding& finding : findings) {
    const std::size_t count = ++met[finding.Name()];
    if (count > kShown) continue;
    text += fmt::format("\n{} {}{}\n  {}\n", SeverityName(finding.kind->of_class), finding.Name(),
                        PlaceOf(finding), Printable(finding.What()));
    if (count == 1) {
      text += fmt::format("  Consequence: {}.\n  Remedy: {}.\n", finding.kind->consequence,
                          finding.kind->remedy);
    }
    const bool is_last = count == kShown || --left[finding.Name()] == 0;
    if (is_last && kinds[finding.Name()] > count) {
      text += fmt::format("  and {} more of {}\n", kinds[finding.Name()] - count, finding.Name());
    }
  }
  return text;
}

}  // namespace svmscore::app
