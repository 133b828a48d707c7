// Calibrating a model by cases whose outcome is known.
#include <stdexcept>
#include <string>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "capi/given_text.h"
#include "capi/model_state.h"
#include "capi/text_columns.h"
#include "host/load/plugin.h"
#include "host/model/instruction_set.h"
#include "tools/base/document_source.h"
#include "tools/calibrate/calibration.h"
#include "tools/calibrate/calibration_date.h"
#include "tools/calibrate/calibration_json.h"

namespace svmscore::capi {
namespace {

constexpr double kUsualConfidence = 0.95;

std::string DateOfRun() {
  try {
    return tools::DateOfCalibration();
  } catch (const std::invalid_argument& error) {
    throw Refusal(SVMSCORE_SYSTEM, error.what(), "SOURCE_DATE_EPOCH", {});
  }
}

tools::CalibrationResult Calibrate(const LoadSettings& settings, tools::DocumentSource& source,
                                   const svmscore_holdout& given) {
  Require(given.actual, "holdout.actual");
  const double confidence = given.confidence == 0.0 ? kUsualConfidence : given.confidence;
  if (!(confidence > 0.0 && confidence < 1.0)) {
    RefuseArgument("the confidence is not above 0 and below 1, as 0.95 is", "holdout.confidence");
  }
  RequireChosenIsa();
  const std::string made_at = DateOfRun();
  const Plugin plugin(settings.plugin_path);
  const std::string& document = source.Text();
  const LoadedModel loaded =
      LoadModel(plugin, [&source] { return source.Parse(Arrays::kAsNumbers); });
  const VariablesByName inputs = InputsByName(loaded);
  tools::TextTable table =
      TextsOf("the table of cases", ViewsOf(given.cases, given.case_column_count, given.row_count),
              given.row_count, &inputs);
  const std::string labels = AddLabels(ViewsOf(given.actual, 1, given.row_count).front(), table);
  const tools::CellRules rules = RulesOf(given.missing_texts, given.missing_text_count);
  return tools::Calibrate({loaded, plugin, document, source.Path(), settings.limits, table, labels,
                           rules, confidence, made_at});
}

void GiveBoth(const tools::CalibrationResult& result, char** document, size_t* document_length,
              char** report, size_t* report_length) {
  char* text = nullptr;
  std::size_t length = 0;
  if (report != nullptr) Give(tools::JsonOf(result), &text, &length);
  try {
    Give(result.document, document, document_length);
  } catch (...) {
    delete[] text;
    throw;
  }
  if (report != nullptr) *report = text;
  if (report != nullptr && report_length != nullptr) *report_length = length;
}

}  // namespace
}  // namespace svmscore::capi

using namespace svmscore::capi;

int svmscore_calibrate_file(const char* path, size_t path_length,
                            const svmscore_load_options* options, const svmscore_holdout* holdout,
                            char** document, size_t* document_length, char** report,
                            size_t* report_length, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(holdout, "holdout");
    Require(document, "document");
    const LoadSettings settings = ReadSettings(options);
    svmscore::tools::DocumentSource source(ReadPath(path, path_length), settings.limits);
    GiveBoth(Calibrate(settings, source, Read(holdout, "holdout")), document, document_length,
             report, report_length);
  });
}

int svmscore_calibrate_memory(const void* data, size_t data_size,
                              const svmscore_load_options* options, const svmscore_holdout* holdout,
                              char** document, size_t* document_length, char** report,
                              size_t* report_length, svmscore_error** error) {
  return Guarded(error, [&] {
    Require(holdout, "holdout");
    Require(document, "document");
    const std::string_view bytes = ReadData(data, data_size);
    const LoadSettings settings = ReadSettings(options);
    svmscore::tools::DocumentSource source(settings.name, std::string(bytes), settings.limits);
    GiveBoth(Calibrate(settings, source, Read(holdout, "holdout")), document, document_length,
             report, report_length);
  });
}
