#include "tools/doctor/report_json.h"

#include <algorithm>

#include <nlohmann/json.hpp>

namespace svmscore::tools {

std::string ReportJson(const std::string& file, const std::vector<Finding>& findings) {
  using Json = nlohmann::ordered_json;
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
                    {"changesScores", std::any_of(findings.begin(), findings.end(),
                                                  [](const Finding& f) { return f.IsError(); })},
                    {"findings", std::move(list)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace svmscore::tools
