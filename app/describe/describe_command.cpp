#include "app/describe/describe_command.h"

#include <sstream>

#include "app/describe/summary_output.h"
#include "app/files/output_file.h"
#include "app/load/model_file.h"
#include "app/options/file_option.h"
#include "app/options/limit_option.h"

namespace svmscore::app {

CLI::App* DescribeCommand::AddTo(CLI::App& program) {
  CLI::App* app = program.add_subcommand(
      "describe", "Tell what a model is, and what is not used of its document");
  AddFileOption(*app, "MODEL", model_, kModelHelp)->required();
  app->add_flag("--json", json_, "write JSON");
  app->add_flag("--dump", dump_, "add the model's own listing of all it holds");
  app->add_flag("--strict-document", strict_document_,
                "tell why score --strict-document refuses the model, where it does");
  AddLimitOption(*app, limits_);
  AddFileOption(*app, "--plugin", plugin_, kPluginHelp);
  return app;
}

ExitStatus DescribeCommand::Run() {
  tools::DocumentSource source(model_, limits_);
  const DescribedModel described = LoadModelToDescribe(source, plugin_, strict_document_);
  tools::ModelSummary summary = tools::Summarise(described.loaded);
  summary.refused = described.refused;
  if (dump_) summary.listing = ListingOf(*described.loaded.model);
  OutputFile output("-");
  output.Write(json_ ? JsonOf(summary) : TextOf(summary));
  return kDone;
}

}  // namespace svmscore::app
