// Running the verification records that a document carries.
#ifndef APP_VERIFY_DOCUMENT_H_
#define APP_VERIFY_DOCUMENT_H_

#include "app/verify_report.h"
#include "host/pmml/loader.h"

namespace svmscore::app {

// Fields of the mining schema give the inputs. Output fields are compared; where the document
// verifies none of them, the target's column is. Throws a Failure(kModelError) for a document
// without records, and an SSException, its place in words, for records that cannot be read and
// where there is nothing to compare.
// The report's lines go to `sink`, or are kept.
VerifyReport VerifyDocument(const LoadedModel& loaded, VerifyReport::Sink sink = {});

}  // namespace svmscore::app

#endif  // APP_VERIFY_DOCUMENT_H_
