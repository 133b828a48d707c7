#include "app/score/score_command.h"

#include <algorithm>
#include <cerrno>
#include <numeric>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>
#include <oneapi/tbb/info.h>

#include "app/base/messages.h"
#include "app/files/ending_signals.h"
#include "app/files/input_file.h"
#include "app/files/named_file.h"
#include "app/files/output_file.h"
#include "app/load/intake_report.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/name_list.h"
#include "app/options/run_option.h"
#include "app/options/table_option.h"
#include "app/pipeline/pipeline.h"
#include "app/pipeline/progress.h"
#include "app/pipeline/row_format.h"
#include "app/score/case_scorer.h"
#include "app/table/row_blocks.h"
#include "host/model/batch_model.h"
#include "host/model/scoring_log.h"
#include "tools/base/case_columns.h"
#include "tools/base/error_text.h"
#include "tools/score/result_columns.h"

namespace svmscore::app {
namespace {

using MCZandor_850::ScoreModel;
using MCZandor_850::ScoringLog;
using tools::ColumnChoice;

constexpr const char* kAllColumns = "*";

ColumnChoice ChoiceOf(const std::string& columns) {
  if (columns == "auto") return ColumnChoice::kDocument;
  return columns == "raw" ? ColumnChoice::kComputed : ColumnChoice::kAll;
}

// The columns that --passthrough names.
std::vector<std::string> CopiedIn(const std::vector<std::string>& lists) {
  std::vector<std::string> names = NamesIn(lists, "--passthrough");
  if (names.size() > 1 && std::count(names.begin(), names.end(), kAllColumns) > 0) {
    throw Failure(kUsageError,
                  "--passthrough: * means all columns of the input, so that no other name can be "
                  "given beside it");
  }
  return names;
}

Failure LogFailure(const std::string& path, int error) {
  return {kOutputError, fmt::format("cannot write the log {}: {}", path, tools::ErrorText(error))};
}

void StartLog(const std::string& path) {
  if (path.empty()) return;
  ScoringLog& log = ScoringLog::GetInstance();
  if (!log.SetFile(path)) throw LogFailure(path, errno);
  log.SetLevel(std::max(1, log.GetLevel()));
}

Failure NotPlain(const std::string& name) {
  return {kUsageError, fmt::format("--part: {} is not a plain file, and no other can be cut into "
                                   "parts; save the cases to a file that is not compressed",
                                   name)};
}

// The scores are as good as ever without the log, so that ends no run before its time.
void CheckLog(const std::string& path) {
  const int error = ScoringLog::GetInstance().WriteError();
  if (!path.empty() && error != 0) throw LogFailure(path, error);
}

// How votes were decided, on standard error and in the log, where estimates decided some.
void TellVotes(const ScoreModel& model) {
  const auto* batch = dynamic_cast<const BatchModel*>(&model);
  if (batch == nullptr) return;
  const VoteLevels votes = batch->Votes();
  const std::uint64_t all = votes.by_single + votes.by_double + votes.by_exact;
  if (votes.why_exact != nullptr || all == 0) return;
  std::string shares;
  const auto add = [&](std::uint64_t cases, const char* how) {
    if (cases == 0) return;
    const double share = 100.0 * static_cast<double>(cases) / static_cast<double>(all);
    shares += fmt::format("{}{:.2f} % {}", shares.empty() ? "" : ", ", share, how);
  };
  add(votes.by_single, "in single precision");
  add(votes.by_double, "in double precision");
  add(votes.by_exact, "by exact decision values");
  const std::string text = fmt::format("votes decided: {}", shares);
  Tell(text);
  ScoringLog::GetInstance().TraceText(1, "%s", text.c_str());
}

// `copied` become the names of the columns to copy, where they are not named but all.
tools::CaseColumns ReadColumns(RowBlocks& input, const RowForm& form, const LoadedModel& loaded,
                               std::vector<std::string>& copied, const std::string& input_name) {
  RowBlock header;
  const std::vector<std::string_view> names = ReadColumnNames(input, form, input_name, header);
  if (copied != std::vector<std::string>{kAllColumns}) {
    return tools::MatchColumns(names, loaded, copied, input_name);
  }
  tools::CaseColumns columns = tools::MatchColumns(names, loaded, {}, input_name);
  columns.copied.resize(names.size());
  std::iota(columns.copied.begin(), columns.copied.end(), std::size_t{0});
  copied.assign(names.begin(), names.end());
  return columns;
}

// The names of the output's columns: those copied from the input, then those of the results. In
// JSON a name must not be given twice; in CSV a second one is told. `names_of_document`: the
// results have the names of output fields.
std::vector<std::string> NamesOf(const std::vector<std::string>& copied,
                                 const tools::ResultColumns& results, bool json,
                                 bool names_of_document) {
  std::vector<std::string> names = copied;
  for (const auto& column : results) names.push_back(column->Name());
  std::unordered_map<std::string_view, std::size_t> positions;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string& name = names[i];
    const auto [first, is_new] = positions.emplace(name, i);
    if (!is_new) {
      const bool passed = first->second < copied.size();
      const std::string text = fmt::format(
          "the output {} two columns \"{}\": {}", json ? "would have" : "has", name,
          passed ? "name it once in --passthrough, and not at all where the input has two of that "
                   "name or the output has one of its own"
          : names_of_document
              ? "the document declares an output field of the name of a column that is always "
                "added, or two of one name; rename the field, or choose --columns raw"
              : "two machines decide between the same categories; leave --decisions out");
      if (json) throw Failure(kUsageError, text);
      Tell(text);
    }
  }
  return names;
}

}  // namespace

CLI::App* ScoreCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand("score", "Score the cases of a CSV file with a model");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  AddFileOption(*app, "CASES", cases_, "CSV file with a header; - is standard input")
      ->capture_default_str();
  AddFileOption(*app, "-o,--output", output_,
                "write to this file, which appears when it is complete; - is standard output");
  AddFormatOption(*app, format_);
  app->add_option(
         "--columns", columns_,
         "auto: the document's output fields, or else what the model computes; raw: what the "
         "model computes, under plain names; all: every column, under plain names")
      ->check(CLI::IsMember({"auto", "all", "raw"}))
      ->capture_default_str();
  app->add_option("--passthrough", passthrough_,
                  "names of input columns, separated by commas, to copy to the front; '*' for all")
      ->allow_extra_args(false);
  AddTableOptions(*app, table_);
  AddPolicyOption(*app, policy_);
  app->add_flag("--no-header", no_header_, "write no header line; the input has one all the same");
  app->add_option_function<std::string>(
         "--part", [this](const std::string& text) { SetPart(text); },
         "score the I-th of N parts of a plain file: the outputs of all parts, one after the "
         "other, are the output of one run")
      ->type_name("I/N");
  app->add_flag("--prediction-only", prediction_only_,
                "compute no confidence, probabilities or interval");
  app->add_flag("--decisions", decisions_,
                "add each machine's decision value: decision(TARGET|ALTERNATE), decision for a "
                "regression");
  app->add_flag("--reasons", reasons_,
                "add a last column, reason: why a case failed; empty for one that is scored");
  app->add_flag("--strict", strict_,
                "exit with status 4 if any case failed, and not only if none could be scored");
  AddReadingOptions(*app, reading_,
                    "refuse a model of whose document something is guessed, lost or wrong");
  AddThreadsOption(*app, threads_);
  AddFileOption(*app, "--log", log_, "append a trace to this file, with the row of every failure");
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  return app;
}

void ScoreCommand::SetPart(const std::string& text) {
  part_ = FilePartIn(text);
  if (part_) return;
  throw CLI::ValidationError(
      "--part", fmt::format("\"{}\" is no part; write I/N, as 2/8 for the second of 8 parts: whole "
                            "numbers from 1, I at most N, N at most {}",
                            text, FilePart::kMost));
}

// Nothing is opened for writing that would be lost by it.
void ScoreCommand::CheckFiles() const {
  if (part_ && cases_ == "-") throw NotPlain("standard input");
  const auto refuse = [](const std::string& what) {
    throw Failure(kUsageError, what + "; name another file");
  };
  const NamedFile model{model_, Stream::kNeither};
  const NamedFile cases{cases_, Stream::kInput};
  const NamedFile output{output_, Stream::kOutput};
  if (IsSameFile(output, model)) {
    refuse(fmt::format("the output is the model, {}, and would take its place", model_));
  }
  if (IsWrittenInPlace(output_) && IsSameFile(output, cases)) {
    refuse("the output is the file of the cases, which would be read and written at once");
  }
  if (log_.empty()) return;
  const NamedFile log{log_, Stream::kNeither};
  if (IsSameFile(log, model)) {
    refuse(fmt::format("--log names the model, {}, and would be appended to it", model_));
  }
  if (IsSameFile(log, cases)) {
    refuse(fmt::format("--log names the file of the cases, {}, which would never end", log_));
  }
  if (IsSameFile(log, output)) {
    refuse(fmt::format("--log names the output, {}, and one would overwrite the other", log_));
  }
}

ExitStatus ScoreCommand::Run() {
  const LoadChecks checks = ChecksOf(reading_);
  CheckFiles();
  StartLog(log_);
  std::vector<std::string> copied = CopiedIn(passthrough_);
  tools::DocumentSource source(model_, limits_);
  const LoadedModel loaded = LoadModelFile(source, plugin_, checks);
  TellIntake(model_, loaded);
  ScoreModel& model = *loaded.model;
  model.SetPredictionOnly(prediction_only_);
  UsePolicy(model, policy_);

  InputFile file(cases_);
  if (part_ && !file.IsPlainFile()) throw NotPlain(cases_);
  const RowForm rows = table_.Rows(limits_);
  RowBlocks input(file, rows);
  ScoringPlan plan;
  plan.model = &model;
  plan.rows = rows;
  plan.columns = ReadColumns(input, rows, loaded, copied, file.Name());
  plan.cells = table_.Cells();
  TellOverruledValues(plan.cells, loaded);
  plan.replace_missing = model.GetMissingValuePolicy() == ScoreModel::kReplaceMissing;
  const ColumnChoice choice = ChoiceOf(columns_);
  plan.output = loaded.output.get();
  plan.computes_output = choice == ColumnChoice::kDocument && !loaded.output->Fields().empty();
  if (decisions_ && dynamic_cast<BatchModel*>(&model) == nullptr) {
    throw Failure(kUsageError, "--decisions: the plug-in's model does not give decision values");
  }
  plan.results = tools::MakeColumns(model, *loaded.output, choice, decisions_, reasons_);
  plan.examiner = std::make_unique<reasons::CaseExaminer>(loaded, plan.columns.variables);
  plan.logs_failures = ScoringLog::GetInstance().GetLevel() > 0;
  plan.writes_reasons = reasons_;
  plan.writes_decisions = decisions_;
  const bool json = format_ == "jsonl";
  std::vector<std::string> names = NamesOf(copied, plan.results, json, plan.computes_output);
  plan.format = json ? JsonLinesFormat(names) : CsvFormat(std::move(names));

  if (part_) input.Take(*part_, plan.columns.width);
  HandleEndingSignals();
  NoteCasesWritten(0);
  OutputFile output(output_);
  Progress progress(input.Size(), "scored");
  std::string header;
  if (!no_header_ && (!part_ || part_->IsFirst())) plan.format->Header(header);
  output.Write(header);
  const int threads = threads_ > 0 ? threads_ : oneapi::tbb::info::default_concurrency();
  const Tally tally =
      RunBlocks([&plan] { return std::make_unique<CaseScorer>(plan); },
                {input, file.Name(), output, progress}, {threads, plan.logs_failures});
  progress.Close(tally);
  TellVotes(model);
  CheckLog(log_);
  const bool failed = strict_ ? tally.done < tally.cases : tally.done == 0 && tally.cases > 0;
  return failed ? kSomeCaseFailed : kDone;
}

}  // namespace svmscore::app
