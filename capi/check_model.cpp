// Describing, verifying and examining a model, as JSON.
#include <unordered_map>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/document_lock.h"
#include "capi/given_text.h"
#include "capi/input_cells.h"
#include "capi/model_state.h"
#include "host/load/plugin.h"
#include "host/model/instruction_set.h"
#include "tools/describe/summary_json.h"
#include "tools/doctor/examination.h"
#include "tools/doctor/report_json.h"
#include "tools/verify/verify_document.h"
#include "tools/verify/verify_files.h"
#include "tools/verify/verify_json.h"

namespace svmscore::capi {
namespace {

using MCZandor_850::ScoreDictVar;

using VariablesByName = std::unordered_map<std::string, const ScoreDictVar*>;

VariablesByName InputsByName(const LoadedModel& loaded) {
  VariablesByName inputs;
  for (const auto* list : {&loaded.needed, &loaded.active, &loaded.output->ExtraInputs()}) {
    for (const ScoreDictVar* var : *list) inputs.emplace(var->GetName(), var);
  }
  return inputs;
}

// The cells of columns as texts. Those of columns that `inputs` does not name are left empty; null
// for all columns.
tools::TextTable TextsOf(const std::string& name, const std::vector<ColumnView>& columns,
                         std::size_t rows, const VariablesByName* inputs) {
  const MissingTexts none;
  tools::TextTable table;
  table.name = name;
  table.rows.assign(rows, std::vector<std::string>(columns.size()));
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const ColumnView& column = columns[c];
    table.header.push_back(column.name);
    const ScoreDictVar* var = nullptr;
    if (inputs != nullptr) {
      const auto found = inputs->find(column.name);
      if (found == inputs->end()) continue;
      var = found->second;
    }
    column.Check();
    const InputCell cell = var == nullptr ? InputCell(column) : InputCell(column, *var, none);
    for (std::size_t row = 0; row < rows; ++row) table.rows[row][c] = cell.TextAt(row);
  }
  return table;
}

constexpr double kUsualTolerance = 1e-6;

tools::CaseFiles FilesOf(const svmscore_expectation& given, const LoadedModel& loaded) {
  const VariablesByName inputs = InputsByName(loaded);
  tools::CaseFiles files;
  files.cases =
      TextsOf("the table of cases", ViewsOf(given.cases, given.case_column_count, given.row_count),
              given.row_count, &inputs);
  files.expected = TextsOf("the table of expected values",
                           ViewsOf(given.expected, given.expected_column_count, given.row_count),
                           given.row_count, nullptr);
  if (files.expected.header.empty()) {
    RefuseArgument("there is no column of expected values", "expectation.expected");
  }
  MissingTexts missing = ReadMissingTexts(given.missing_texts, given.missing_text_count);
  missing.emplace_back();  // none at all would be the program's own
  files.rules = tools::CellRules(std::move(missing));
  if (!(given.tolerance >= 0.0)) {
    RefuseArgument("the tolerance is no number from 0 upward", "expectation.tolerance");
  }
  files.tolerance = given.tolerance == 0.0 ? kUsualTolerance : given.tolerance;
  return files;
}

std::string Verify(const ModelState& state, const svmscore_expectation* expectation) {
  if (expectation == nullptr)
    return tools::JsonOf(tools::VerifyDocument(state.loaded), std::nullopt);
  const tools::CaseFiles files = FilesOf(Read(expectation, "expectation"), state.loaded);
  const tools::FilesReport report =
      tools::VerifyFiles(state.loaded, files.cases, files.expected, files.tolerance, files.rules);
  return tools::JsonOf(report.report, report.agreement);
}

std::string Examine(const LoadSettings& settings, tools::DocumentSource& source,
                    const svmscore_expectation* expectation) {
  RequireChosenIsa();
  const Plugin plugin(settings.plugin_path);
  const tools::OpenedDocument opened = tools::OpenDocument(plugin, source);
  if (!opened.IsRead()) return tools::ReportJson(source.Path(), {{*opened.refused}, {}});
  std::optional<tools::CaseFiles> files;
  if (expectation != nullptr && tools::IsScored(opened)) {
    files = FilesOf(Read(expectation, "expectation"), *opened.loaded);
  }
  return tools::ReportJson(source.Path(), tools::Examine(opened, plugin, source, files));
}

}  // namespace
}  // namespace svmscore::capi

using namespace svmscore::capi;

int svmscore_describe(const svmscore_model* model, char** json, size_t* length,
                      svmscore_error** error) {
  return Guarded(error, [&] {
    Require(model, "model");
    Require(json, "json");
    const DocumentLock lock(model->state->document_mutex);
    Give(svmscore::tools::JsonOf(svmscore::tools::Summarise(model->state->loaded)), json, length);
  });
}

int svmscore_verify(const svmscore_model* model, const svmscore_expectation* expectation,
                    char** json, size_t* length, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(model, "model");
    Require(json, "json");
    const DocumentLock lock(model->state->document_mutex);
    Give(Verify(*model->state, expectation), json, length);
  });
}

int svmscore_doctor_file(const char* path, size_t path_length, const svmscore_load_options* options,
                         const svmscore_expectation* expectation, char** json, size_t* length,
                         svmscore_error** error) {
  return Guarded(error, [&] {
    Require(json, "json");
    const LoadSettings settings = ReadSettings(options);
    svmscore::tools::DocumentSource source(ReadPath(path, path_length), settings.limits);
    Give(Examine(settings, source, expectation), json, length);
  });
}

int svmscore_doctor_memory(const void* data, size_t data_size, const svmscore_load_options* options,
                           const svmscore_expectation* expectation, char** json, size_t* length,
                           svmscore_error** error) {
  return Guarded(error, [&] {
    Require(json, "json");
    const std::string_view document = ReadData(data, data_size);
    const LoadSettings settings = ReadSettings(options);
    svmscore::tools::DocumentSource source(settings.name, std::string(document), settings.limits);
    Give(Examine(settings, source, expectation), json, length);
  });
}
