#include "app/verify/verify_command.h"

#include <utility>

#include <fmt/format.h>

#include "app/files/output_file.h"
#include "app/load/intake_report.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/table_option.h"
#include "app/options/tolerance_option.h"
#include "app/table/read_table.h"
#include "host/load/plugin.h"
#include "host/model/ss_exception.h"
#include "tools/verify/verify_block.h"
#include "tools/verify/verify_document.h"
#include "tools/verify/verify_files.h"

namespace svmscore::app {
namespace {

void Print(std::string_view text) {
  OutputFile output("-");
  output.Write(text);
}

// What the new document says of itself must hold before anybody relies on it.
void CheckWritten(const std::string& document, const std::string& name, const Limits& limits,
                  const std::string& plugin, bool as_is) {
  const LoadedModel written =
      LoadModel(Plugin(plugin), PmmlDocument::FromText(document, name, limits),
                as_is ? LoadChecks::kAsIs : LoadChecks::kRefuse);
  const tools::VerifyReport report = tools::VerifyDocument(written);
  if (report.Disagreements() > 0) {
    throw Failure(kOutputError,
                  fmt::format("{}: not written, for the new records are not confirmed:", name),
                  report.Text());
  }
}

// What is scored must be the document that is written anew, whoever changes the file meanwhile.
void KeepText(tools::DocumentSource& source) {
  try {
    source.Text();
  } catch (const MCZandor_850::SSException& error) {
    RefuseModel(source, error);
  }
}

}  // namespace

CLI::App* VerifyCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "verify", "Check a model against its own verification records, or against expected scores");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  AddFileOption(*app, "--input", input_, "CSV file with cases; - is standard input");
  AddFileOption(*app, "--expected", expected_, "CSV file with what the cases should score");
  AddToleranceOption(*app, tolerance_);
  AddFileOption(*app, "--write", write_,
                "write the document anew to this file, with verification records made from the "
                "cases of --input");
  AddTableOptions(*app, table_);
  AddReadingOptions(*app, reading_,
                    "refuse a model of whose document something is guessed, lost or wrong");
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  app->footer(
      "Exit status: 0 all agrees; 1 something disagrees; 2 usage; 3 the model cannot be "
      "used, or has\nno verification records; 5 the files cannot be read or do not fit; 6 "
      "the output cannot be written.");
  return app;
}

void VerifyCommand::CheckArguments() const {
  if (!expected_.empty() && !write_.empty()) {
    throw Failure(kUsageError, "--expected and --write exclude each other");
  }
  const bool cases = !expected_.empty() || !write_.empty();
  if (cases && input_.empty()) {
    throw Failure(kUsageError, "--expected and --write need the cases: name them with --input");
  }
  if (!cases && !input_.empty()) {
    throw Failure(kUsageError, "--input needs --expected or --write");
  }
  RefuseSharedInput(input_, expected_);
}

ExitStatus VerifyCommand::Run() {
  CheckArguments();
  const LoadChecks checks = ChecksOf(reading_);
  tools::DocumentSource source(model_, limits_);
  if (!write_.empty()) KeepText(source);
  const LoadedModel loaded = LoadModelFile(source, plugin_, checks);
  TellIntake(model_, loaded);
  TellOverruledValues(table_.Cells(), loaded);
  if (!write_.empty()) return WriteRecords(loaded, source.Text());
  tools::VerifyReport report;
  try {
    if (expected_.empty()) {
      report = tools::VerifyDocument(loaded, Print);
    } else {
      const tools::TextTable cases = ReadTable(input_, table_.Rows(limits_));
      tools::TextTable expected = ReadExpected(expected_, table_.Rows(limits_));
      if (table_.decimal_comma) tools::ReadDecimalCommas(loaded, expected);
      tools::FilesReport files =
          tools::VerifyFiles(loaded, cases, expected, tolerance_, table_.Cells());
      report = std::move(files.report);
      if (files.agreement) report.Add(files.agreement->Text());
      if (report.Compared() == 0) {
        throw Failure(kInputError,
                      fmt::format("{} expects nothing: every cell is empty", expected_));
      }
    }
  } catch (const MCZandor_850::SSException& error) {
    RefuseModel(model_, error);
  }
  Print(report.Text());
  return report.Disagreements() == 0 ? kDone : kDisagrees;
}

ExitStatus VerifyCommand::WriteRecords(const LoadedModel& loaded,
                                       const std::string& document) const {
  const tools::TextTable cases = ReadTable(input_, table_.Rows(limits_));
  if (cases.rows.empty()) throw Failure(kInputError, fmt::format("{} has no case", cases.name));
  const tools::BlockPlace place = tools::FindBlockPlace(document, model_);
  const std::string written = tools::PutBlock(
      document, place, tools::VerificationBlock(loaded, cases, table_.Cells(), place.prefix));
  try {
    CheckWritten(written, write_, limits_, plugin_, reading_.as_is);
  } catch (const MCZandor_850::SSException& error) {
    RefuseModel(write_, error);
  }
  OutputFile output(write_);
  output.Write(written);
  output.Commit();
  return kDone;
}

}  // namespace svmscore::app
