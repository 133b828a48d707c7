#include "tools/findings/finding_list.h"

namespace svmscore::tools {

void FindingList::Add(KindOfFinding kind, const Element* element, std::string detail) {
  Place place;
  if (element != nullptr) place = {NameOf(element), document_.LineOf(element)};
  findings_.push_back({kind, std::move(place), std::move(detail)});
}

}  // namespace svmscore::tools
