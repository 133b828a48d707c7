// Running the verification records that a document carries.
#ifndef TOOLS_VERIFY_VERIFY_DOCUMENT_H_
#define TOOLS_VERIFY_VERIFY_DOCUMENT_H_

#include "host/load/loader.h"
#include "tools/verify/verify_report.h"

namespace svmscore::tools {

// Fields of the mining schema give the inputs. Output fields are compared; where the document
// verifies none of them, the target's column is. Throws a BadDocument for a document
// without records, and an SSException, its place in words, for records that cannot be read and
// where there is nothing to compare.
// The report's lines go to `sink`, or are kept.
VerifyReport VerifyDocument(const LoadedModel& loaded, VerifyReport::Sink sink = {});

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_DOCUMENT_H_
