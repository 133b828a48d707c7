#include "tools/findings/remarks.h"

namespace svmscore::tools {

std::vector<std::string> RemarksOn(const LoadedModel& loaded) {
  std::vector<std::string> remarks;
  for (const Finding& finding : FirstOfEachKind(loaded.findings)) {
    if (!finding.kind->IsRefusedWhenStrict()) continue;
    remarks.push_back(finding.IsError() ? "error: " + SentenceOf(finding) + "; " +
                                              std::string(finding.kind->consequence)
                                        : SentenceOf(finding));
  }
  return remarks;
}

}  // namespace svmscore::tools
