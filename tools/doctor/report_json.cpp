#include "tools/doctor/report_json.h"

#include <algorithm>
#include <optional>

#include "tools/base/json_text.h"
#include "tools/verify/verify_json.h"

namespace svmscore::tools {

namespace {

void WriteFindings(const std::vector<Finding>& findings, JsonText& json) {
  json.OpenArray();
  for (const Finding& finding : findings) {
    const Place& place = finding.place;
    json.OpenObject();
    json.Member("name", finding.Name());
    json.Member("severity", SeverityName(finding.kind->of_class));
    json.Member("class", ClassName(finding.kind->of_class));
    json.Member("changesScores", finding.IsError());
    json.Member("element", place.element.empty() ? std::nullopt : std::optional(place.element));
    json.Member("line", place.line > 0 ? std::optional(place.line) : std::nullopt);
    json.Member("further", finding.more);
    json.Member("what", finding.What());
    json.Member("consequence", finding.kind->consequence);
    json.Member("remedy", finding.kind->remedy);
    json.CloseObject();
  }
  json.CloseArray();
}

}  // namespace

std::string FindingsJson(const std::vector<Finding>& findings) {
  JsonText json;
  WriteFindings(findings, json);
  return json.Finish();
}

std::string ReportJson(const std::string& file, const Examination& examination) {
  const std::vector<Finding>& findings = examination.findings;
  JsonText json;
  json.OpenObject();
  json.Member("file", file);
  json.Member("changesScores",
              std::any_of(findings.begin(), findings.end(),
                          [](const Finding& finding) { return finding.IsError(); }));
  json.Key("agreement");
  WriteAgreement(examination.agreement, json);
  json.Key("findings");
  WriteFindings(findings, json);
  json.CloseObject();
  return json.Finish();
}

}  // namespace svmscore::tools
