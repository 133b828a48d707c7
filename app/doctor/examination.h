// All checks of a document, one after the other.
#ifndef APP_DOCTOR_EXAMINATION_H_
#define APP_DOCTOR_EXAMINATION_H_

#include <optional>
#include <string>
#include <vector>

#include "app/doctor/comparison.h"
#include "app/doctor/opened_document.h"
#include "app/finding.h"
#include "host/pmml/plugin.h"

namespace svmscore::app {

// Whether score would take the document: only then are scores compared.
bool IsScored(const OpenedDocument& opened);

// What is suspicious about the document of `source`, the most severe first. `files` hold what cases
// should score; Failure(kInputError) where they do not fit. REQUIRES: opened.IsRead().
std::vector<Finding> Examine(const OpenedDocument& opened, const Plugin& plugin,
                             DocumentSource& source, const std::optional<CaseFiles>& files);

}  // namespace svmscore::app

#endif  // APP_DOCTOR_EXAMINATION_H_
