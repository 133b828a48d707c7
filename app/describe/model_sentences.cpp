#include "app/describe/model_sentences.h"

#include <fmt/format.h>

#include "host/text/number_text.h"

namespace svmscore::app {

using tools::Method;
using tools::NameOf;
using tools::Percentages;

std::string MethodSentence(const tools::ModelSummary& summary) {
  const char* side = summary.max_wins ? "above" : "below";
  switch (summary.scheme.method) {
    case Method::kRegression:
      return "regression";
    case Method::kBinary:
      return summary.scheme.percentages == Percentages::kProbabilities
                 ? "classification, two categories: the more probable one wins"
                 : fmt::format(
                       "classification, two categories: a decision value {} the threshold "
                       "means the target category",
                       side);
    case Method::kOneAgainstOne:
      return summary.scheme.percentages == Percentages::kProbabilities
                 ? "classification, one-against-one: the most probable category wins"
                 : fmt::format(
                       "classification, one-against-one: a decision value {} the threshold "
                       "is a vote for the target category",
                       side);
    case Method::kOneAgainstAll:
      return fmt::format("classification, one-against-all: the {} decision value wins",
                         summary.max_wins ? "largest" : "smallest");
  }
  return {};
}

std::string KernelSentence(const tools::ModelSummary& summary) {
  std::string text = summary.kernel;
  for (const auto& [name, value] : summary.parameters) {
    text += fmt::format(", {} {}", name, FormatNumber(value));
  }
  return text;
}

std::string PercentagesSentence(const tools::ModelSummary& summary) {
  if (summary.scheme.method == Method::kRegression) {
    return summary.scheme.interval ? "standard deviation and 95% interval" : "no interval";
  }
  return NameOf(summary.scheme.percentages);
}

std::string VotesSentence(const tools::ModelSummary& summary) {
  if (!summary.why_exact.empty()) {
    return fmt::format("by exact decision values ({})", summary.why_exact);
  }
  return fmt::format(
      "by estimates in {} precision within proven bounds, by exact decision values where these "
      "leave a doubt",
      summary.votes_by);
}

}  // namespace svmscore::app
