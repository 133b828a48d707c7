#include "tools/doctor/report_json.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

namespace svmscore::tools {
namespace {

using Json = nlohmann::ordered_json;

// Pairs of an expected and a predicted category, the most frequent first: a whole matrix of twenty.
constexpr std::size_t kConfusions = 400;

template <typename Number>
Json OrNull(const std::optional<Number>& number) {
  return number ? Json(*number) : Json();
}

Json AgreementJson(const std::optional<Agreement>& agreement) {
  if (!agreement) return {};
  Json json = {{"column", agreement->Column()},
               {"cases", agreement->Compared()},
               {"withoutPrediction", agreement->Unpredicted()}};
  if (!agreement->IsClassification()) {
    const auto largest = agreement->LargestDifference();
    json["r2"] = OrNull(agreement->RSquared());
    json["rmse"] = OrNull(agreement->RootMeanSquare());
    json["largestDifference"] = largest ? Json(largest->first) : Json();
    json["largestDifferenceRow"] = largest ? Json(largest->second) : Json();
    return json;
  }
  json["right"] = agreement->Right();
  json["accuracy"] = OrNull(agreement->Accuracy());
  Json confusions = Json::array();
  for (const auto& [expected, predicted, cases] : agreement->Confusions()) {
    if (confusions.size() == kConfusions) break;
    confusions.push_back({{"expected", expected}, {"predicted", predicted}, {"cases", cases}});
  }
  json["confusions"] = std::move(confusions);
  return json;
}

}  // namespace

std::string ReportJson(const std::string& file, const Examination& examination) {
  const std::vector<Finding>& findings = examination.findings;
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
                    {"agreement", AgreementJson(examination.agreement)},
                    {"findings", std::move(list)}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace svmscore::tools
