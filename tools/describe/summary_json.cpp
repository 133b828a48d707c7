#include "tools/describe/summary_json.h"

#include "tools/base/json_text.h"

namespace svmscore::tools {
namespace {

std::optional<std::string> TextOrNull(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

void WriteInputs(const ModelSummary& summary, JsonText& json) {
  json.Key("inputs").OpenArray();
  for (const InputSummary& input : summary.inputs) {
    json.OpenObject();
    json.Member("name", input.name);
    json.Member("optype", input.optype);
    json.Member("dataType", input.type);
    json.Member("needed", input.needed);
    json.Member("replacement", input.replacement);
    json.CloseObject();
  }
  json.CloseArray();
}

void WriteMachines(const ModelSummary& summary, JsonText& json) {
  json.Key("machines").OpenArray();
  for (const MachineSummary& machine : summary.machines) {
    json.OpenObject();
    json.Member("target", TextOrNull(machine.target));
    json.Member("alternate", TextOrNull(machine.alternate));
    json.Member("threshold", machine.threshold);
    json.Member("absoluteValue", machine.offset);
    json.Member("terms", machine.terms);
    json.CloseObject();
  }
  json.CloseArray();
}

void WriteFindings(const ModelSummary& summary, JsonText& json) {
  json.Key("findings").OpenArray();
  for (const Finding& finding : summary.findings) {
    json.OpenObject();
    json.Member("name", finding.Name());
    json.Member("class", ClassName(finding.kind->of_class));
    json.Member("element", TextOrNull(finding.place.element));
    json.Member("line", finding.place.line > 0 ? std::optional(finding.place.line) : std::nullopt);
    json.Member("further", finding.more);
    json.Member("sentence", finding.kind->sentence);
    json.Member("detail", TextOrNull(finding.detail));
    json.Member("consequence", finding.kind->consequence);
    json.Member("remedy", finding.kind->remedy);
    json.CloseObject();
  }
  json.CloseArray();
}

void WriteKernel(const ModelSummary& summary, JsonText& json) {
  json.Key("kernel").OpenObject();
  json.Member("type", summary.kernel);
  json.Key("parameters").OpenObject();
  for (const auto& [name, value] : summary.parameters) json.Member(name, value);
  json.CloseObject();
  json.CloseObject();
}

void WriteTarget(const ModelSummary& summary, JsonText& json) {
  json.Key("target").OpenObject();
  json.Member("name", summary.target);
  json.Member("dataType", summary.target_type);
  json.Member("categories", summary.categories);
  json.CloseObject();
}

void WriteCounts(const ModelSummary& summary, JsonText& json) {
  json.Key("counts").OpenObject();
  json.Member("inputs", summary.inputs.size());
  json.Member("derivedFields", summary.derived_fields);
  json.Member("vectorFields", summary.vector_fields);
  json.Member("vectors", summary.vectors);
  json.Member("machines", summary.machines.size());
  json.Member("terms", summary.terms);
  json.CloseObject();
}

}  // namespace

std::string JsonOf(const ModelSummary& summary) {
  const bool regression = summary.scheme.method == Method::kRegression;
  JsonText json;
  json.OpenObject();
  json.Member("file", summary.file);
  json.Member("pmmlVersion", TextOrNull(summary.pmml_version));
  json.Member("producer", TextOrNull(summary.producer));
  json.Member("modelName", TextOrNull(summary.model_name));
  json.Member("function", regression ? "regression" : "classification");
  json.Member("method", NameOf(summary.scheme.method));
  json.Member("maxWins", summary.max_wins);
  json.Member("threshold", summary.threshold);
  json.Member("percentages", NameOf(summary.scheme.percentages));
  json.Member("interval", summary.scheme.interval);
  WriteKernel(summary, json);
  WriteTarget(summary, json);
  json.Member("missingPolicy", summary.missing_policy);
  json.Key("votes").OpenObject();
  json.Member("by", summary.votes_by);
  json.Member("whyExact", TextOrNull(summary.why_exact));
  json.CloseObject();
  WriteCounts(summary, json);
  WriteInputs(summary, json);
  WriteMachines(summary, json);
  json.Member("outputFields", summary.output_fields);
  json.Member("refused", summary.refused);
  WriteFindings(summary, json);
  json.Member("display", summary.listing);
  json.CloseObject();
  return json.Finish();
}

}  // namespace svmscore::tools
