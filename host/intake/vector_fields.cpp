// For a vector position a translator uses the unchanged value of a field, or 1 or 0 for a category.
// Any other position becomes a derived field, to which the position refers.
#include <cmath>
#include <memory>

#include "host/intake/declared_fields.h"
#include "host/intake/steps.h"
#include "host/text/field_text.h"
#include "host/text/field_types.h"
#include "host/text/number_text.h"
#include "host/xml/attributes.h"
#include "host/xml/edit.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

// The type in which a field is read; nothing for a name that is not a field.
std::optional<FieldType> TypeOf(const DOMElement* field) {
  const bool continuous = AttributeView(field, "optype") == u"continuous";
  return ParseDataType(FindAttribute(field, "dataType").value_or(continuous ? "double" : "string"));
}

bool IsOfType(const std::string& text, const std::optional<FieldType>& type) {
  return type && (type->data == DataType::kString || KeyFromFieldText(text, *type));
}

class VectorPositions {
 public:
  explicit VectorPositions(Intake& intake) : intake_(intake) {}

  // Whether any position has been seen.
  bool Any() const { return any_; }

  void Express(DOMElement* position) {
    const std::string kind = NameOf(position);
    any_ = any_ || kind == "FieldRef" || kind == "CategoricalPredictor";
    if (kind == "FieldRef") {
      ExpressReference(position);
    } else if (kind == "CategoricalPredictor") {
      ExpressCategory(position);
    } else if (kind != "Extension") {
      intake_.Tell("unknown-vector-field", position, kind, "VectorFields");
    }
  }

 private:
  // Built for the first position.
  DeclaredFields& Known() {
    if (!fields_) fields_ = std::make_unique<DeclaredFields>(intake_);
    return *fields_;
  }

  void ExpressReference(DOMElement* position) {
    std::string replacement = FindAttribute(position, "mapMissingTo").value_or("");
    const std::string name = FindAttribute(position, "field").value_or("");
    const DOMElement* hiding = Known().FindHiding(name);
    const DOMElement* field = hiding != nullptr ? hiding : Known().Find(name);
    if (field == nullptr) return;
    if (!IsOfType(replacement, TypeOf(field)) && !replacement.empty()) {
      intake_.Tell("map-missing-unreadable", position, replacement, "mapMissingTo", "FieldRef");
      replacement.clear();
    }
    if (hiding == nullptr && replacement.empty()) return;
    AllowDerivedFields(intake_);
    intake_.Tell(replacement.empty() ? Kind("derived-field-reached") : Kind("map-missing-to"),
                 position);
    const bool continuous = AttributeView(field, "optype") == u"continuous";
    const std::string type =
        FindAttribute(field, "dataType").value_or(continuous ? "double" : "string");
    const std::string derived =
        Known().FreshName(replacement.empty() ? name : name + " or " + replacement);
    DOMElement* expression = AddElement(
        Known().AddDerived(derived, type == "string" ? "categorical" : "continuous", type),
        "FieldRef");
    SetAttribute(expression, "field", name);
    if (!replacement.empty()) {
      SetAttribute(expression, "mapMissingTo", replacement);
    }
    RemoveAttribute(position, "mapMissingTo");
    SetAttribute(position, "field", derived);
  }

  void ExpressCategory(DOMElement* position) {
    const auto name = FindAttribute(position, "name");
    const auto value = FindAttribute(position, "value");
    auto coefficient = ParseNumber(FindAttribute(position, "coefficient").value_or(""));
    // A translator says what is missing.
    if (!name || !value || !coefficient) return;
    const DOMElement* field = Known().Find(*name);
    if (field == nullptr) return;
    const bool listed = Known().Lists(field, *value);
    const bool hidden = Known().FindHiding(*name) != nullptr;
    if (!std::isfinite(*coefficient)) {
      intake_.Tell("number-not-finite", position, "coefficient " + FormatNumber(*coefficient),
                   "CategoricalPredictor");
      coefficient = 1.0;
    }
    if (listed && !hidden && *coefficient == 1.0) return;
    // A value that the field cannot hold never occurs.
    if (!listed && !IsOfType(*value, TypeOf(field))) return;
    AllowDerivedFields(intake_);
    intake_.Tell(hidden                ? Kind("derived-field-reached")
                 : *coefficient == 1.0 ? Kind("category-unlisted")
                                       : Kind("category-coefficient"),
                 position);
    const std::string derived = Known().FreshName(*name + '=' + *value);
    DOMElement* parent = Known().AddDerived(derived, "continuous", "double");
    if (*coefficient != 1.0) {
      parent = AddElement(parent, "Apply");
      SetAttribute(parent, "function", "*");
    }
    DOMElement* indicator = AddElement(parent, "NormDiscrete");
    SetAttribute(indicator, "field", *name);
    SetAttribute(indicator, "value", *value);
    if (*coefficient != 1.0) {
      DOMElement* constant = AddElement(parent, "Constant");
      SetAttribute(constant, "dataType", "double");
      AddText(constant, ToUtf16(FormatNumber(*coefficient)));
    }
    ReferTo(position, derived);
  }

  static void ReferTo(DOMElement* position, const std::string& derived) {
    Rename(position, "FieldRef");
    RemoveAttribute(position, "name");
    RemoveAttribute(position, "value");
    RemoveAttribute(position, "coefficient");
    SetAttribute(position, "field", derived);
  }

  Intake& intake_;
  std::unique_ptr<DeclaredFields> fields_;
  bool any_ = false;
};

}  // namespace

void ExpressVectorFields(Intake& intake) {
  VectorPositions positions(intake);
  DOMElement* list = FindChild(intake.ModelChild("VectorDictionary"), "VectorFields");
  for (DOMElement* position = FirstElement(list); position != nullptr;
       position = NextElement(position)) {
    positions.Express(position);
  }
  if (list != nullptr && !positions.Any()) {
    intake.Tell("no-vector-fields", list, "VectorFields");
  }
}

}  // namespace svmscore::intake
