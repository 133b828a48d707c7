#include "fuzz/put_through.h"

#include <optional>
#include <sstream>

#include "app/describe/summary_text.h"
#include "app/doctor/report_text.h"
#include "app/load/intake_report.h"
#include "fuzz/checked_scoring.h"
#include "fuzz/expected_scores.h"
#include "fuzz/memory_file.h"
#include "fuzz/promise.h"
#include "host/load/loader.h"
#include "host/model/ss_exception.h"
#include "tools/base/bad_input.h"
#include "tools/describe/summary_json.h"
#include "tools/doctor/examination.h"
#include "tools/doctor/report_json.h"

namespace svmscore::fuzz {
namespace {

using MCZandor_850::SSException;

constexpr const char* kName = "model.pmml";

void Describe(const LoadedModel& loaded) {
  const tools::ModelSummary summary = tools::Summarise(loaded);
  Promise(!app::TextOf(summary).empty() && !tools::JsonOf(summary).empty(), "a summary tells");
  for (const Finding& finding : loaded.findings) {
    Promise(!SentenceOf(finding).empty(), "a finding is told");
  }
  std::ostringstream listing;
  loaded.model->Display(listing);
}

// As programs do that score it; the first reading was one of texts.
LoadedModel LoadAgain(const std::string& document, LoadChecks checks) {
  return LoadModel(ThePlugin(), PmmlDocument::FromText(document, kName, {}, Arrays::kAsNumbers),
                   checks);
}

// Loads the model again: the first case fixes the layout of all later ones, and that of the other
// model was a case of the document's verification.
void Score(const std::string& document, Choices& choices) {
  const LoadChecks checks = choices.Half() ? LoadChecks::kStrict : LoadChecks::kRefuse;
  try {
    ScoreCases(LoadAgain(document, checks), choices);
  } catch (const SSException& error) {
    Promise(checks == LoadChecks::kStrict, "a document that was read is read again");
    Promise(error.GetErrorCode() != 0 && *error.what() != '\0', "a refusal has code and sentence");
  }
}

// Also explains expected scores where there are any.
void Examine(const tools::OpenedDocument& opened, tools::DocumentSource& source,
             const std::string& document, Choices& choices) {
  std::optional<tools::CaseFiles> files;
  if (tools::IsScored(opened) && choices.Half()) {
    files = MakeCaseFiles(LoadAgain(document, LoadChecks::kRefuse), choices);
  }
  tools::Examination examination;
  try {
    examination = tools::Examine(opened, ThePlugin(), source, files);
  } catch (const tools::BadCases&) {
    Promise(files.has_value(), "scores that do not fit");
    examination = tools::Examine(opened, ThePlugin(), source, std::nullopt);
  }
  Promise(!app::ReportText(kName, examination).empty() &&
              !tools::ReportJson(kName, examination).empty(),
          "a report tells");
}

}  // namespace

void PutThrough(const std::string& document, Choices& choices) {
  const MemoryFile file(document);
  tools::DocumentSource source(file.Path(), {});
  const tools::OpenedDocument opened = tools::OpenDocument(ThePlugin(), source);
  if (opened.refused) Promise(!opened.refused->detail.empty(), "a refusal says why");
  Promise(opened.IsRead() || opened.refused, "a document is read or refused");
  if (!opened.IsRead()) return;
  Examine(opened, source, document, choices);
  if (opened.loaded) Describe(*opened.loaded);
  if (tools::IsScored(opened)) Score(document, choices);
}

}  // namespace svmscore::fuzz
