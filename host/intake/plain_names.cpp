// Documents may give every element a namespace prefix; a translator knows only the plain names.
#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"

namespace svmscore::intake {
namespace {

bool IsPmmlNamespace(WideView name, WideView of_root) {
  return name == of_root || name.starts_with(u"http://www.dmg.org/PMML-") ||
         name.starts_with(u"https://www.dmg.org/PMML-");
}

WideView NamespaceOf(const DOMElement* element) {
  const XMLCh* name = element->getNamespaceURI();
  return name == nullptr ? WideView() : WideView(name);
}

}  // namespace

std::vector<DOMElement*> UsePlainNames(Intake& intake) {
  std::vector<DOMElement*> extensions;
  if (intake.Document().HasOnlyPlainNames()) return extensions;
  DOMElement* root = intake.Root();
  const WideView of_root = NamespaceOf(root);
  bool skip = false;
  for (TreeWalk walk(root); walk.At() != nullptr; walk.Next(skip)) {
    DOMElement* at = walk.At();
    const XMLCh* prefix = at->getPrefix();
    if (prefix != nullptr && *prefix != 0 && IsPmmlNamespace(NamespaceOf(at), of_root)) {
      intake.Tell("namespace-prefix", at);
      at->getOwnerDocument()->renameNode(at, at->getNamespaceURI(), at->getLocalName());
    }
    const XMLCh* name = at->getNodeName();
    // Cells of a table and the content of an Extension keep the names that their author chose,
    // except for the Extension that a translator reads.
    skip = name[0] == u'r' && WideView(name) == u"row";
    if (name[0] != u'E' || WideView(name) != u"Extension") continue;
    skip = FindAttribute(at, "extender") != "svmscore";
    if (skip) extensions.push_back(at);
  }
  return extensions;
}

}  // namespace svmscore::intake
