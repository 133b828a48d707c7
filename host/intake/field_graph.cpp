#include "host/intake/field_graph.h"

#include <algorithm>
#include <array>

#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "host/transform/table/inline_table.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

// A chain of derived fields longer than this is taken to give anything.
constexpr int kDeepest = 50;

constexpr const char* kBlanks = " \t\r\n";
constexpr std::array kReferences = {"field", "textField", "groupField"};
constexpr std::array kNumericTypes = {"integer", "float", "double"};

bool IsNumeric(const Element* field) {
  const std::string type = AttributeText(field, "dataType");
  return std::find(kNumericTypes.begin(), kNumericTypes.end(), type) != kNumericTypes.end();
}

// Without blanks around it and in small letters (ASCII).
std::string Folded(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string::npos) return {};
  std::string folded = text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
  for (char& c : folded) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return folded;
}

// The fields that the elements below `element` refer to, and with `itself` also those that
// `element` refers to.
std::vector<std::string> References(const Element* element, bool itself) {
  std::vector<std::string> names;
  const auto add = [&names](const Element* at) {
    for (const char* attribute : kReferences) {
      if (auto name = FindAttribute(at, attribute)) names.push_back(*std::move(name));
    }
  };
  if (itself) add(element);
  ForEachBelow(element, add);
  return names;
}

const Element* ExpressionOf(const Element* derived) {
  for (const Element* child : ChildElements(derived)) {
    const std::string name = NameOf(child);
    if (name != "Extension" && name != "Value" && name != "Interval") return child;
  }
  return nullptr;
}

void AddAttribute(const Element* element, const char* attribute, ValueSet& set) {
  if (const auto value = FindAttribute(element, attribute)) set.Add(*value);
}

}  // namespace

std::string ValueSet::Key(const std::string& value) const {
  const auto number = numeric_ ? ParseNumber(value) : std::nullopt;
  return number ? FormatNumber(*number) : value;
}

void ValueSet::Add(const std::string& value) {
  std::string key = Key(value);
  if (!HoldsKey(key)) values_.insert(std::move(key));
}

std::string ValueSet::Similar(const std::string& value) const {
  if (folded_.empty()) {
    for (const std::string& held : values_) folded_.emplace(Folded(held), held);
  }
  const auto found = folded_.find(Folded(value));
  if (found != folded_.end()) return found->second;
  return base_ == nullptr ? std::string() : base_->Similar(value);
}

std::vector<std::string> ValueSet::Without(const ValueSet& other, std::size_t count) const {
  std::vector<std::string> found;
  for (const ValueSet* set = this; set != nullptr; set = set->base_.get()) {
    for (const std::string& value : set->values_) {
      if (found.size() == count) return found;
      if (!other.Holds(value)) found.push_back(value);
    }
  }
  return found;
}

FieldGraph::FieldGraph(const Element* root, const Element* model) : model_(model) {
  for (const Element* field : Children(FindChild(root, "DataDictionary"), "DataField")) {
    data_.emplace(AttributeText(field, "name"), field);
  }
  for (const Element* field : Children(FindChild(model, "MiningSchema"), "MiningField")) {
    schema_.emplace(AttributeText(field, "name"), field);
    all_mining_.push_back(field);
  }
  for (const Element* list :
       {FindChild(root, "TransformationDictionary"), FindChild(model, "LocalTransformations")}) {
    for (const Element* field : Children(list, "DerivedField")) {
      derived_.emplace(AttributeText(field, "name"), field);
      all_derived_.push_back(field);
    }
  }
}

const Element* FieldGraph::Find(const Elements& elements, const std::string& name) {
  const auto found = elements.find(name);
  return found == elements.end() ? nullptr : found->second;
}

bool FieldGraph::IsActive(const std::string& name) const {
  const Element* field = MiningField(name);
  return field != nullptr && FindAttribute(field, "usageType").value_or("active") == "active";
}

std::unordered_set<std::string> FieldGraph::Needed(bool outputs) const {
  std::vector<std::string> open;
  const Element* positions = FindChild(FindChild(model_, "VectorDictionary"), "VectorFields");
  for (const Element* field : ChildElements(positions)) {
    const std::string kind = NameOf(field);
    if (kind == "FieldRef") open.push_back(AttributeText(field, "field"));
    if (kind == "CategoricalPredictor") open.push_back(AttributeText(field, "name"));
  }
  if (outputs) {
    for (const char* list : {"Output", "ModelVerification"}) {
      const bool verification = *list == 'M';
      for (std::string& name : References(FindChild(model_, list), false)) {
        // That records give an input a value does not make it needed.
        if (!verification || Derived(name) != nullptr) open.push_back(std::move(name));
      }
    }
  }
  std::unordered_set<std::string> needed;
  while (!open.empty()) {
    const std::string name = std::move(open.back());
    open.pop_back();
    if (!needed.insert(name).second) continue;
    const Element* derived = Derived(name);
    if (derived == nullptr) continue;
    for (std::string& next : References(derived, false)) open.push_back(std::move(next));
  }
  return needed;
}

FieldGraph::Values FieldGraph::ValuesOf(const std::string& name) const {
  return ValuesAt(name, 0);
}

FieldGraph::Values FieldGraph::ValuesAt(const std::string& name, int depth) const {
  if (depth > kDeepest) return nullptr;
  const Element* derived = Derived(name);
  const Element* field = DataField(name);
  // A derived field that hides the input of its name may give anything.
  if (derived != nullptr && field != nullptr) return nullptr;
  if (derived != nullptr) return Computed(derived, depth);
  if (field == nullptr) return nullptr;
  const auto [known, is_new] = listed_.try_emplace(field);
  if (is_new) known->second = Declared(name);
  return known->second;
}

FieldGraph::Values FieldGraph::Declared(const std::string& name) const {
  const Element* field = DataField(name);
  if (FindChild(field, "Interval") != nullptr) return nullptr;
  // Values of other types have several spellings.
  if (!IsNumeric(field) && AttributeText(field, "dataType") != "string") return nullptr;
  auto set = std::make_shared<ValueSet>(IsNumeric(field));
  bool listed = false;
  for (const Element* value : Children(field, "Value")) {
    const std::string property = AttributeText(value, "property");
    if (!property.empty() && property != "valid") continue;
    listed = true;
    AddAttribute(value, "value", *set);
  }
  if (!listed) return nullptr;
  const Element* mining = MiningField(name);
  if (AttributeText(mining, "invalidValueTreatment") == "asIs") return nullptr;
  AddAttribute(mining, "missingValueReplacement", *set);
  AddAttribute(mining, "invalidValueReplacement", *set);
  return set;
}

FieldGraph::Values FieldGraph::Computed(const Element* derived, int depth) const {
  const Element* expression = ExpressionOf(derived);
  if (expression == nullptr) return nullptr;
  if (NameOf(expression) == "FieldRef") {
    Values source = ValuesAt(AttributeText(expression, "field"), depth + 1);
    // Text that becomes a number, or a number that becomes text, may change its spelling.
    if (source == nullptr || source->IsNumeric() != IsNumeric(derived)) return nullptr;
    if (!FindAttribute(expression, "mapMissingTo")) return source;
    auto set = std::make_shared<ValueSet>(source);
    AddAttribute(expression, "mapMissingTo", *set);
    return set;
  }
  const auto [known, is_new] = listed_.try_emplace(derived);
  if (is_new) known->second = FromExpression(derived, expression);
  return known->second;
}

// The values of an expression other than a reference.
FieldGraph::Values FieldGraph::FromExpression(const Element* derived,
                                              const Element* expression) const {
  const std::string kind = NameOf(expression);
  auto set = std::make_shared<ValueSet>(IsNumeric(derived));
  if (kind == "Constant") {
    set->Add(ElementText(expression));
  } else if (kind == "NormDiscrete") {
    set->Add("0");
    set->Add("1");
  } else if (kind == "Discretize") {
    for (const Element* bin : Children(expression, "DiscretizeBin")) {
      AddAttribute(bin, "binValue", *set);
    }
    AddAttribute(expression, "defaultValue", *set);
  } else if (kind == "MapValues") {
    const Element* table = FindChild(expression, "InlineTable");
    if (FindChild(table, "row") == nullptr) return nullptr;
    try {
      transform::ForEachRow(table, {AttributeText(expression, "outputColumn")}, 0,
                            [&set](const Element*, transform::Cells cells) {
                              if (!cells.empty()) set->Add(std::string(cells[0].text));
                            });
    } catch (const MCZandor_850::SSException&) {
      return nullptr;  // the document is refused for the table
    }
    AddAttribute(expression, "defaultValue", *set);
  } else {
    return nullptr;
  }
  AddAttribute(expression, "mapMissingTo", *set);
  return set;
}

}  // namespace svmscore::intake
