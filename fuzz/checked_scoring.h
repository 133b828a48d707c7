// Scoring with checks, shared by the fuzzers of documents and of tables.
#ifndef FUZZ_CHECKED_SCORING_H_
#define FUZZ_CHECKED_SCORING_H_

#include <string>
#include <string_view>
#include <vector>

#include "app/score/case_scorer.h"
#include "fuzz/choices.h"
#include "host/load/loader.h"
#include "host/load/plugin.h"

namespace svmscore::fuzz {

// The plug-in of this build.
const Plugin& ThePlugin();

// Options of a run.
struct RunOptions {
  tools::ColumnChoice columns = tools::ColumnChoice::kDocument;
  bool json = false;
  bool decisions = false;
  std::vector<std::string> missing_tokens;
  bool decimal_comma = false;
  char delimiter = ',';
  std::vector<std::string> copied;
};
// Also sets the model's own options.
RunOptions ChooseOptions(MCZandor_850::ScoreModel& model, Choices& choices);

// Made from a header as the program does; throws its Failure. `loaded` must outlive the plan.
app::ScoringPlan PlanOf(const LoadedModel& loaded, const std::vector<std::string_view>& header,
                        const RunOptions& options);

// The inputs of the model, and of its output fields.
std::vector<std::string> NamesFor(const LoadedModel& loaded);
using Rows = std::vector<std::vector<std::string>>;
// `count` rows of cells for these names.
Rows MakeRows(const LoadedModel& loaded, const std::vector<std::string>& names, std::size_t count,
              Choices& choices);
std::string CsvOf(const Rows& rows);

// Scores a few cases, one by one and as a batch, whose results must be the same, and through the
// program's reader and writer.
void ScoreCases(const LoadedModel& loaded, Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_CHECKED_SCORING_H_
