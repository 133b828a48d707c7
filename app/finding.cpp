#include "app/finding.h"

#include <algorithm>
#include <stdexcept>

#include "app/finding_kinds.h"

namespace svmscore::app {
namespace {

std::vector<FindingKind> GatherKinds() {
  std::vector<FindingKind> all;
  for (const auto& family :
       {KindsOfDocument(), KindsOfFields(), KindsOfVectors(), KindsOfMachines(), KindsOfScores()}) {
    all.insert(all.end(), family.begin(), family.end());
  }
  std::sort(all.begin(), all.end(),
            [](const FindingKind& a, const FindingKind& b) { return a.name < b.name; });
  return all;
}

}  // namespace

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

std::span<const FindingKind> FindingKinds() {
  static const std::vector<FindingKind> kinds = GatherKinds();
  return kinds;
}

const FindingKind& FindingKindOf(std::string_view name) {
  const auto kinds = FindingKinds();
  const auto found = std::lower_bound(
      kinds.begin(), kinds.end(), name,
      [](const FindingKind& kind, std::string_view wanted) { return kind.name < wanted; });
  if (found == kinds.end() || found->name != name) {
    throw std::logic_error("no kind of finding is called " + std::string(name));
  }
  return *found;
}

void FindingList::Add(std::string_view name, const Element* element, std::string what) {
  findings_.push_back({&FindingKindOf(name), element == nullptr ? std::string() : NameOf(element),
                       element == nullptr ? 0 : document_.LineOf(element), std::move(what)});
}

}  // namespace svmscore::app
