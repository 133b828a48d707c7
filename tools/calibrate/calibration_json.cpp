#include "tools/calibrate/calibration_json.h"

#include "tools/base/json_text.h"

namespace svmscore::tools {
namespace {

void WriteFigures(const ClassFigures& figures, JsonText& json) {
  json.OpenObject();
  json.Member("cases", figures.cases);
  json.Member("accuracy", figures.accuracy);
  if (figures.probabilities) {
    json.Member("brierScore", figures.probabilities->brier);
    json.Member("logLoss", figures.probabilities->log_loss);
    json.Member("expectedCalibrationError", figures.probabilities->ece);
    json.Key("reliability").OpenArray();
    for (const Tenth& tenth : figures.probabilities->tenths) {
      const bool any = tenth.cases > 0;
      json.OpenObject();
      json.Member("cases", tenth.cases);
      json.Member("meanProbability", any ? std::optional(tenth.mean) : std::nullopt);
      json.Member("share", any ? std::optional(tenth.share) : std::nullopt);
      json.CloseObject();
    }
    json.CloseArray();
  }
  json.CloseObject();
}

void WriteFigures(const std::optional<IntervalFigures>& figures, JsonText& json) {
  if (!figures) return json.Value(nullptr);
  json.OpenObject();
  json.Member("cases", figures->cases);
  json.Member("coverage", figures->coverage);
  json.Member("meanWidth", figures->mean_width);
  json.CloseObject();
}

void WritePairs(const CalibrationResult& result, JsonText& json) {
  json.Key("pairs").OpenArray();
  for (const PairCalibration& pair : result.pairs) {
    json.OpenObject();
    json.Member("response", pair.response);
    json.Member("nonResponse", pair.other);
    json.Member("responseCases", pair.response_cases);
    json.Member("nonResponseCases", pair.other_cases);
    json.Member("A", pair.sigmoid.a);
    json.Member("B", pair.sigmoid.b);
    json.Member("machine", pair.machine);
    json.CloseObject();
  }
  json.CloseArray();
}

void WriteClassification(const CalibrationResult& result, JsonText& json) {
  json.Key("categories").OpenArray();
  for (std::size_t k = 0; k < result.categories.size(); ++k) {
    json.OpenObject();
    json.Member("category", result.categories[k]);
    json.Member("cases", result.cases[k]);
    json.CloseObject();
  }
  json.CloseArray();
  WritePairs(result, json);
  json.Member("moved", result.moved);
  json.Member("changed", result.changed);
  WriteFigures(result.before, json.Key("before"));
  WriteFigures(result.after, json.Key("after"));
}

void WriteRegression(const CalibrationResult& result, JsonText& json) {
  json.Member("confidence", result.confidence);
  json.Member("rank", result.rank);
  json.Member("halfWidth", result.half_width);
  if (!result.output_field.empty()) json.Member("outputField", result.output_field);
  json.Member("standardDeviation", result.deviation);
  WriteFigures(result.interval_before, json.Key("before"));
  WriteFigures(result.interval_after, json.Key("after"));
}

}  // namespace

const char* FateName(RecordsFate fate) {
  switch (fate) {
    case RecordsFate::kNone:
      return "none";
    case RecordsFate::kKept:
      return "kept";
    case RecordsFate::kRewritten:
      return "rewritten";
    case RecordsFate::kDroppedAsWrong:
    case RecordsFate::kDropped:
      return "dropped";
  }
  return "none";
}

std::string JsonOf(const CalibrationResult& result) {
  JsonText json;
  json.OpenObject();
  json.Member("kind", result.classification ? "classification" : "regression");
  json.Key("rows").OpenObject();
  json.Member("read", result.rows);
  json.Member("unlabelled", result.unlabelled);
  json.Member("unknownLabels", result.unknown_labels);
  json.Member("unscored", result.unscored);
  json.Member("used", result.used);
  json.CloseObject();
  if (result.classification) {
    WriteClassification(result, json);
  } else {
    WriteRegression(result, json);
  }
  json.Member("folds", kFolds);
  json.Member("verificationRecords", FateName(result.records));
  json.Member("remarks", result.remarks);
  json.CloseObject();
  return json.Finish();
}

}  // namespace svmscore::tools
