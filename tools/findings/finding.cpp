#include "tools/findings/finding.h"

#include <algorithm>

namespace svmscore::tools {

std::string_view SeverityName(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kWarning:
      return "warning";
    case Severity::kError:
      return "error";
  }
  return {};
}

std::vector<FindingKind> AllFindingKinds() {
  std::vector<FindingKind> all;
  const auto add = [&all](const auto& kinds) {
    for (const FindingKind& kind : kinds) all.push_back(kind);
  };
  add(kDocumentFindings);
  add(kFieldsFindings);
  add(kVectorsFindings);
  add(kMachinesFindings);
  add(kScoresFindings);
  std::sort(all.begin(), all.end(),
            [](const FindingKind& a, const FindingKind& b) { return a.name < b.name; });
  return all;
}

void FindingList::Add(KindOfFinding kind, const Element* element, std::string what) {
  findings_.push_back({kind, element == nullptr ? std::string() : NameOf(element),
                       element == nullptr ? 0 : document_.LineOf(element), std::move(what)});
}

}  // namespace svmscore::tools
