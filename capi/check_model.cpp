// Describing, verifying and examining a model, as JSON.
#include <cstddef>
#include <optional>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/document_lock.h"
#include "capi/given_text.h"
#include "capi/model_state.h"
#include "capi/text_columns.h"
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

svmscore_expectation ReadExpectation(const svmscore_expectation* given) {
  return Read(given, "expectation", offsetof(svmscore_expectation, actual));
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
  files.rules = RulesOf(given.missing_texts, given.missing_text_count);
  if (!(given.tolerance >= 0.0)) {
    RefuseArgument("the tolerance is no number from 0 upward", "expectation.tolerance");
  }
  files.tolerance = given.tolerance == 0.0 ? kUsualTolerance : given.tolerance;
  return files;
}

std::string Verify(const ModelState& state, const svmscore_expectation* expectation) {
  if (expectation == nullptr)
    return tools::JsonOf(tools::VerifyDocument(state.loaded), std::nullopt);
  const tools::CaseFiles files = FilesOf(ReadExpectation(expectation), state.loaded);
  const tools::FilesReport report =
      tools::VerifyFiles(state.loaded, files.cases, files.expected, files.tolerance, files.rules);
  return tools::JsonOf(report.report, report.agreement);
}

struct LabelledTable {
  LabelledTable(const svmscore_expectation& given, const LoadedModel& loaded)
      : rules(RulesOf(given.missing_texts, given.missing_text_count)) {
    const VariablesByName inputs = InputsByName(loaded);
    table = TextsOf("the table of cases",
                    ViewsOf(given.cases, given.case_column_count, given.row_count), given.row_count,
                    &inputs);
    cases.actual = AddLabels(ViewsOf(given.actual, 1, given.row_count).front(), table);
  }
  LabelledTable(const LabelledTable&) = delete;
  LabelledTable& operator=(const LabelledTable&) = delete;

  tools::CellRules rules;
  tools::TextTable table;
  tools::LabelledCases cases{table, {}, rules};
};

std::string Examine(const LoadSettings& settings, tools::DocumentSource& source,
                    const svmscore_expectation* expectation) {
  RequireChosenIsa();
  const Plugin plugin(settings.plugin_path);
  const tools::OpenedDocument opened = tools::OpenDocument(plugin, source);
  if (!opened.IsRead()) return tools::ReportJson(source.Path(), {{*opened.refused}, {}});
  std::optional<tools::CaseFiles> files;
  std::optional<LabelledTable> labelled;
  if (expectation != nullptr && tools::IsScored(opened)) {
    const svmscore_expectation given = ReadExpectation(expectation);
    if (given.actual != nullptr) labelled.emplace(given, *opened.loaded);
    if (given.actual == nullptr || given.expected_column_count > 0) {
      files = FilesOf(given, *opened.loaded);
    }
  }
  const tools::Examination examination =
      tools::Examine(opened, plugin, source, files, labelled ? &labelled->cases : nullptr);
  return tools::ReportJson(source.Path(), examination);
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
