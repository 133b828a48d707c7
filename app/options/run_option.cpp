#include "app/options/run_option.h"

namespace svmscore::app {
namespace {

using MCZandor_850::ScoreModel;

constexpr int kMostThreads = 1024;

}  // namespace

void AddFormatOption(CLI::App& command, std::string& format) {
  command.add_option("--format", format, "csv, or jsonl for one JSON object a line")
      ->check(CLI::IsMember({"csv", "jsonl"}))
      ->capture_default_str();
}

void AddThreadsOption(CLI::App& command, int& threads) {
  command.add_option("--threads", threads, "number of threads; default: all cores")
      ->check(CLI::Range(1, kMostThreads));
}

void AddPolicyOption(CLI::App& command, std::string& policy) {
  command
      .add_option("--missing-policy", policy,
                  "a case with a missing value: replace where the model says by what, "
                  "predict-missing, or fail; default: what the model says")
      ->check(CLI::IsMember({"replace", "predict-missing", "fail"}));
}

void UsePolicy(ScoreModel& model, const std::string& policy) {
  if (policy == "replace") model.SetMissingValuePolicy(ScoreModel::kReplaceMissing);
  if (policy == "predict-missing") model.SetMissingValuePolicy(ScoreModel::kPredictMissing);
  if (policy == "fail") model.SetMissingValuePolicy(ScoreModel::kFailOnMissing);
}

}  // namespace svmscore::app
