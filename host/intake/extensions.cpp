// A translator counts children but lists descendants, so that a machine, a vector or a coefficient
// inside an Extension would take the place of one of the model's own.
#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"

namespace svmscore::intake {
namespace {

bool IsListed(WideView name) {
  return name == u"SupportVectorMachine" || name == u"VectorInstance" || name == u"SupportVector" ||
         name == u"Coefficient";
}

bool IsInside(const DOMNode* node, const DOMNode* ancestor) {
  while (node != nullptr && node != ancestor) node = node->getParentNode();
  return node != nullptr;
}

}  // namespace

void HideExtensionContent(Intake& intake, const std::vector<DOMElement*>& extensions) {
  for (DOMElement* extension : extensions) {
    if (extension->getFirstChild() == nullptr || !IsInside(extension, intake.Model())) continue;
    TreeWalk walk(extension);
    for (walk.Next(); walk.At() != nullptr; walk.Next()) {
      DOMElement* at = walk.At();
      if (!IsListed(at->getNodeName())) continue;
      intake.Tell("extension-content", at);
      Rename(at, "X-" + NameOf(at));
    }
  }
}

// A translator looks at the first Extension only.
void PutOwnExtensionsFirst(Intake& intake) {
  for (DOMElement* machine : Children(intake.Model(), "SupportVectorMachine")) {
    DOMElement* first = FindChild(machine, "Extension");
    DOMElement* own = first;
    while (own != nullptr && FindAttribute(own, "extender") != "svmscore") {
      own = FindNext(own, "Extension");
    }
    if (own == nullptr || own == first) continue;
    intake.Tell("extension-moved", own);
    machine->insertBefore(own, first);
  }
}

}  // namespace svmscore::intake
