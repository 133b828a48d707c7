#include "app/doctor/report.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "host/text/printable.h"

namespace svmscore::app {
namespace {

using Json = nlohmann::ordered_json;

// Findings of a kind that are written for people, before the rest is only counted.
constexpr std::size_t kShown = 5;

std::size_t CountChanging(const std::vector<Finding>& findings) {
  return static_cast<std::size_t>(std::count_if(
      findings.begin(), findings.end(), [](const Finding& finding) { return finding.IsError(); }));
}

std::string Summary(const std::vector<Finding>& findings) {
  if (findings.empty()) return "no findings";
  const std::size_t changing = CountChanging(findings);
  return fmt::format("{} finding{}, {} change{} scores", findings.size(),
                     findings.size() == 1 ? "" : "s",
                     changing == 0 ? "none" : fmt::to_string(changing), changing > 1 ? "" : "s");
}

std::string PlaceOf(const Finding& finding) {
  if (finding.place.element.empty()) return {};
  const std::string element = Printable(finding.place.element, kLongestInsert);
  if (finding.place.line == 0) return ", " + element;
  return fmt::format(", line {}, {}", finding.place.line, element);
}

}  // namespace

std::string ReportText(const std::string& file, const std::vector<Finding>& findings) {
  std::string text = fmt::format("{}: {}\n", Printable(file), Summary(findings));
  std::map<std::string_view, std::size_t> kinds;
  for (const Finding& finding : findings) ++kinds[finding.Name()];
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
    if (count == kShown && kinds[finding.Name()] > kShown) {
      text += fmt::format("  and {} more of {}\n", kinds[finding.Name()] - kShown, finding.Name());
    }
  }
  return text;
}

std::string ReportJson(const std::string& file, const std::vector<Finding>& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
    list.push_back(
        {{"name", finding.Name()},
         {"severity", SeverityName(finding.kind->of_class)},
         {"class", ClassName(finding.kind->of_class)},
         {"changesScores", finding.IsError()},
         {"element", finding.place.element.empty() ? Json() : Json(finding.place.element)},
         {"line", finding.place.line > 0 ? Json(finding.place.line) : Json()},
         {"further", finding.more},
         {"what", finding.What()},
         {"consequence", finding.kind->consequence},
         {"remedy", finding.kind->remedy}});
  }
  const Json all = {{"file", file},
                    {"changesScores", CountChanging(findings) > 0},
                    {"findings", std::move(list)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace svmscore::app
