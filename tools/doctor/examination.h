// All checks of a document, one after the other.
#ifndef TOOLS_DOCTOR_EXAMINATION_H_
#define TOOLS_DOCTOR_EXAMINATION_H_

#include <optional>
#include <string>
#include <vector>

#include "host/load/plugin.h"
#include "tools/doctor/comparison.h"
#include "tools/doctor/labelled_cases.h"
#include "tools/doctor/opened_document.h"
#include "tools/findings/finding_list.h"

namespace svmscore::tools {

// Whether score would accept the document: only then are scores compared. [any thread] Fails:
// never.
bool IsScored(const OpenedDocument& opened);

struct Examination {
  std::vector<Finding> findings;       // the most severe first
  std::optional<Agreement> agreement;  // of the files; nothing where they expect no predictions
};

// What is suspicious about the document of `source`. `files` hold cases and the expected scores,
// `labelled`, which may be null, cases and what they really are. REQUIRES: opened.IsRead(). [one
// thread] for each document and source. Owns: the caller. Lives: arguments for the call, and
// `opened` as long as the agreement. Fails: BadCases if the files do not fit; std::bad_alloc.
Examination Examine(const OpenedDocument& opened, const Plugin& plugin, DocumentSource& source,
                    const std::optional<CaseFiles>& files, const LabelledCases* labelled = nullptr);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_EXAMINATION_H_
