#include "app/doctor/doctor_command.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/doctor/report_text.h"
#include "app/files/output_file.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/table_option.h"
#include "app/options/tolerance_option.h"
#include "app/table/read_table.h"
#include "tools/doctor/examination.h"
#include "tools/doctor/report_json.h"

namespace svmscore::app {

CLI::App* DoctorCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "doctor", "Read a model as a suspicious expert would, and tell what is wrong with it");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  CLI::Option* input =
      AddFileOption(*app, "--input", input_, "CSV file with cases; - is standard input");
  CLI::Option* expected =
      AddFileOption(*app, "--expected", expected_, "CSV file with what the cases should score");
  expected->needs(input);
  app->add_option("--actual", actual_,
                  "the column of --input with what the cases really are: probabilities and "
                  "intervals are compared with it")
      ->needs(input);
  AddToleranceOption(*app, tolerance_);
  AddTableOptions(*app, table_);
  app->add_flag("--json", json_, "write JSON");
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  app->footer(
      "Exit status: 0 no finding changes scores; 1 some finding does; 2 usage; 3 the file cannot "
      "be "
      "read or is\nno XML; 5 the cases or expected scores cannot be read or do not fit. "
      "docs/findings has a page of each finding.");
  return app;
}

ExitStatus DoctorCommand::Run() {
  if (!input_.empty() && expected_.empty() && actual_.empty()) {
    throw Failure(kUsageError,
                  "--input needs --expected, with what the cases should score, or "
                  "--actual, the column with what they really are");
  }
  if (!expected_.empty()) RefuseSharedInput(input_, expected_);
  const Plugin plugin = LoadPlugin(plugin_);
  tools::DocumentSource source(model_, limits_);
  const tools::OpenedDocument opened = tools::OpenDocument(plugin, source);
  if (!opened.IsRead()) {
    if (json_) OutputFile("-").Write(tools::ReportJson(model_, {{*opened.refused}, {}}));
    throw Failure(kModelError, fmt::format("{}: {}", model_, opened.refused->detail));
  }
  std::optional<tools::CaseFiles> files;
  std::optional<tools::LabelledCases> labelled;
  const tools::CellRules rules = table_.Cells();
  tools::TextTable cases;
  const tools::TextTable* rows = &cases;
  if (!input_.empty() && tools::IsScored(opened)) {
    TellOverruledValues(rules, *opened.loaded);
    cases = ReadTable(input_, table_.Rows(limits_));
    if (!expected_.empty()) {
      files.emplace(tools::CaseFiles{
          std::move(cases), ReadExpected(expected_, table_.Rows(limits_)), rules, tolerance_});
      if (table_.decimal_comma) tools::ReadDecimalCommas(*opened.loaded, files->expected);
      rows = &files->cases;
    }
    if (!actual_.empty()) labelled.emplace(tools::LabelledCases{*rows, actual_, rules});
  }
  const tools::Examination examined =
      tools::Examine(opened, plugin, source, files, labelled ? &*labelled : nullptr);
  OutputFile output("-");
  output.Write(json_ ? tools::ReportJson(model_, examined) : ReportText(model_, examined));
  const bool changes = std::any_of(examined.findings.begin(), examined.findings.end(),
                                   [](const Finding& finding) { return finding.IsError(); });
  return changes ? kDisagrees : kDone;
}

}  // namespace svmscore::app
