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

std::size_t CountChanging(const std::vector<tools::Finding>& findings) {
  return static_cast<std::size_t>(
      std::count_if(findings.begin(), findings.end(),
                    [](const tools::Finding& finding) { return finding.ChangesScores(); }));
}

std::string Summary(const std::vector<tools::Finding>& findings) {
  if (findings.empty()) return "no findings";
  const std::size_t changing = CountChanging(findings);
  return fmt::format("{} finding{}, {} change{} scores", findings.size(),
                     findings.size() == 1 ? "" : "s",
                     changing == 0 ? "none" : fmt::to_string(changing), changing > 1 ? "" : "s");
}

std::string PlaceOf(const tools::Finding& finding) {
  if (finding.element.empty()) return {};
  const std::string element = Printable(finding.element, kLongestInsert);
  if (finding.line == 0) return ", " + element;
  return fmt::format(", line {}, {}", finding.line, element);
}

}  // namespace

std::string ReportText(const std::string& file, const std::vector<tools::Finding>& findings) {
  std::string text = fmt::format("{}: {}\n", Printable(file), Summary(findings));
  std::map<std::string_view, std::size_t> kinds;
  for (const tools::Finding& finding : findings) ++kinds[finding.Name()];
  std::map<std::string_view, std::size_t> met;
  for (const tools::Finding& finding : findings) {
    const std::size_t count = ++met[finding.Name()];
    if (count > kShown) continue;
    text += fmt::format("\n{} {}{}\n  {}\n", tools::SeverityName(finding.kind->severity),
                        finding.Name(), PlaceOf(finding), Printable(finding.what));
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

std::string ReportJson(const std::string& file, const std::vector<tools::Finding>& findings) {
  Json list = Json::array();
  for (const tools::Finding& finding : findings) {
    list.push_back({{"name", finding.Name()},
                    {"severity", tools::SeverityName(finding.kind->severity)},
                    {"changesScores", finding.ChangesScores()},
                    {"element", finding.element.empty() ? Json() : Json(finding.element)},
                    {"line", finding.line > 0 ? Json(finding.line) : Json()},
                    {"what", finding.what},
                    {"consequence", finding.kind->consequence},
                    {"remedy", finding.kind->remedy}});
  }
  const Json all = {{"file", file},
                    {"changesScores", CountChanging(findings) > 0},
                    {"findings", std::move(list)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace svmscore::app
