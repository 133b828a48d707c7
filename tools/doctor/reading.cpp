// How the document was made readable, and all checks of a document by itself.
#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "tools/describe/left_out.h"
#include "tools/doctor/checks.h"
#include "tools/findings/intake_text.h"

namespace svmscore::tools {
namespace {

// Steps that settle what the document leaves open, and with it which category a case gets.
constexpr std::array kGuesses = {"method-inferred", "two-class-rounding", "target-categories",
                                 "version-assumed", "alternate-on-model", "second-category"};

bool IsGuess(const std::string& step) {
  return std::find(kGuesses.begin(), kGuesses.end(), step) != kGuesses.end();
}

}  // namespace

void CheckIntake(const std::vector<IntakeStep>& intake, FindingList& findings) {
  const std::vector<Finding> before = findings.Found();
  for (const IntakeStep& step : intake) {
    KindOfFinding kind = "made-readable";
    if (!step.changes) kind = "reading-remark";
    if (step.changes && IsGuess(step.name)) kind = "guessed-reading";
    const bool told = std::any_of(before.begin(), before.end(), [&step](const Finding& finding) {
      return step.line > 0 && finding.line == step.line &&
             finding.kind->severity != Severity::kNote;
    });
    if (told && !step.changes) continue;
    findings.Add(Finding{kind, step.element, step.line,
                         fmt::format("{}: {}", step.name, ConsequenceOf(step))});
  }
}

void CheckAll(const Inspected& document, FindingList& findings) {
  const ModelNumbers numbers = ReadNumbers(document);
  const Examined examined{document, numbers};
  CheckLeftOut(document, findings);
  if (numbers.beyond_limit != nullptr) {
    findings.Add("vectors-unexamined", numbers.beyond_limit,
                 fmt::format("written in full, for {} vector fields, the vectors up to this one "
                             "exceed the limit of entries",
                             numbers.fields.size()));
    return;
  }
  CheckCounts(examined, findings);
  CheckCategories(examined, findings);
  CheckNeeds(examined, findings);
  CheckKernel(examined, findings);
  CheckLayout(examined, findings);
  CheckScale(examined, findings);
  CheckTerms(examined, findings);
  CheckMargin(examined, findings);
  CheckSigns(examined, findings);
}

}  // namespace svmscore::tools
