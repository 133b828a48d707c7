// Categories that fields and targets lack.
#include <algorithm>

#include <fmt/format.h>

#include "app/doctor/checks.h"
#include "app/doctor/field_graph.h"
#include "host/transcoder.h"

namespace svmscore::app {
namespace {

class CategoryChecks {
 public:
  CategoryChecks(const Examined& examined, FindingList& findings)
      : examined_(examined), findings_(findings), graph_(examined.document) {}

  void Run() {
    for (const Element* list : {FindChild(examined_.document.root, "TransformationDictionary"),
                                FindChild(examined_.document.model, "LocalTransformations"),
                                FindChild(examined_.document.model, "Output")}) {
      ForEachBelow(list, [this](const Element* element) { CheckExpression(element); });
    }
    for (const Element* field : examined_.document.vectors.Fields()) {
      if (NameOf(field) == "CategoricalPredictor") {
        CheckValue(field, AttributeText(field, "name"), AttributeText(field, "value"));
      }
    }
    CheckTargetCategories();
  }

 private:
  // What the field can be; worked out once a field.
  const std::optional<ValueSet>& ValuesOf(const std::string& field) {
    const auto [found, is_new] = values_.try_emplace(field);
    if (is_new) found->second = graph_.ValuesOf(field);
    return found->second;
  }

  void CheckExpression(const Element* element) {
    const std::string kind = NameOf(element);
    if (kind == "NormDiscrete") {
      CheckValue(element, AttributeText(element, "field"), AttributeText(element, "value"));
    } else if (kind == "MapValues") {
      CheckTable(element);
    } else if (kind == "Apply") {
      CheckComparison(element);
    }
  }

  void CheckValue(const Element* element, const std::string& field, const std::string& value) {
    const auto& set = ValuesOf(field);
    if (!set || set->Holds(value)) return;
    const std::string similar = set->Similar(value);
    findings_.Add("unlisted-category", element,
                  fmt::format("\"{}\" is no category of \"{}\"{}", value, field,
                              similar.empty() ? "" : fmt::format(", \"{}\" is", similar)));
  }

  // A field compared with a constant: equal(field, constant), isIn(field, constant, ...).
  void CheckComparison(const Element* apply) {
    const std::string function = AttributeText(apply, "function");
    if (function != "equal" && function != "notEqual" && function != "isIn" &&
        function != "isNotIn") {
      return;
    }
    const Element* reference = nullptr;
    std::vector<const Element*> constants;
    for (const Element* child : ChildElements(apply)) {
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
    for (const Element* constant : constants) {
      CheckValue(constant, AttributeText(reference, "field"), ElementText(constant));
    }
  }

  void CheckTable(const Element* map_values) {
    const Element* table = FindChild(map_values, "InlineTable");
    // A table that stands elsewhere is refused when the document is loaded.
    if (FindChild(map_values, "TableLocator") != nullptr) return;
    for (const Element* pair : Children(map_values, "FieldColumnPair")) {
      const std::string field = AttributeText(pair, "field");
      const auto& set = ValuesOf(field);
      if (set) CheckColumn(map_values, table, field, AttributeText(pair, "column"), *set);
    }
  }

  void CheckColumn(const Element* map_values, const Element* table, const std::string& field,
                   const std::string& column, const ValueSet& set) {
    const std::string output = AttributeText(map_values, "outputColumn");
    ValueSet mapped{set.numeric, {}};
    const Element* first = nullptr;
    std::vector<std::string> unlisted;
    for (const Element* row : Children(table, "row")) {
      const auto key = CellOf(row, column);
      if (!key) continue;
      if (CellOf(row, output)) mapped.Add(*key);
      if (!set.Holds(*key)) {
        if (unlisted.empty()) first = row;
        unlisted.push_back(fmt::format("\"{}\"", *key));
      }
    }
    if (!unlisted.empty()) {
      findings_.Add("unlisted-table-key", first,
                    fmt::format("\"{}\" has no category {}", field, Listed(unlisted)));
    }
    if (FindAttribute(map_values, "defaultValue")) return;
    for (const std::string& value : set.values) {
      if (mapped.Holds(value)) continue;
      findings_.Add("unmapped-category", map_values,
                    fmt::format("the table gives nothing for \"{}\" of \"{}\", and has no default",
                                value, field));
    }
  }

  void CheckTargetCategories() {
    const auto& machines = examined_.numbers.machines;
    if (!examined_.document.classification || machines.empty()) return;
    for (const std::string& category : examined_.document.categories) {
      const bool named = std::any_of(machines.begin(), machines.end(), [&](const auto& machine) {
        const Element* response =
            FindChild(FindChild(machine.element, "Extension"), "ResponseCategory");
        return machine.target == category || machine.alternate == category ||
               AttributeText(response, "response") == category ||
               AttributeText(response, "nonResponse") == category;
      });
      if (named) continue;
      findings_.Add("category-never-predicted", graph_.DataField(examined_.document.target),
                    fmt::format("no machine names the category \"{}\"", category));
    }
  }

  const Examined& examined_;
  FindingList& findings_;
  FieldGraph graph_;
  std::unordered_map<std::string, std::optional<ValueSet>> values_;
};

}  // namespace

void CheckCategories(const Examined& examined, FindingList& findings) {
  CategoryChecks(examined, findings).Run();
}

}  // namespace svmscore::app
