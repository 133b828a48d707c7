#include "app/report/report_command.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "app/base/messages.h"
#include "app/files/named_file.h"
#include "app/files/output_file.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/table_option.h"
#include "app/report/page.h"
#include "app/report/report_files.h"
#include "tools/calibrate/calibration_date.h"
#include "tools/doctor/examination.h"
#include "tools/doctor/opened_document.h"

namespace svmscore::app {
namespace {

// So many are looked at. An explanation draws fewer of them: more do not fit the time of a report.
constexpr std::size_t kBackgroundRows = 1000;

// None, so that the same input gives the same bytes, unless a reproducible build asks for one.
std::string DateOfPage() {
  if (std::getenv("SOURCE_DATE_EPOCH") == nullptr) return {};
  try {
    return tools::DateOfCalibration();
  } catch (const std::invalid_argument& error) {
    throw Failure(kUsageError, error.what());
  }
}

void TellUnscored(const tools::DrawnTable& background, const tools::ReportData& data) {
  if (!data.explanation || data.explanation->background_unscored == 0) return;
  Tell(fmt::format(
      "{}: {} of {} rows cannot be scored and are left out of the background; "
      "svmscore explain with the same --background says why",
      background.name, data.explanation->background_unscored, data.explanation->background_drawn));
}

}  // namespace

CLI::App* ReportCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "report", "Write one page of HTML about a model and how it scores cases");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  CLI::Option* input =
      AddFileOption(*app, "--input", input_, "CSV file with cases to score; - is standard input");
  app->add_option("--actual", actual_, "the column of the cases with what they really are")
      ->needs(input);
  AddFileOption(*app, "--background", background_,
                "CSV file with cases that an input which is absent takes its values of, in "
                "explanations; without it, the model's support vectors");
  AddFileOption(*app, "-o,--output", output_,
                "write the page to this file, which appears when it is complete; - is standard "
                "output")
      ->required();
  AddTableOptions(*app, table_);
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  app->footer(
      "Exit status: 0 done; 2 usage; 3 the file cannot be read or is no XML; 5 the cases cannot be "
      "read or do not\nfit; 6 the page cannot be written. docs/trust.md says what the pictures "
      "mean.");
  return app;
}

void ReportCommand::CheckFiles() const {
  const NamedFile output{output_, Stream::kOutput};
  for (const std::string* input : {&model_, &input_, &background_}) {
    if (input->empty() || !IsSameFile(output, {*input, Stream::kInput})) continue;
    throw Failure(
        kUsageError,
        fmt::format("the output is the file {}, which is read; name another file", *input));
  }
}

ExitStatus ReportCommand::Run() {
  CheckFiles();
  RefuseSharedInput(input_, background_, "--background");
  const std::string made_at = DateOfPage();
  const Plugin plugin = LoadPlugin(plugin_);
  // An output that cannot be written is told before the work.
  OutputFile output(output_);
  tools::DocumentSource source(model_, limits_);
  const tools::OpenedDocument opened = tools::OpenDocument(plugin, source);
  if (!opened.IsRead()) {
    throw Failure(kModelError, fmt::format("{}: {}", model_, opened.refused->detail));
  }
  const tools::CellRules rules = table_.Cells();
  std::optional<tools::DrawnTable> cases;
  if (!input_.empty() && tools::IsScored(opened)) {
    TellOverruledValues(rules, *opened.loaded);
    cases = DrawRows(input_, table_.Rows(limits_), tools::MostCases(*opened.loaded));
  }
  std::optional<tools::DrawnTable> background;
  if (!background_.empty() && tools::IsScored(opened)) {
    background = DrawRows(background_, table_.Rows(limits_), kBackgroundRows);
  }
  const tools::ReportData data = tools::GatherReport(
      {opened, plugin, source, FactsOf(model_, source), cases ? &*cases : nullptr, actual_,
       background ? &*background : nullptr, rules});
  if (background) TellUnscored(*background, data);
  output.Write(PageOf(data, made_at));
  output.Commit();
  return kDone;
}

}  // namespace svmscore::app
