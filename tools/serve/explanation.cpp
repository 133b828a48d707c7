#include "tools/serve/explanation.h"

#include <memory>
#include <utility>
#include <vector>

#include "host/model/score_case_record.h"
#include "tools/base/bad_input.h"
#include "tools/explain/case_explainer.h"
#include "tools/serve/answer_text.h"
#include "tools/serve/case_requests.h"

namespace svmscore::serve {
namespace {

void AppendValues(std::string& out, std::string_view name, const tools::ModelExplainer& explainer,
                  const double* values) {
  JsonSink sink(out);
  out += ",\"";
  out += name;
  out += "\":{";
  for (const tools::Player& player : explainer.PlayerList()) {
    if (out.back() != '{') out += ',';
    AppendJsonString(out, player.name);
    out += ':';
    sink.Number(*values++);
  }
  out += '}';
}

std::string ExplanationsOf(const ServedModel& model, const tools::ModelExplainer& explainer,
                           const std::vector<CaseCell>& cells) {
  MCZandor_850::InputCaseRecord record(model.RecordVariables(), true,
                                       model.Plan().replaces_missing);
  for (std::size_t i = 0; i < model.RecordInputs(); ++i) cells[i].Put(record, i, model.Cells());
  tools::CaseExplainer explained(explainer, 1, false);
  if (explained.Add(record) != 0) return "[]";
  explained.Explain();
  if (!explained.IsExplained(0)) return "[]";
  std::string out = "[";
  JsonSink sink(out);
  for (std::size_t d = 0; d < explainer.Decisions().size(); ++d) {
    if (out.back() != '[') out += ',';
    out += '{';
    out += model.DecisionKeys()[d];
    out += ",\"decision\":";
    sink.Number(explained.Decisions(0)[d]);
    out += ",\"base\":";
    sink.Number(explainer.Values().Base(d));
    AppendValues(out, "phi", explainer, explained.Values(0, d));
    if (explainer.Values().IsSampled()) {
      AppendValues(out, "error", explainer, explained.Errors(0, d));
    }
    out += '}';
  }
  return out + ']';
}

std::shared_ptr<const tools::ModelExplainer> ExplainerOf(const ServedModel& model) {
  try {
    return model.Explainer();
  } catch (const tools::BadDocument& error) {
    throw BadRequest(501, error.what());
  } catch (const tools::BadCases& error) {
    throw BadRequest(501, error.what());
  }
}

}  // namespace

std::string ExplainOne(const ServedModel& model, std::string& body, RowCounts& counts) try {
  JsonScanner scanner(body);
  RowRun run(model, true);
  std::string id;
  CaseFault fault = ReadCase(scanner, model, run, id);
  scanner.Finish();
  if (fault.of_request) throw BadRequest(400, fault.what);
  const std::shared_ptr<const tools::ModelExplainer> explainer = ExplainerOf(model);
  const std::vector<CaseCell> cells = run.LastCells();
  if (fault.what.empty()) {
    run.Take();
  } else {
    run.Refuse(std::move(fault.what));
  }
  tools::NoSink none;
  std::string out = "{\"id\":" + id + ",\"status\":";
  run.Write(
      counts, [&none](std::size_t) -> tools::NoSink& { return none; },
      [&](long status, const std::string& reason) {
        AppendWhole(out, status);
        if (status != 0) {
          out += ",\"reason\":";
          AppendJsonString(out, reason);
        }
        out += explainer->Values().IsSampled() ? ",\"sampled\":true" : ",\"sampled\":false";
        out += ",\"explanations\":";
        out += status == 0 ? ExplanationsOf(model, *explainer, cells) : "[]";
      });
  return out + "}\n";
} catch (const JsonError& error) {
  throw BadRequest(400, error.what());
}

}  // namespace svmscore::serve
