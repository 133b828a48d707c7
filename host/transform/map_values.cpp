// MapValues: a row of a table is found by the values of one or several fields, and one of its cells
// is the result.
#include <algorithm>
#include <utility>
#include <vector>

#include "host/model/scoring_log.h"
#include "host/transform/compile_expression.h"
#include "host/transform/table/inline_table.h"
#include "host/transform/table/table_index.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

struct Key {
  int slot;
  KeyColumn column;
};

class MapValues : public Expression {
 public:
  explicit MapValues(std::vector<Key> keys) : keys_(std::move(keys)) {}

  // Holds the texts of the values that are set.
  Arena& Pool() { return pool_; }
  void SetReplacements(const Value& map_missing_to, const Value& otherwise) {
    map_missing_to_ = map_missing_to;
    default_ = otherwise;
  }

  // False where a row has the same keys already. A row that lacks a key, or whose key is not a
  // value of its field, is never found.
  bool AddRow(Cells keys, const Value& output) {
    row_.clear();
    for (std::size_t i = 0; i < keys_.size(); ++i) {
      const bool given = i < keys.size() && keys[i].column == i;
      const int id = given ? keys_[i].column.Add(keys[i].text) : -1;
      if (id < 0) return true;
      row_.push_back(id);
    }
    if (!index_.Add(row_, static_cast<int>(outputs_.size()))) return false;
    outputs_.push_back(output);
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

 private:
  std::vector<Key> keys_;
  Arena pool_;
  TableIndex index_;
  std::vector<Value> outputs_;
  std::vector<int> row_;  // while rows are added
  Value map_missing_to_;
  Value default_;
};

// Texts of the document as results; missing where the document gives none.
class Results {
 public:
  Results(const Element* element, const Context& context, Arena& pool)
      : type_(FindDataType(element, "dataType").value_or(FieldType{DataType::kString, 0})),
        context_(context),
        pool_(pool) {}

  Value Read(const Element* at, const std::string& what,
             std::optional<std::string_view> text) const {
    return text ? context_.Fixed(at, what, *text, type_, pool_) : Value::Missing();
  }

 private:
  const FieldType type_;
  const Context& context_;
  Arena& pool_;
};

struct Columns {
  std::vector<std::string> names;                // those of the keys, then that of the output
  std::vector<std::optional<FieldType>> fields;  // the types of the keys' fields
};

std::string ListOf(Cells keys) {
  constexpr std::size_t kShown = 10;
  std::string list;
  for (const Cell& key : keys.first(std::min(keys.size(), kShown))) {
    list += (list.empty() ? "" : ", ") + std::string(key.text);
  }
  if (keys.size() > kShown) list += " and " + std::to_string(keys.size() - kShown) + " more";
  return list;
}

void AddRows(const Element* table, const Columns& columns, const Results& results, MapValues& map) {
  const std::size_t output = columns.fields.size();
  std::vector<std::string> what;
  for (const std::string& name : columns.names) what.push_back("the cell " + name);
  bool told = false;
  ForEachRow(table, columns.names, columns.names.size(), [&](const Element* row, Cells cells) {
    const auto result = TextOf(cells, output);
    const Cells keys = cells.first(cells.size() - (result ? 1 : 0));
    for (const Cell& key : keys) {
      CheckMoment(row, what[key.column], key.text, columns.fields[key.column]);
    }
    if (!map.AddRow(keys, results.Read(row, what[output], result))) {
      RefuseContent(row, "there are two rows with the key " + ListOf(keys));
    }
    if (result || told) return;
    told = true;
    MCZandor_850::ScoringLog::GetInstance().TraceText(
        1, "A row of MapValues has no cell %s: its result is missing",
        columns.names.back().c_str());
  });
}

}  // namespace

Compiled CompileMapValues(const Element* element, const Context& context) {
  const std::string output = RequireAttribute(element, "outputColumn");
  std::vector<Key> keys;
  Columns columns;
  for (const Element* child = FirstContent(element); child != nullptr; child = NextContent(child)) {
    if (IsNamed(child, "InlineTable") || IsNamed(child, "TableLocator")) continue;
    if (!IsNamed(child, "FieldColumnPair")) RefuseKind(child);
    const Field field = context.FieldOf(child, "field");
    keys.push_back({field.slot, KeyColumn(field.type)});
    columns.names.push_back(RequireAttribute(child, "column"));
    columns.fields.push_back(field.type);
  }
  columns.names.push_back(output);
  const Element* table = InlineTableOf(element);
  if (table != nullptr && keys.empty())
    RefuseContent(element, "there is a table, but no FieldColumnPair");
  auto map = std::make_unique<MapValues>(std::move(keys));
  const Results results(element, context, map->Pool());
  map->SetReplacements(
      results.Read(element, "mapMissingTo", FindAttribute(element, "mapMissingTo")),
      results.Read(element, "defaultValue", FindAttribute(element, "defaultValue")));
  if (table != nullptr) AddRows(table, columns, results, *map);
  return map;
}

}  // namespace svmscore::transform
