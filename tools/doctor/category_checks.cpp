// Tables whose keys are not the categories of their fields, and categories that no machine names.
#include <set>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "host/intake/field_graph.h"
#include "host/model/ss_exception.h"
#include "host/transform/table/inline_table.h"
#include "host/xml/transcoder.h"
#include "tools/doctor/checks.h"

namespace svmscore::tools {
namespace {

class CategoryChecks {
 public:
  CategoryChecks(const Examined& examined, FindingList& findings)
      : examined_(examined),
        findings_(findings),
        graph_(examined.document.root, examined.document.model) {}

  void Run() {
    for (const Element* list : {FindChild(examined_.document.root, "TransformationDictionary"),
                                FindChild(examined_.document.model, "LocalTransformations"),
                                FindChild(examined_.document.model, "Output")}) {
      intake::ForEachBelow(list, [this](const Element* element) {
        if (IsNamed(element, "MapValues")) CheckTable(element);
      });
    }
    CheckTargetCategories();
  }

 private:
  // The values that the field can have; determined once for each field.
  const intake::FieldGraph::Values& ValuesOf(const std::string& field) {
    const auto [found, is_new] = values_.try_emplace(field);
    if (is_new) found->second = graph_.ValuesOf(field);
    return found->second;
  }

  // A field that is looked up in a table, and the keys of the table's column for it.
  struct Key {
    std::string field;
    intake::FieldGraph::Values set;  // null: unknown, or already checked
    intake::ValueSet mapped;         // those of the set that have a result
    const Element* first_unlisted = nullptr;
    std::vector<std::string> unlisted;
  };

  void CheckTable(const Element* map_values) {
    const Element* table = FindChild(map_values, "InlineTable");
    // A table in another place is refused when the document is loaded.
    if (FindChild(map_values, "TableLocator") != nullptr) return;
    std::vector<Key> keys;
    std::vector<std::string> columns;
    std::set<std::pair<std::string, std::string>> pairs;
    for (const Element* pair : Children(map_values, "FieldColumnPair")) {
      const std::string field = AttributeText(pair, "field");
      const auto& set = ValuesOf(field);
      const std::string column = AttributeText(pair, "column");
      const bool is_new = pairs.emplace(field, column).second;
      keys.push_back(
          {field, is_new ? set : nullptr, intake::ValueSet(set && set->IsNumeric()), nullptr, {}});
      columns.push_back(column);
    }
    columns.push_back(AttributeText(map_values, "outputColumn"));
    try {
      if (table != nullptr) ReadKeys(table, columns, keys);
    } catch (const MCZandor_850::SSException&) {
      return;  // the document is refused for it
    }
    const bool has_default = FindAttribute(map_values, "defaultValue").has_value();
    for (const Key& key : keys) {
      if (key.set != nullptr) Report(map_values, has_default, key);
    }
  }

  static void ReadKeys(const Element* table, const std::vector<std::string>& columns,
                       std::vector<Key>& keys) {
    transform::ForEachRow(table, columns, 0, [&](const Element* row, transform::Cells cells) {
      const bool has_result = transform::TextOf(cells, keys.size()).has_value();
      for (const transform::Cell& cell : cells) {
        if (cell.column == keys.size()) break;
        Key& key = keys[cell.column];
        if (key.set == nullptr) continue;
        const std::string text(cell.text);
        if (!key.set->Holds(text)) {
          if (key.unlisted.empty()) key.first_unlisted = row;
          key.unlisted.push_back(fmt::format("\"{}\"", text));
        } else if (has_result) {
          key.mapped.Add(text);
        }
      }
    });
  }

  void Report(const Element* map_values, bool has_default, const Key& key) {
    if (!key.unlisted.empty()) {
      findings_.Add("unlisted-table-key", key.first_unlisted,
                    fmt::format("\"{}\" has no category {}", key.field, Listed(key.unlisted)));
    }
    const std::size_t unmapped = key.set->Size() - key.mapped.Size();
    if (has_default || unmapped == 0) return;
    std::vector<std::string> names = key.set->Without(key.mapped, kMostListed);
    for (std::string& name : names) name = fmt::format("\"{}\"", name);
    findings_.Add("unmapped-category", map_values,
                  fmt::format("the table has no value for {} of \"{}\", and no default",
                              Listed(names, unmapped - names.size()), key.field));
  }

  void CheckTargetCategories() {
    const auto& machines = examined_.numbers.machines;
    if (!examined_.document.classification || machines.empty()) return;
    std::unordered_set<std::string> named;
    for (const MachineNumbers& machine : machines) {
      const Element* response =
          FindChild(FindChild(machine.element, "Extension"), "ResponseCategory");
      named.insert({machine.target, machine.alternate, AttributeText(response, "response"),
                    AttributeText(response, "nonResponse")});
    }
    for (const std::string& category : examined_.document.categories) {
      if (named.contains(category)) continue;
      findings_.Add("category-never-predicted", graph_.DataField(examined_.document.target),
                    fmt::format("no machine names the category \"{}\"", category));
    }
  }

  const Examined& examined_;
  FindingList& findings_;
  intake::FieldGraph graph_;
  std::unordered_map<std::string, intake::FieldGraph::Values> values_;
};

}  // namespace

void CheckCategories(const Examined& examined, FindingList& findings) {
  CategoryChecks(examined, findings).Run();
}

}  // namespace svmscore::tools
