// MapValues: a row of a table is found by the values of one or several fields, and one of its cells
// is the result.
#include <utility>
#include <vector>

#include "host/scoring_log.h"
#include "host/transform/compile.h"
#include "host/transform/conversion.h"
#include "host/transform/inline_table.h"
#include "host/transform/table_index.h"

namespace svmscore::transform {
namespace {

struct Key {
  int slot;
  KeyColumn column;
};

class MapValues : public Expression {
 public:
  MapValues(std::vector<Key> keys, FieldType type) : keys_(std::move(keys)), type_(type) {}

  void SetReplacements(const std::optional<std::string>& map_missing_to,
                       const std::optional<std::string>& otherwise) {
    if (map_missing_to) map_missing_to_ = FromDocument(*map_missing_to, type_, pool_);
    if (otherwise) default_ = FromDocument(*otherwise, type_, pool_);
  }

  // False where there is a row of the same keys. A row that lacks a key, or whose key is no value
  // of its field, is never found.
  bool AddRow(Cells keys, const std::optional<std::string>& output) {
    row_.clear();
    for (std::size_t i = 0; i < keys_.size(); ++i) {
      const int id = keys[i] ? keys_[i].column.Add(*keys[i]) : -1;
      if (id < 0) return true;
      row_.push_back(id);
    }
    if (!index_.Add(row_, static_cast<int>(outputs_.size()))) return false;
    outputs_.push_back(output ? FromDocument(*output, type_, pool_) : Value::Missing());
    return true;
  }

  Value Evaluate(const Frame& frame) const override {
    for (const Key& key : keys_) {
      if (frame.slots[key.slot].IsMissing()) return map_missing_to_;
    }
    int node = 0;
    for (const Key& key : keys_) {
      const Value& value = frame.slots[key.slot];
      if (value.IsInvalid()) return value;
      const int id = node < 0 ? -1 : key.column.Find(value, frame.arena);
      node = id < 0 ? -1 : index_.Step(node, id);
    }
    return node < 0 || outputs_.empty() ? default_ : outputs_[static_cast<std::size_t>(node)];
  }

  void ConvertFixed(FieldType type) override {
    type_ = type;
    map_missing_to_ = Convert(map_missing_to_, type, pool_);
    default_ = Convert(default_, type, pool_);
    for (Value& output : outputs_) output = Convert(output, type, pool_);
  }

 private:
  std::vector<Key> keys_;
  FieldType type_;
  Arena pool_;
  TableIndex index_;
  std::vector<Value> outputs_;
  std::vector<int> row_;  // while rows are added
  Value map_missing_to_;
  Value default_;
};

void AddRows(const Element* table, std::vector<std::string> columns, const std::string& output,
             MapValues& map) {
  const std::size_t keys = columns.size();
  columns.push_back(output);
  bool told = false;
  ForEachRow(table, columns, columns.size(), [&](const Element* row, Cells cells) {
    if (!map.AddRow(cells.first(keys), cells[keys])) {
      std::string key;
      for (const auto& cell : cells.first(keys)) {
        key += (key.empty() ? "" : ", ") + cell.value_or("");
      }
      Refuse(row, "there are two rows of the key " + key);
    }
    if (cells[keys] || told) return;
    told = true;
    MCZandor_850::ScoringLog::GetInstance().TraceText(
        1, "A row of MapValues has no cell %s: its result is missing", output.c_str());
  });
}

}  // namespace

Compiled CompileMapValues(const Element* element, const Context& context) {
  const std::string output = RequiredAttribute(element, "outputColumn");
  const auto type = TypeAttribute(element, "dataType").value_or(FieldType{DataType::kString, 0});
  std::vector<Key> keys;
  std::vector<std::string> columns;
  for (const Element* child = FirstChild(element); child != nullptr; child = NextSibling(child)) {
    if (IsNamed(child, "InlineTable") || IsNamed(child, "TableLocator")) continue;
    if (!IsNamed(child, "FieldColumnPair")) RefuseKind(child);
    const Field field = context.FieldOf(child, "field");
    keys.push_back({field.slot, KeyColumn(field.type)});
    columns.push_back(RequiredAttribute(child, "column"));
  }
  const Element* table = InlineTableOf(element);
  if (table != nullptr && keys.empty()) Refuse(element, "there is a table, but no FieldColumnPair");
  auto map = std::make_unique<MapValues>(std::move(keys), type);
  map->SetReplacements(Attribute(element, "mapMissingTo"), Attribute(element, "defaultValue"));
  if (table != nullptr) AddRows(table, std::move(columns), output, *map);
  return map;
}

}  // namespace svmscore::transform
