// Compares scores with expected ones, row by row, and looks for an explanation of differences. [one
// thread] for each model and source. Owns: the caller. Lives: arguments for the call. Fails: as
// stated; std::bad_alloc.
#ifndef TOOLS_DOCTOR_COMPARISON_H_
#define TOOLS_DOCTOR_COMPARISON_H_

#include <optional>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "host/load/plugin.h"
#include "tools/base/document_source.h"
#include "tools/findings/finding_list.h"
#include "tools/verify/verify_files.h"

namespace svmscore::tools {

struct CaseFiles {
  TextTable cases;
  TextTable expected;
  CellRules rules;
  double tolerance;  // how far a number may be from the expected one, as a share of it
};

struct ComparedCell {
  bool agrees = true;
  std::string got;                 // empty if there is no value
  std::optional<double> number;    // if there is one
  std::optional<double> expected;  // if a number is expected
};

struct ComparedRow {
  bool agrees = true;
  long status = 0;
  std::string why;                  // the case failed; of the first rows that disagree
  std::vector<ComparedCell> cells;  // one a column of the comparison
};

struct Comparison {
  ExpectedColumns columns;
  std::vector<ComparedRow> rows;   // one a row of the files
  std::vector<std::size_t> wrong;  // positions of the rows that do not agree
  bool expects = false;            // some cell expects something
};

Comparison Compare(const LoadedModel& loaded, const CaseFiles& files,
                   const ExpectedColumns& columns);
// The number of rows, among those given, that disagree. Stops counting at `limit`.
std::size_t CountWrong(const LoadedModel& loaded, const CaseFiles& files,
                       const ExpectedColumns& columns, const std::vector<std::size_t>& rows,
                       std::size_t limit);

// The examined model, and what is needed to load changed versions of its document.
struct Suspect {
  const LoadedModel& loaded;
  const Plugin& plugin;
  DocumentSource& source;
};

// Reports scores that differ from the expected ones, and what would explain the difference. Returns
// how well the predictions agree; nothing where the files expect none. Throws BadCases for files
// that do not fit together or expect nothing.
std::optional<Agreement> CheckScores(const Suspect& suspect, const CaseFiles& files,
                                     FindingList& findings);

// explanations.cpp: how the expected values relate to the actual ones. Returns whether that
// explains the disagreement.
bool ExplainByCategories(const Suspect& suspect, const CaseFiles& files,
                         const Comparison& comparison, FindingList& findings);
bool ExplainByOrder(const Comparison& comparison, FindingList& findings);
enum class NumberRelation { kNegated, kShifted, kRescaled };
bool ExplainByNumbers(const Suspect& suspect, const Comparison& comparison, NumberRelation relation,
                      FindingList& findings);
// document_changes.cpp: a change of the document that leads to the expected values.
bool ExplainByChange(const Suspect& suspect, const CaseFiles& files, const Comparison& comparison,
                     FindingList& findings);
// vector_ranges.cpp: inputs that are vector fields, and outside the range of the vectors in all
// cases.
void FindFieldsBeyondVectors(const Suspect& suspect, const CaseFiles& files, FindingList& findings);
// separating_field.cpp: a field that distinguishes the rows that disagree from the others.
void FindSeparatingFields(const Suspect& suspect, const CaseFiles& files,
                          const Comparison& comparison, FindingList& findings);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_COMPARISON_H_
