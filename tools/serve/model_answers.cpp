#include "tools/serve/model_answers.h"

#include <array>
#include <chrono>
#include <ctime>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "host/model/score_dict_var.h"
#include "host/text/field_types.h"
#include "tools/serve/answer_text.h"

namespace svmscore::serve {
namespace {

using MCZandor_850::ScoreDictVar;

std::string TimeText(std::int64_t milliseconds) {
  const std::time_t seconds = milliseconds / 1000;
  return fmt::format("\"{:%Y-%m-%dT%H:%M:%S}.{:03}+00:00\"", fmt::gmtime(seconds),
                     milliseconds % 1000);
}

void AppendMember(std::string& out, std::string_view name, std::string_view text) {
  if (out.back() != '{') out += ',';
  AppendJsonString(out, name);
  out += ':';
  AppendJsonString(out, text);
}

void AppendBound(std::string& out, std::string_view name, double bound) {
  out += fmt::format("\"{}\":", name);
  JsonSink(out).Number(bound);
}

std::string IntervalText(const Interval& interval) {
  std::string text = interval.left_closed ? "[" : "(";
  AppendNumber(text, interval.left);
  text += ", ";
  AppendNumber(text, interval.right);
  return text + (interval.right_closed ? "]" : ")");
}

// Categories, or else the intervals of numbers, as texts. `closed`: only where no others are valid.
void AppendValues(std::string& out, const ScoreDictVar& var, bool closed) {
  out += ",\"values\":[";
  const auto add = [&out](std::string_view text) {
    if (out.back() != '[') out += ',';
    AppendJsonString(out, text);
  };
  if (var.GetTypeCode() != 0 && !(closed && var.DeclaresNoValues())) {
    for (const auto* category : var.GetCategories()) add(category->GetText());
  }
  for (const Interval& interval : var.GetIntervals()) add(IntervalText(interval));
  out += ']';
  if (var.GetIntervals().empty()) return;
  out += ",\"intervals\":[";
  for (const Interval& interval : var.GetIntervals()) {
    if (out.back() != '[') out += ',';
    out += '{';
    AppendBound(out, "left", interval.left);
    out += ',';
    AppendBound(out, "right", interval.right);
    out += fmt::format(",\"leftClosed\":{},\"rightClosed\":{}}}", interval.left_closed,
                       interval.right_closed);
  }
  out += ']';
}

void AppendVariable(std::string& out, const ScoreDictVar& var, bool closed) {
  constexpr std::array<std::string_view, 4> kOpTypes = {"continuous", "ordinal", "cyclic",
                                                        "categorical"};
  if (out.back() != '[') out += ',';
  out += '{';
  AppendMember(out, "id", var.GetName());
  AppendMember(out, "dataType", DataTypeName(var.GetFieldType().data));
  AppendMember(out, "opType", kOpTypes.at(static_cast<std::size_t>(var.GetTypeCode())));
  AppendValues(out, var, closed);
}

void AppendInput(std::string& out, const ServedModel& model, std::size_t input) {
  const ScoreDictVar& var = *model.Inputs()[input];
  AppendVariable(out, var, true);
  out += fmt::format(",\"needed\":{}", input < model.Loaded().needed.size());
  if (const auto* replacement = var.GetMissingReplacement()) {
    AppendMember(out, "missingValueReplacement", replacement->GetText());
  }
  out += '}';
}

void AppendOutput(std::string& out, const tools::ResultColumn& column) {
  const bool number = column.Kind() == tools::CellKind::kNumber;
  const bool whole = column.Kind() == tools::CellKind::kWhole;
  if (out.back() != '[') out += ',';
  out += '{';
  AppendMember(out, "id", column.Name());
  AppendMember(out, "dataType", number ? "double" : whole ? "integer" : "string");
  AppendMember(out, "opType", number || whole ? "continuous" : "categorical");
  out += '}';
}

void AppendSchema(std::string& out, const ServedModel& model) {
  out += ",\"schema\":{\"inputFields\":[";
  for (std::size_t i = 0; i < model.Inputs().size(); ++i) AppendInput(out, model, i);
  out += "],\"targetFields\":[";
  AppendVariable(out, *model.Loaded().model->GetTargetVar(), false);
  out += "}],\"outputFields\":[";
  for (const auto& column : model.Plan().results) AppendOutput(out, *column);
  out += "]}";
}

void AppendModel(std::string& out, const ServedModel& model, bool whole) {
  const bool regression =
      model.Plan().Output().Targets().GetScheme().method == output::Method::kRegression;
  AppendMember(out, "miningFunction", regression ? "regression" : "classification");
  AppendMember(out, "summary", "Support vector machine");
  out += ",\"properties\":{\"created.timestamp\":" + TimeText(model.Created());
  out += ",\"accessed.timestamp\":";
  out += model.Accessed() == 0 ? "null" : TimeText(model.Accessed());
  out += fmt::format(",\"file.size\":{}", model.File().size());
  AppendMember(out, "file.checksum", model.Sha256());
  out += '}';
  AppendSchema(out, model);
  if (!whole) return;
  out += ",\"card\":" + model.Card();
  out += ",\"findings\":" + model.Findings();
}

}  // namespace

std::string ModelSummaryText(const std::string& id, const StoredModel& stored, bool whole) {
  std::string out = "{";
  AppendMember(out, "id", id);
  out += fmt::format(",\"ready\":{},\"problem\":", stored.model != nullptr);
  if (stored.problem) {
    AppendJsonString(out, *stored.problem);
  } else {
    out += "null";
  }
  if (stored.model != nullptr) AppendModel(out, *stored.model, whole);
  out += '}';
  return out;
}

std::string UploadedModelText(const ServedModel& model) {
  std::string out = "{";
  AppendMember(out, "id", model.Id());
  AppendModel(out, model, false);
  return out + "}\n";
}

std::string ModelList(const ModelStore& store) {
  std::string out = "{\"models\":[";
  for (const auto& [id, stored] : store.All()) {
    if (out.back() != '[') out += ',';
    out += ModelSummaryText(id, stored, false);
  }
  out += "]}\n";
  return out;
}

}  // namespace svmscore::serve
