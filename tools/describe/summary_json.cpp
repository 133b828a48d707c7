#include "tools/describe/summary_json.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "host/text/number_text.h"

namespace svmscore::tools {
namespace {

using Json = nlohmann::ordered_json;

// JSON cannot express infinities and NaN.
Json NumberOf(double number) {
  return std::isfinite(number) ? Json(number) : Json(FormatNumber(number));
}

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json InputsOf(const ModelSummary& summary) {
  Json inputs = Json::array();
  for (const InputSummary& input : summary.inputs) {
    inputs.push_back({{"name", input.name},
                      {"optype", input.optype},
                      {"dataType", input.type},
                      {"needed", input.needed},
                      {"replacement", input.replacement ? Json(*input.replacement) : Json()}});
  }
  return inputs;
}

Json MachinesOf(const ModelSummary& summary) {
  Json machines = Json::array();
  for (const MachineSummary& machine : summary.machines) {
    machines.push_back({{"target", TextOrNull(machine.target)},
                        {"alternate", TextOrNull(machine.alternate)},
                        {"threshold", NumberOf(machine.threshold)},
                        {"absoluteValue", NumberOf(machine.offset)},
                        {"terms", machine.terms}});
  }
  return machines;
}

Json FindingsOf(const ModelSummary& summary) {
  Json findings = Json::array();
  for (const Finding& finding : summary.findings) {
    findings.push_back({{"name", finding.Name()},
                        {"class", ClassName(finding.kind->of_class)},
                        {"element", TextOrNull(finding.place.element)},
                        {"line", finding.place.line > 0 ? Json(finding.place.line) : Json()},
                        {"further", finding.more},
                        {"sentence", finding.kind->sentence},
                        {"detail", TextOrNull(finding.detail)},
                        {"consequence", finding.kind->consequence},
                        {"remedy", finding.kind->remedy}});
  }
  return findings;
}

}  // namespace

std::string JsonOf(const ModelSummary& summary) {
  Json parameters = Json::object();
  for (const auto& [name, value] : summary.parameters) parameters[name] = NumberOf(value);
  const bool regression = summary.scheme.method == Method::kRegression;
  const Json all = {{"file", summary.file},
                    {"pmmlVersion", TextOrNull(summary.pmml_version)},
                    {"producer", TextOrNull(summary.producer)},
                    {"modelName", TextOrNull(summary.model_name)},
                    {"function", regression ? "regression" : "classification"},
                    {"method", NameOf(summary.scheme.method)},
                    {"maxWins", summary.max_wins},
                    {"threshold", NumberOf(summary.threshold)},
                    {"percentages", NameOf(summary.scheme.percentages)},
                    {"interval", summary.scheme.interval},
                    {"kernel", {{"type", summary.kernel}, {"parameters", parameters}}},
                    {"target",
                     {{"name", summary.target},
                      {"dataType", summary.target_type},
                      {"categories", summary.categories}}},
                    {"missingPolicy", summary.missing_policy},
                    {"counts",
                     {{"inputs", summary.inputs.size()},
                      {"derivedFields", summary.derived_fields},
                      {"vectorFields", summary.vector_fields},
                      {"vectors", summary.vectors},
                      {"machines", summary.machines.size()},
                      {"terms", summary.terms}}},
                    {"inputs", InputsOf(summary)},
                    {"machines", MachinesOf(summary)},
                    {"outputFields", summary.output_fields},
                    {"refused", summary.refused ? Json(*summary.refused) : Json()},
                    {"findings", FindingsOf(summary)},
                    {"display", summary.listing ? Json(*summary.listing) : Json()}};
  return all.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace svmscore::tools
