#include "tools/verify/verify_json.h"

#include <cmath>
#include <utility>

namespace svmscore::tools {
namespace {

// Pairs of an expected and a predicted category, the most frequent first: a whole matrix of twenty.
constexpr std::size_t kConfusions = 400;

std::optional<double> FiniteOrNull(const std::optional<double>& number) {
  return number && std::isfinite(*number) ? number : std::nullopt;
}

}  // namespace

void WriteAgreement(const std::optional<Agreement>& agreement, JsonText& json) {
  if (!agreement) return json.Value(nullptr);
  json.OpenObject();
  json.Member("column", agreement->Column());
  json.Member("cases", agreement->Compared());
  json.Member("withoutPrediction", agreement->Unpredicted());
  if (agreement->IsClassification()) {
    json.Member("right", agreement->Right());
    json.Member("accuracy", FiniteOrNull(agreement->Accuracy()));
    json.Key("confusions").OpenArray();
    std::size_t written = 0;
    for (const auto& [expected, predicted, cases] : agreement->Confusions()) {
      if (written++ == kConfusions) break;
      json.OpenObject();
      json.Member("expected", expected);
      json.Member("predicted", predicted);
      json.Member("cases", cases);
      json.CloseObject();
    }
    json.CloseArray();
  } else {
    const auto largest = agreement->LargestDifference();
    json.Member("r2", FiniteOrNull(agreement->RSquared()));
    json.Member("rmse", FiniteOrNull(agreement->RootMeanSquare()));
    json.Member("largestDifference",
                FiniteOrNull(largest ? std::optional(largest->first) : std::nullopt));
    json.Member("largestDifferenceRow", largest ? std::optional(largest->second) : std::nullopt);
  }
  json.CloseObject();
}

std::string JsonOf(const VerifyReport& report, const std::optional<Agreement>& agreement) {
  JsonText json;
  json.OpenObject();
  json.Member("agrees", report.Disagreements() == 0);
  json.Member("compared", report.Compared());
  json.Member("disagreements", report.Disagreements());
  json.Key("agreement");
  WriteAgreement(agreement, json);
  json.Member("remarks", report.Remarks());
  json.Key("differences").OpenArray();
  for (const Disagreement& difference : report.Differences()) {
    json.OpenObject();
    json.Member("record", difference.record);
    json.Member("column", difference.name);
    json.Member("expected", difference.expected);
    json.Member("got", difference.got);
    json.Member("status", difference.status);
    json.Member("reason",
                difference.reason.empty() ? std::nullopt : std::optional(difference.reason));
    json.Member("deviation", FiniteOrNull(difference.judgement.deviation));
    json.CloseObject();
  }
  json.CloseArray();
  json.CloseObject();
  return json.Finish();
}

}  // namespace svmscore::tools
