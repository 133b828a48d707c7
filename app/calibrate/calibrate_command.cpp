#include "app/calibrate/calibrate_command.h"

#include <optional>
#include <stdexcept>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/calibrate/calibration_text.h"
#include "app/files/named_file.h"
#include "app/files/output_file.h"
#include "app/load/intake_report.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/table_option.h"
#include "app/table/read_table.h"
#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "tools/calibrate/calibration.h"
#include "tools/calibrate/calibration_date.h"
#include "tools/calibrate/calibration_json.h"

namespace svmscore::app {

CLI::App* CalibrateCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "calibrate", "Give a model probabilities, or intervals, from cases whose outcome is known");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  AddFileOption(*app, "HOLDOUT", holdout_,
                "CSV file with cases that the model was not trained on; - is standard input")
      ->required();
  app->add_option("--actual", actual_, "the column of HOLDOUT with what the cases really are")
      ->required();
  AddFileOption(*app, "-o,--output", output_,
                "write the calibrated document to this file, which appears when it is complete; "
                "without it there is only the report");
  // The option library's own numbers are read by the process's locale.
  const auto set_confidence = [this](const std::string& text) {
    const std::optional<double> number = ParseNumber(text);
    if (!number || !(*number > 0.0 && *number < 1.0)) {
      throw CLI::ValidationError("--confidence", text + " is not above 0 and below 1, as 0.95 is");
    }
    confidence_ = *number;
    confidence_given_ = true;
  };
  app->add_option_function<std::string>(
         "--confidence", set_confidence,
         "of a regression: the share of cases that intervals should cover")
      ->type_name("FLOAT")
      ->default_str(FormatNumber(confidence_));
  app->add_flag("--json", json_, "write the report as JSON");
  AddTableOptions(*app, table_);
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  app->footer(
      "Exit status: 0 done; 2 usage; 3 the model cannot be used or calibrated; 5 the hold-out "
      "cannot be read or does\nnot do; 6 the output cannot be written. docs/trust.md says what the "
      "figures mean.");
  return app;
}

void CalibrateCommand::CheckFiles() const {
  if (output_.empty()) return;
  if (output_ == "-") {
    throw Failure(kUsageError, "the report is on standard output; name a file for the document");
  }
  const NamedFile output{output_, Stream::kOutput};
  for (const std::string* input : {&model_, &holdout_}) {
    if (!IsSameFile(output, {*input, Stream::kInput})) continue;
    throw Failure(
        kUsageError,
        fmt::format("the output is the file {}, which is read; name another file", *input));
  }
}

ExitStatus CalibrateCommand::Run() {
  CheckFiles();
  std::string made_at;
  try {
    made_at = tools::DateOfCalibration();
  } catch (const std::invalid_argument& error) {
    throw Failure(kUsageError, error.what());
  }
  const Plugin plugin = LoadPlugin(plugin_);
  // An output that cannot be written is told before the work.
  std::optional<OutputFile> output;
  if (!output_.empty()) output.emplace(output_);
  tools::DocumentSource source(model_, limits_);
  std::optional<tools::CalibrationResult> result;
  try {
    // What is scored must be the document that is written, whoever changes the file meanwhile.
    const std::string& document = source.Text();
    const LoadedModel loaded = LoadModelFile(source, plugin_, LoadChecks::kRefuse);
    TellIntake(model_, loaded);
    const tools::CellRules rules = table_.Cells();
    TellOverruledValues(rules, loaded);
    const tools::TextTable holdout = ReadTable(holdout_, table_.Rows(limits_));
    result = tools::Calibrate(
        {loaded, plugin, document, model_, limits_, holdout, actual_, rules, confidence_, made_at});
  } catch (const MCZandor_850::SSException& error) {
    RefuseModel(source, error);
  }
  if (confidence_given_ && result->classification) {
    result->remarks.push_back(
        "--confidence has no effect: it is of intervals, and a classification has none");
  }
  if (output) {
    output->Write(result->document);
    output->Commit();
  }
  OutputFile report("-");
  report.Write(json_ ? tools::JsonOf(*result) : CalibrationText(*result, output_));
  return kDone;
}

}  // namespace svmscore::app
