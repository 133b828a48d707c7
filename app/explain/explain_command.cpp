#include "app/explain/explain_command.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <unordered_set>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <oneapi/tbb/info.h>

#include "app/base/messages.h"
#include "app/explain/background_file.h"
#include "app/explain/explanation_rows.h"
#include "app/files/ending_signals.h"
#include "app/files/input_file.h"
#include "app/files/named_file.h"
#include "app/files/output_file.h"
#include "app/load/intake_report.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "app/options/run_option.h"
#include "app/options/table_option.h"
#include "app/pipeline/pipeline.h"
#include "host/model/score_model.h"
#include "host/text/number_text.h"
#include "tools/describe/machine_sides.h"
#include "tools/describe/model_summary.h"

namespace svmscore::app {
namespace {

using MCZandor_850::ScoreModel;

// A block keeps a thread busy for about so long: threads end together, and progress shows, also
// where a case takes long itself.
constexpr std::chrono::microseconds kBlockTime(500);
// Small blocks are cut off a short text.
constexpr std::size_t kReadBytes = 4096;

constexpr std::uint64_t kMostRows = 100'000'000;
constexpr std::uint64_t kMostOrders = 1'000'000'000;

// Adds an option for a whole number, at least `least` and at most `most`.
CLI::Option* AddNumber(CLI::App& app, const char* name, std::uint64_t& number, std::uint64_t least,
                       std::uint64_t most, const std::string& help) {
  const auto set = [name, &number, least, most](const std::string& text) {
    const std::optional<std::int64_t> parsed = ParseInteger(text);
    if (!parsed || *parsed < 0 || static_cast<std::uint64_t>(*parsed) < least ||
        static_cast<std::uint64_t>(*parsed) > most) {
      throw CLI::ValidationError(
          name, fmt::format("\"{}\" is not a whole number from {} to {}", text, least, most));
    }
    number = static_cast<std::uint64_t>(*parsed);
  };
  return app.add_option_function<std::string>(name, set, help)->type_name("N");
}

// Two columns of one name: an object of JSON cannot hold both, nor can many a reader of CSV.
void MakeDistinct(std::vector<std::string>& names) {
  std::unordered_set<std::string> known(names.begin(), names.end());
  std::unordered_set<std::string> met;
  for (std::string& name : names) {
    if (met.insert(name).second) continue;
    std::string distinct;
    for (int number = 2; distinct.empty() || !known.insert(distinct).second; ++number) {
      distinct = fmt::format("{}#{}", name, number);
    }
    Tell(fmt::format("the output would have two columns \"{}\"; the later one is \"{}\"", name,
                     distinct));
    name = std::move(distinct);
  }
}

// Which side of its threshold speaks for which category, of the first machines.
void TellSides(const LoadedModel& loaded, const tools::ModelExplainer& model) {
  constexpr std::size_t kMostTold = 5;
  const tools::ModelSummary summary = tools::Summarise(loaded);
  const auto category = [&summary](int position) {
    return position < 0 ? "the other category"
                        : summary.categories.at(static_cast<std::size_t>(position));
  };
  const std::size_t count = model.Decisions().size();
  for (std::size_t m = 0; m < std::min(count, kMostTold); ++m) {
    const tools::MachineSides sides =
        tools::SidesOf(summary, model.Batch().DecisionCategories(m), m);
    if (sides.above < 0 && sides.below < 0) return;
    if (std::isnan(sides.threshold)) {
      Tell(fmt::format("{}: the {} a value, the more it speaks for {}", model.Decisions()[m],
                       sides.above < 0 ? "smaller" : "larger",
                       category(sides.above < 0 ? sides.below : sides.above)));
    } else {
      Tell(fmt::format("{}: above the threshold {} speaks for {}, below it for {}",
                       model.Decisions()[m], FormatNumber(sides.threshold), category(sides.above),
                       category(sides.below)));
    }
  }
  if (count > kMostTold) Tell(fmt::format("and {} more machines", count - kMostTold));
}

void TellCheck(const Tally& tally, double imbalance) {
  if (tally.done == 0) return;
  Tell(
      fmt::format("check: values add up to the decision less the base within {:.2g} of the sum of "
                  "coefficients",
                  imbalance));
  // Rounding grows with kernel values.
  constexpr double kExpected = 1e-10;
  if (!(imbalance <= kExpected)) {
    Tell(
        "check: this is more than rounding explains unless kernel values are far larger than 1; "
        "scale the inputs, or do not rely on these values");
  }
}

}  // namespace

CLI::App* ExplainCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "explain", "Say what each input contributes to the decision values of cases");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  AddFileOption(*app, "CASES", cases_, "CSV file with a header; - is standard input")
      ->capture_default_str();
  AddFileOption(*app, "--background", background_,
                "CSV file with cases whose values an absent input takes; default: the model's "
                "support vectors");
  AddNumber(*app, "--rows", rows_, 1, kMostRows,
            "draw so many cases of the background, and use no others");
  AddNumber(*app, "--seed", seed_, 1, std::numeric_limits<std::int64_t>::max(),
            "where the draws begin, of the background and of sampled values")
      ->default_str("1");
  AddNumber(*app, "--orders", orders_, 1, kMostOrders,
            "where values are sampled: orders of the inputs that are drawn for each case of the "
            "background");
  AddFileOption(*app, "-o,--output", output_,
                "write to this file, which appears when it is complete; - is standard output");
  AddFormatOption(*app, format_);
  app->add_flag("--gradients", gradients_,
                "add the derivative of the decision value by each vector field: gradient(FIELD)");
  AddTableOptions(*app, table_);
  AddPolicyOption(*app, policy_);
  app->add_flag("--strict", strict_,
                "exit with status 4 if any case failed, and not only if none could be explained");
  AddReadingOptions(*app, reading_,
                    "refuse a model of whose document something is guessed, lost or wrong");
  AddThreadsOption(*app, threads_);
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  app->footer("docs/trust.md says what the values mean.");
  return app;
}

void ExplainCommand::CheckFiles() const {
  if (cases_ == "-" && background_ == "-") {
    throw Failure(kUsageError, "only one of CASES and --background can be standard input");
  }
  const NamedFile output{output_, Stream::kOutput};
  for (const std::string* input : {&model_, &cases_, &background_}) {
    if (input->empty() || (input == &cases_ && !IsWrittenInPlace(output_))) continue;
    const Stream stream = input == &model_ ? Stream::kNeither : Stream::kInput;
    if (!IsSameFile(output, {*input, stream})) continue;
    throw Failure(
        kUsageError,
        fmt::format("the output is the file {}, which is read; name another file", *input));
  }
}

tools::Background ExplainCommand::MakeBackground(const LoadedModel& loaded,
                                                 const tools::Explainable& explainable) const {
  tools::Background background;
  const bool own = background_.empty();
  if (own) {
    const std::string why = tools::WhyNoVectorBackground(explainable.model, explainable.players);
    if (!why.empty()) {
      throw Failure(kUsageError,
                    fmt::format("{}: the model does not say what cases are like: {}; name a table "
                                "of some with --background",
                                model_, why));
    }
    background = tools::VectorBackground(explainable.batch, explainable.model, rows_, seed_);
    if (background.left_out > 0) {
      Tell(
          fmt::format("background: {} support vector{} of the model without a finite decision "
                      "value {} left out",
                      background.left_out, background.left_out == 1 ? "" : "s",
                      background.left_out == 1 ? "is" : "are"));
    }
    if (background.count == 0) {
      throw Failure(kUsageError, fmt::format("{}: no support vector has a finite decision value; "
                                             "name a table of cases with --background",
                                             model_));
    }
  } else {
    background = ReadBackground(background_, loaded, explainable.batch,
                                {table_.Rows(limits_), table_.Cells(), rows_, seed_});
  }
  const std::string what =
      fmt::format("{}{}{}", own ? "support vector" : "row", background.rows_seen == 1 ? "" : "s",
                  own ? " of the model" : "");
  if (background.count < background.rows_seen) {
    Tell(fmt::format("background: {} of {} {}, drawn with seed {}", background.count,
                     background.rows_seen, what, seed_));
  } else {
    Tell(fmt::format("background: {} {}", background.count, what));
  }
  if (background.count > tools::kManyRows && rows_ == 0) {
    Tell(
        fmt::format("a case may take time in proportion to them; --rows {} draws so many, which "
                    "is mostly enough",
                    tools::kManyRows / 10));
  }
  return background;
}

ExitStatus ExplainCommand::Run() {
  const LoadChecks checks = ChecksOf(reading_);
  CheckFiles();
  tools::DocumentSource source(model_, limits_);
  const LoadedModel loaded = LoadModelFile(source, plugin_, checks);
  TellIntake(model_, loaded);
  UsePolicy(*loaded.model, policy_);
  ExplanationPlan plan;
  plan.cells = table_.Cells();
  TellOverruledValues(plan.cells, loaded);

  tools::Explainable explainable = tools::ExplainableOf(loaded);
  const tools::Background background = MakeBackground(loaded, explainable);
  const tools::ModelExplainer model(loaded, std::move(explainable), background, seed_, orders_);
  TellSides(loaded, model);
  plan.model = &model;
  plan.gradients = gradients_;
  plan.replace_missing = loaded.model->GetMissingValuePolicy() == ScoreModel::kReplaceMissing;
  const bool json = format_ == "jsonl";
  std::vector<std::string> names = ExplanationColumns(model, gradients_);
  MakeDistinct(names);
  plan.format = json ? JsonLinesFormat(names) : CsvFormat(std::move(names));

  InputFile file(cases_);
  plan.rows = table_.Rows(limits_);
  RowBlocks input(file, plan.rows, kReadBytes);
  RowBlock header;
  plan.columns = tools::MatchColumns(ReadColumnNames(input, plan.rows, file.Name(), header), loaded,
                                     {}, file.Name());
  plan.examiner = std::make_unique<reasons::CaseExaminer>(loaded, plan.columns.variables);
  input.BeginWithRows();

  HandleEndingSignals();
  NoteCasesWritten(0);
  OutputFile output(output_);
  Progress progress(input.Size(), "explained");
  std::string first;
  plan.format->Header(first);
  output.Write(first);
  const int threads = threads_ > 0 ? threads_ : oneapi::tbb::info::default_concurrency();
  std::atomic<double> imbalance{0.0};
  const Tally tally = RunBlocks([&] { return std::make_unique<ExplanationRows>(plan, imbalance); },
                                {input, file.Name(), output, progress},
                                {threads, false, plan.columns.width, kBlockTime});
  TellCheck(tally, imbalance);
  progress.Close(tally);
  const bool failed = strict_ ? tally.done < tally.cases : tally.done == 0 && tally.cases > 0;
  return failed ? kSomeCaseFailed : kDone;
}

}  // namespace svmscore::app
