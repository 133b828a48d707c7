// The document's own verification records.
#include <string_view>

#include <fmt/format.h>

#include "host/model/ss_exception.h"
#include "tools/doctor/checks.h"
#include "tools/verify/verify_document.h"

namespace svmscore::tools {

void CheckVerification(const LoadedModel& loaded, FindingList& findings) {
  const Element* element = FindChild(FindModelElement(loaded.document.Dom()), "ModelVerification");
  if (element == nullptr) return;
  try {
    const VerifyReport report = VerifyDocument(loaded, [](std::string_view) {});
    if (report.Disagreements() == 0) return;
    findings.Add("verification-disagrees", element,
                 fmt::format("the model does not give {} of {} values of its records",
                             report.Disagreements(), report.Compared()));
  } catch (const MCZandor_850::SSException& error) {
    findings.Add("verification-unreadable", element, error.what());
  }
}

}  // namespace svmscore::tools
