// Categories that fields are compared with and cannot have: no case ever equals them.
#include <string>
#include <unordered_map>
#include <vector>

#include "host/intake/field_graph.h"
#include "host/intake/steps.h"
#include "host/xml/attributes.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

class ComparedCategories {
 public:
  explicit ComparedCategories(Intake& intake)
      : intake_(intake), graph_(intake.Root(), intake.Model()) {}

  void Run() {
    for (const DOMElement* list :
         {FindChild(intake_.Root(), "TransformationDictionary"),
          intake_.ModelChild("LocalTransformations"), intake_.ModelChild("Output")}) {
      ForEachBelow(list, [this](const DOMElement* element) { CheckExpression(element); });
    }
    const DOMElement* fields = FindChild(intake_.ModelChild("VectorDictionary"), "VectorFields");
    for (const DOMElement* field : Children(fields, "CategoricalPredictor")) {
      CheckValue(field, AttributeText(field, "name"), AttributeText(field, "value"));
    }
  }

 private:
  // What the field can be; worked out once a field.
  const FieldGraph::Values& ValuesOf(const std::string& field) {
    const auto [found, is_new] = values_.try_emplace(field);
    if (is_new) found->second = graph_.ValuesOf(field);
    return found->second;
  }

  void CheckExpression(const DOMElement* element) {
    if (IsNamed(element, "NormDiscrete")) {
      CheckValue(element, AttributeText(element, "field"), AttributeText(element, "value"));
    } else if (IsNamed(element, "Apply")) {
      CheckComparison(element);
    }
  }

  void CheckValue(const DOMElement* element, const std::string& field, const std::string& value) {
    const auto& set = ValuesOf(field);
    if (!set || set->Holds(value)) return;
    const std::string similar = set->Similar(value);
    std::string what = '"' + value + "\" is not a category of \"" + field + '"';
    if (!similar.empty()) what += ", \"" + similar + "\" is,";
    intake_.Tell("unlisted-category", element, what, NameOf(element));
  }

  // A field compared with a constant: equal(field, constant), isIn(field, constant, ...).
  void CheckComparison(const DOMElement* apply) {
    const std::string function = AttributeText(apply, "function");
    if (function != "equal" && function != "notEqual" && function != "isIn" &&
        function != "isNotIn") {
      return;
    }
    const DOMElement* reference = nullptr;
    std::vector<const DOMElement*> constants;
    for (const DOMElement* child : ChildElements(apply)) {
      const std::string kind = NameOf(child);
      if (kind == "FieldRef" && reference == nullptr) {
        reference = child;
      } else if (kind == "Constant") {
        constants.push_back(child);
      } else if (kind != "Extension") {
        return;
      }
    }
    // A reference that maps missing values elsewhere has one value more.
    if (reference == nullptr || FindAttribute(reference, "mapMissingTo")) return;
    for (const DOMElement* constant : constants) {
      CheckValue(constant, AttributeText(reference, "field"), ElementText(constant));
    }
  }

  Intake& intake_;
  FieldGraph graph_;
  std::unordered_map<std::string, FieldGraph::Values> values_;
};

}  // namespace

void CheckCategoriesUsed(Intake& intake) {
  ComparedCategories(intake).Run();
}

}  // namespace svmscore::intake
