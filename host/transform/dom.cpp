#include "host/transform/dom.h"

#include <array>

#include "host/message_codes.h"
#include "host/number_text.h"
#include "host/ss_exception.h"
#include "host/transcoder.h"

namespace svmscore::transform {
namespace {

using xercesc::DOMNode;

constexpr int kLargestCount = 1000000;

const XMLCh* NameOf(const Element* element) {
  const XMLCh* local = element->getLocalName();
  return local != nullptr ? local : element->getTagName();
}

bool IsEqual(const XMLCh* text, std::string_view ascii) {
  for (const char c : ascii) {
    if (*text++ != static_cast<XMLCh>(c)) return false;
  }
  return *text == 0;
}

bool IsExtension(const Element* element) {
  const XMLCh* name = NameOf(element);
  return IsEqual(name, "Extension") || (name[0] == u'X' && name[1] == u'-');
}

const Element* ElementFrom(const DOMNode* node) {
  for (; node != nullptr; node = node->getNextSibling()) {
    if (node->getNodeType() != DOMNode::ELEMENT_NODE) continue;
    const auto* element = static_cast<const Element*>(node);
    if (!IsExtension(element)) return element;
  }
  return nullptr;
}

}  // namespace

std::string LocalName(const Element* element) {
  return ToUtf8(NameOf(element));
}

bool IsNamed(const Element* element, std::string_view local_name) {
  return IsEqual(NameOf(element), local_name);
}

const Element* FirstChild(const Element* element) {
  return ElementFrom(element->getFirstChild());
}

const Element* NextSibling(const Element* element) {
  return ElementFrom(element->getNextSibling());
}

const Element* ChildNamed(const Element* element, std::string_view local_name) {
  const Element* child = FirstChild(element);
  while (child != nullptr && !IsNamed(child, local_name)) child = NextSibling(child);
  return child;
}

std::optional<std::string> Attribute(const Element* element, const char* name) {
  std::array<XMLCh, 64> wide;
  std::size_t size = 0;
  while (name[size] != '\0' && size + 1 < wide.size()) {
    wide[size] = static_cast<XMLCh>(name[size]);
    ++size;
  }
  wide[size] = 0;
  const xercesc::DOMAttr* attribute = element->getAttributeNode(wide.data());
  if (attribute == nullptr) return std::nullopt;
  return ToUtf8(attribute->getValue());
}

std::string RequiredAttribute(const Element* element, const char* name) {
  auto text = Attribute(element, name);
  if (!text) ThrowAt(element, code::kAttributeMissing, name, LocalName(element));
  return *std::move(text);
}

std::optional<double> NumberAttribute(const Element* element, const char* name) {
  const auto text = Attribute(element, name);
  if (!text) return std::nullopt;
  const auto number = ParseNumber(*text);
  if (!number) ThrowAt(element, code::kBadValue, *text, name, LocalName(element));
  return number;
}

double RequiredNumber(const Element* element, const char* name) {
  const auto number = NumberAttribute(element, name);
  if (!number) ThrowAt(element, code::kAttributeMissing, name, LocalName(element));
  return *number;
}

int CountAttribute(const Element* element, const char* name, int standard) {
  const auto text = Attribute(element, name);
  if (!text) return standard;
  const auto number = ParseInteger(*text);
  if (!number || *number < 0 || *number > kLargestCount) {
    ThrowAt(element, code::kBadValue, *text, name, LocalName(element));
  }
  return static_cast<int>(*number);
}

bool FlagAttribute(const Element* element, const char* name, bool standard) {
  const auto text = Attribute(element, name);
  if (!text) return standard;
  if (*text == "true" || *text == "1") return true;
  if (*text == "false" || *text == "0") return false;
  ThrowAt(element, code::kBadValue, *text, name, LocalName(element));
}

std::optional<FieldType> TypeAttribute(const Element* element, const char* name) {
  const auto text = Attribute(element, name);
  if (!text) return std::nullopt;
  const auto type = ParseDataType(*text);
  if (!type) ThrowAt(element, code::kBadValue, *text, name, LocalName(element));
  return type;
}

std::optional<OpType> OpTypeAttribute(const Element* element, const char* name) {
  const auto text = Attribute(element, name);
  if (!text) return std::nullopt;
  const auto type = ParseOpType(*text);
  if (!type) ThrowAt(element, code::kBadValue, *text, name, LocalName(element));
  return type;
}

Interval ReadInterval(const Element* element) {
  Interval interval;
  const std::string closure = RequiredAttribute(element, "closure");
  if (closure != "openOpen" && closure != "openClosed" && closure != "closedOpen" &&
      closure != "closedClosed") {
    ThrowAt(element, code::kBadValue, closure, "closure", LocalName(element));
  }
  interval.left_closed = closure.starts_with("closed");
  interval.right_closed = closure.ends_with("Closed");
  const auto left = NumberAttribute(element, "leftMargin");
  const auto right = NumberAttribute(element, "rightMargin");
  if (!left && !right) Refuse(element, "neither leftMargin nor rightMargin is given");
  interval.left = left.value_or(interval.left);
  interval.right = right.value_or(interval.right);
  if (!(interval.left <= interval.right)) {
    Refuse(element, "leftMargin is greater than rightMargin");
  }
  return interval;
}

void Refuse(const Element* element, const std::string& what) {
  ThrowAt(element, code::kBadContent, what, LocalName(element));
}

void RefuseKind(const Element* element) {
  const DOMNode* parent = element->getParentNode();
  const bool inside = parent != nullptr && parent->getNodeType() == DOMNode::ELEMENT_NODE;
  ThrowAt(element, code::kUnsupported, "element " + LocalName(element),
          inside ? LocalName(static_cast<const Element*>(parent)) : std::string("PMML"));
}

}  // namespace svmscore::transform
