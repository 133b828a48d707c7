#include "app/describe/describe_command.h"

#include <sstream>
#include <string>

#include "app/describe/summary_text.h"
#include "app/files/output_file.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"
#include "host/model/score_model.h"
#include "host/text/printable.h"
#include "tools/describe/summary_json.h"

namespace svmscore::app {
namespace {

// The model's own listing. It contains names as they are; here their control characters are
// escaped.
std::string ListingOf(const MCZandor_850::ScoreModel& model) {
  std::ostringstream written;
  model.Display(written);
  std::string listing = written.str();
  if (const MCZandor_850::ScoreDictVar* target = model.GetTargetVar()) {
    std::string names;
    std::string printable;
    for (const MCZandor_850::ScoreValue* category : target->GetCategories()) {
      names += category->GetText();
      printable += Printable(category->GetText(), kLongestInsert);
    }
    const std::size_t at = listing.rfind(names);
    if (at != std::string::npos) listing.replace(at, names.size(), printable);
  }
  std::string lines;
  std::istringstream rest(listing);
  for (std::string line; std::getline(rest, line);) lines += Printable(line, kAnyLength) + '\n';
  return lines;
}

}  // namespace

CLI::App* DescribeCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "describe", "Describe a model, and which parts of its document are not used");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  app->add_flag("--json", json_, "write JSON");
  app->add_flag("--dump", dump_, "add the model's own listing of all it holds");
  AddReadingOptions(*app, reading_,
                    "also say why score --strict-document refuses the model, if it does");
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  return app;
}

ExitStatus DescribeCommand::Run() {
  const LoadChecks checks = ChecksOf(reading_);
  tools::DocumentSource source(model_, limits_);
  const DescribedModel described = LoadModelToDescribe(source, plugin_, checks);
  tools::ModelSummary summary = tools::Summarise(described.loaded);
  summary.refused = described.refused;
  if (dump_) summary.listing = ListingOf(*described.loaded.model);
  OutputFile output("-");
  output.Write(json_ ? tools::JsonOf(summary) : TextOf(summary));
  return kDone;
}

}  // namespace svmscore::app
