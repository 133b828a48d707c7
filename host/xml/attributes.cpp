#include "host/xml/attributes.h"

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/field_text.h"
#include "host/text/number_text.h"
#include "host/xml/transcoder.h"
#include "host/xml/wide_text.h"

namespace svmscore {

using xercesc::DOMNode;

namespace {

constexpr int kLargestCount = 1000000;

}  // namespace

std::optional<std::string> FindAttribute(const Element* element, std::string_view name) {
  const WideView value = AttributeView(element, name);
  if (value.data() == nullptr) return std::nullopt;
  return ToUtf8(value.data(), value.size());
}

std::string AttributeText(const Element* element, std::string_view name) {
  return FindAttribute(element, name).value_or("");
}

std::string RequireAttribute(const Element* element, std::string_view name) {
  std::optional<std::string> text = FindAttribute(element, name);
  if (!text) ThrowAt(element, code::kAttributeMissing, name, NameOf(element));
  return *std::move(text);
}

std::optional<double> FindNumber(const Element* element, std::string_view name) {
  const std::optional<std::string> text = FindAttribute(element, name);
  if (!text) return std::nullopt;
  const std::optional<double> number = ParseNumber(*text);
  if (!number) RefuseValue(element, name, *text);
  return number;
}

double RequireNumber(const Element* element, std::string_view name) {
  const auto number = FindNumber(element, name);
  if (!number) ThrowAt(element, code::kAttributeMissing, name, NameOf(element));
  return *number;
}

int FindCount(const Element* element, std::string_view name, int standard) {
  const auto text = FindAttribute(element, name);
  if (!text) return standard;
  const auto number = ParseInteger(*text);
  if (!number || *number < 0 || *number > kLargestCount) RefuseValue(element, name, *text);
  return static_cast<int>(*number);
}

bool FindFlag(const Element* element, std::string_view name, bool standard) {
  const auto text = FindAttribute(element, name);
  if (!text) return standard;
  const auto truth = ParseBoolean(*text);
  if (!truth) RefuseValue(element, name, *text);
  return *truth;
}

std::optional<FieldType> FindDataType(const Element* element, std::string_view name) {
  const auto text = FindAttribute(element, name);
  if (!text) return std::nullopt;
  const auto type = ParseDataType(*text);
  if (!type) RefuseValue(element, name, *text);
  return type;
}

std::optional<OpType> FindOpType(const Element* element, std::string_view name) {
  const auto text = FindAttribute(element, name);
  if (!text) return std::nullopt;
  const auto type = ParseOpType(*text);
  if (!type) RefuseValue(element, name, *text);
  return type;
}

Interval ReadInterval(const Element* element) {
  Interval interval;
  const std::string closure = RequireAttribute(element, "closure");
  if (closure != "openOpen" && closure != "openClosed" && closure != "closedOpen" &&
      closure != "closedClosed") {
    RefuseValue(element, "closure", closure);
  }
  interval.left_closed = closure.starts_with("closed");
  interval.right_closed = closure.ends_with("Closed");
  const auto left = FindNumber(element, "leftMargin");
  const auto right = FindNumber(element, "rightMargin");
  if (!left && !right) RefuseContent(element, "neither leftMargin nor rightMargin is given");
  interval.left = left.value_or(interval.left);
  interval.right = right.value_or(interval.right);
  if (!(interval.left <= interval.right)) {
    RefuseContent(element, "leftMargin is greater than rightMargin");
  }
  return interval;
}

void RefuseValue(const Element* element, std::string_view attribute, const std::string& value) {
  ThrowAt(element, code::kBadValue, value, attribute, NameOf(element));
}

void RefuseContent(const Element* element, const std::string& what) {
  ThrowAt(element, code::kBadContent, what, NameOf(element));
}

void RefuseKind(const Element* element) {
  const DOMNode* parent = element->getParentNode();
  const bool inside = parent != nullptr && parent->getNodeType() == DOMNode::ELEMENT_NODE;
  ThrowAt(element, code::kUnsupported, "element " + NameOf(element),
          inside ? NameOf(static_cast<const Element*>(parent)) : std::string("PMML"));
}

}  // namespace svmscore
