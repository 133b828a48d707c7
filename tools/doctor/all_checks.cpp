// All checks of a document by itself.
#include <fmt/format.h>

#include "tools/doctor/checks.h"

namespace svmscore::tools {
void CheckAll(const Inspected& document, FindingList& findings) {
  const ModelNumbers numbers = ReadNumbers(document);
  const Examined examined{document, numbers};
  if (numbers.beyond_limit != nullptr) {
    findings.Add("vectors-unexamined", numbers.beyond_limit,
                 fmt::format("written in full, for {} vector fields, the vectors up to this one "
                             "exceed the limit of entries",
                             numbers.fields.size()));
    return;
  }
  CheckVectorsUsed(examined, findings);
  CheckCategories(examined, findings);
  CheckNeeds(examined, findings);
  CheckAttributes(examined, findings);
  CheckScale(examined, findings);
  CheckTerms(examined, findings);
  CheckMargin(examined, findings);
  CheckSigns(examined, findings);
}

}  // namespace svmscore::tools
