#include "app/elements.h"

namespace svmscore::app {

std::vector<const Element*> ChildElements(const Element* parent) {
  std::vector<const Element*> children;
  if (parent == nullptr) return children;
  for (const Element* child = parent->getFirstElementChild(); child != nullptr;
       child = child->getNextElementSibling()) {
    children.push_back(child);
  }
  return children;
}

std::vector<const Element*> ChildElements(const Element* parent, const std::string& name) {
  std::vector<const Element*> children;
  for (const Element* child : Children(parent, name)) children.push_back(child);
  return children;
}

}  // namespace svmscore::app
