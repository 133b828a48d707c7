#include "app/doctor/field_graph.h"

#include <algorithm>
#include <array>

#include "host/number_text.h"
#include "host/transcoder.h"

namespace svmscore::app {
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

// The fields that the elements below `element` refer to, and with `itself` those of its own.
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
  const auto number = numeric ? ParseNumber(value) : std::nullopt;
  return number ? FormatNumber(*number) : value;
}

std::string ValueSet::Similar(const std::string& value) const {
  const std::string folded = Folded(value);
  for (const std::string& held : values) {
    if (Folded(held) == folded) return held;
  }
  return {};
}

std::optional<std::string> CellOf(const Element* row, const std::string& column) {
  for (const Element* cell : ChildElements(row)) {
    const std::string name = NameOf(cell);
    if (name != column && name.substr(name.rfind(':') + 1) != column) continue;
    const std::string text = ElementText(cell);
    if (text.find('\n') == std::string::npos) return text;
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string::npos) return std::string();
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
  }
  return std::nullopt;
}

FieldGraph::FieldGraph(const Inspected& inspected) : inspected_(inspected) {
  for (const Element* field : Children(FindChild(inspected.root, "DataDictionary"), "DataField")) {
    data_.emplace(AttributeText(field, "name"), field);
  }
  for (const Element* field : Children(FindChild(inspected.model, "MiningSchema"), "MiningField")) {
    schema_.emplace(AttributeText(field, "name"), field);
    all_mining_.push_back(field);
  }
  for (const Element* list : {FindChild(inspected.root, "TransformationDictionary"),
                              FindChild(inspected.model, "LocalTransformations")}) {
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
  for (const Element* field : inspected_.vectors.Fields()) {
    const bool reference = svmscore::NameOf(field) == "FieldRef";
    open.push_back(AttributeText(field, reference ? "field" : "name"));
  }
  if (outputs) {
    for (const char* list : {"Output", "ModelVerification"}) {
      const bool verification = *list == 'M';
      for (std::string& name : References(FindChild(inspected_.model, list), false)) {
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

std::optional<ValueSet> FieldGraph::ValuesOf(const std::string& name) const {
  return Values(name, 0);
}

std::optional<ValueSet> FieldGraph::Values(const std::string& name, int depth) const {
  if (depth > kDeepest) return std::nullopt;
  const Element* derived = Derived(name);
  // One that hides an input of its own name may give anything.
  if (derived != nullptr && DataField(name) != nullptr) return std::nullopt;
  return derived != nullptr ? Computed(derived, depth) : Declared(name);
}

std::optional<ValueSet> FieldGraph::Declared(const std::string& name) const {
  const Element* field = DataField(name);
  if (field == nullptr || FindChild(field, "Interval") != nullptr) return std::nullopt;
  // Values of other types have several spellings.
  if (!IsNumeric(field) && AttributeText(field, "dataType") != "string") return std::nullopt;
  ValueSet set{IsNumeric(field), {}};
  bool listed = false;
  for (const Element* value : Children(field, "Value")) {
    const std::string property = AttributeText(value, "property");
    if (!property.empty() && property != "valid") continue;
    listed = true;
    AddAttribute(value, "value", set);
  }
  if (!listed) return std::nullopt;
  const Element* mining = MiningField(name);
  if (AttributeText(mining, "invalidValueTreatment") == "asIs") return std::nullopt;
  AddAttribute(mining, "missingValueReplacement", set);
  AddAttribute(mining, "invalidValueReplacement", set);
  return set;
}

std::optional<ValueSet> FieldGraph::Computed(const Element* derived, int depth) const {
  const Element* expression = ExpressionOf(derived);
  if (expression == nullptr) return std::nullopt;
  const std::string kind = svmscore::NameOf(expression);
  std::optional<ValueSet> set = ValueSet{IsNumeric(derived), {}};
  if (kind == "FieldRef") {
    const std::string source = AttributeText(expression, "field");
    set = Values(source, depth + 1);
    // Text that becomes a number, or a number that becomes text, may change its spelling.
    if (set && set->numeric != IsNumeric(derived)) return std::nullopt;
  } else if (kind == "Constant") {
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
    const std::string column = AttributeText(expression, "outputColumn");
    bool any = false;
    for (const Element* row : Children(FindChild(expression, "InlineTable"), "row")) {
      any = true;
      if (const auto cell = CellOf(row, column)) set->Add(*cell);
    }
    if (!any) return std::nullopt;
    AddAttribute(expression, "defaultValue", *set);
  } else {
    return std::nullopt;
  }
  if (set) AddAttribute(expression, "mapMissingTo", *set);
  return set;
}

}  // namespace svmscore::app
