#include "tools/doctor/examination.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/model/message_codes.h"
#include "tools/doctor/checks.h"
#include "tools/findings/inspected.h"

namespace svmscore::tools {
namespace {

bool IsSame(const Finding& a, const Finding& b) {
  return a.kind == b.kind && a.place == b.place;
}

// Whether a finding only follows from what the document is refused for: what nothing refers to
// because the machine or the name that should is missing, machines that are out of their places,
// and the MiningField that the refusal is about.
bool OnlyFollows(const Finding& finding, const OpenedDocument& opened) {
  const std::string_view name = finding.Name();
  if (opened.refusal_code == code::kUnknownField) return name == "unused-field";
  if (opened.refusal_code != code::kInvalidContent) return false;
  const bool of_target = name == "unknown-mining-field" || name == "unknown-usage";
  return name == "unused-vector" || name == "unused-field" || name == "pair-out-of-order" ||
         name == "category-never-predicted" ||
         (of_target && finding.place == opened.refused->place);
}

// A fault that the scores have shown is not reported again from the document alone.
void CheckDocument(const OpenedDocument& opened, FindingList& findings) {
  if (FindModelElement(opened.Document().Dom()) == nullptr) return;
  const std::vector<Finding> shown = findings.Found();
  FindingList of_document(opened.Document());
  CheckAll(opened.loaded ? Inspect(*opened.loaded) : Inspect(*opened.document), of_document);
  for (Finding& finding : of_document.Take()) {
    const bool told = std::any_of(shown.begin(), shown.end(), [&finding](const Finding& other) {
      return IsSame(finding, other);
    });
    if (!told) findings.Add(std::move(finding));
  }
}

}  // namespace

bool IsScored(const OpenedDocument& opened) {
  return opened.loaded && !opened.refused;
}

Examination Examine(const OpenedDocument& opened, const Plugin& plugin, DocumentSource& source,
                    const std::optional<CaseFiles>& files, const LabelledCases* labelled) {
  Examination examination;
  FindingList findings(opened.Document());
  if (opened.refused) findings.Add(*opened.refused);
  if (IsScored(opened)) {
    if (files) {
      examination.agreement = CheckScores({*opened.loaded, plugin, source}, *files, findings);
    }
    if (labelled != nullptr) CheckCalibration(*opened.loaded, *labelled, findings);
    CheckVerification(*opened.loaded, findings);
  }
  CheckDocument(opened, findings);
  for (const Finding& finding : opened.findings) findings.Add(finding);
  std::vector<Finding>& found = examination.findings;
  found = findings.Take();
  found.erase(
      std::remove_if(found.begin(), found.end(),
                     [&opened](const Finding& finding) { return OnlyFollows(finding, opened); }),
      found.end());
  std::stable_sort(found.begin(), found.end(), [](const Finding& a, const Finding& b) {
    return a.kind->of_class > b.kind->of_class;
  });
  return examination;
}

}  // namespace svmscore::tools
