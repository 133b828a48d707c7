#include "host/transform/build_dictionary.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/model/message_codes.h"
#include "host/model/scoring_log.h"
#include "host/model/ss_exception.h"
#include "host/transform/definitions.h"
#include "host/transform/dependency_order.h"
#include "host/transform/derived_fields.h"
#include "host/transform/input_fields.h"
#include "host/transform/table/inline_table.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

using MCZandor_850::ScoreDictionary;
using MCZandor_850::ScoreDictVar;
using MCZandor_850::SSException;
using MCZandor_850::TransformationDictionary;
using MCZandor_850::TransformVar;

// How many names of a circle an error shows.
constexpr std::size_t kNamesShown = 12;

struct Derived {
  const Element* element = nullptr;
  std::string name;
  OpType op_type = OpType::kContinuous;
  FieldType type;
  const Element* expression = nullptr;
  std::vector<int> needs;   // derived fields, by position
  std::vector<int> inputs;  // by their index in Builder::inputs_
  std::shared_ptr<const ValueOrder> order;
  std::optional<SSException> failure;  // why it cannot be computed
};

OpType UsualOpType(DataType type) {
  switch (type) {
    case DataType::kString:
    case DataType::kBoolean:
      return OpType::kCategorical;
    case DataType::kDate:
    case DataType::kTime:
    case DataType::kDateTime:
      return OpType::kOrdinal;
    default:
      return OpType::kContinuous;
  }
}

// Compiles the derived fields of one container. Names resolve in any order of the document.
class Builder : public Scope {
 public:
  Builder(const Element* container, const ScoreDictionary* inputs)
      : container_(container), dictionary_(inputs), needed_(FindNeededByModel(Document())) {}

  std::unique_ptr<TransformationDictionary> Build();

  std::optional<Field> Find(const std::string& name) override;

 private:
  const xercesc::DOMDocument* Document() const { return container_->getOwnerDocument(); }
  // True where the derived field takes the place of the input of the same name.
  bool Hides(const Derived& derived) const {
    return IsLocal(derived.element) ||
           (needed_.has_schema && !needed_.schema.contains(derived.name));
  }

  // Calls `step`. What it throws is noted, as the failure of `derived` (if any), where a model may
  // do without it.
  template <typename Step>
  void Try(Derived* derived, const Step& step);
  void Fail(const SSException& reason, Derived* derived);

  void Collect();
  void Declare(const Element* element);
  void ReadDeclaration(Derived& derived) const;
  void Compile();
  void CompileDefinitions(Definitions& definitions);
  void ReadOrder(Derived& derived) const;
  std::unique_ptr<TransformVar> MakeVar(Derived& derived);
  void AddEncodedValues(const Derived& derived, TransformVar& var) const;
  // Those that the model needs, and those that they are computed from.
  std::vector<bool> Needed() const;
  // The needed fields, each after those that it is computed from.
  std::vector<int> Sort(const std::vector<bool>& needed);
  std::optional<SSException> FindCircle(const DependencyOrder& order) const;
  void CheckInputs(const Derived& derived);

  Field FieldOfInput(const ScoreDictVar* var);
  Field FieldOfDerived(int position);

  const Element* container_;
  const ScoreDictionary* dictionary_;
  const NeededByModel needed_;
  std::vector<Derived> derived_;
  std::unordered_map<std::string, int> positions_;
  std::vector<std::unique_ptr<TransformVar>> vars_;
  std::vector<std::unique_ptr<Expression>> expressions_;
  std::vector<const ScoreDictVar*> inputs_;
  std::unordered_map<const ScoreDictVar*, Field> input_fields_;
  int current_ = 0;  // the position of the derived field that is being compiled
  std::vector<Remark> remarks_;
};

template <typename Step>
void Builder::Try(Derived* derived, const Step& step) {
  try {
    step();
  } catch (const SSException& reason) {
    Fail(reason, derived);
  }
}

void Builder::Fail(const SSException& reason, Derived* derived) {
  if (needed_.model == nullptr) throw SSException(reason);
  remarks_.push_back({Remark::Kind::kNotComputed, reason});
  if (derived != nullptr && !derived->failure) derived->failure = reason;
}

void Builder::Declare(const Element* element) {
  const std::string name = RequireAttribute(element, "name");
  const auto [known, is_new] = positions_.emplace(name, static_cast<int>(derived_.size()));
  if (!is_new) {
    return Try(&derived_[static_cast<std::size_t>(known->second)],
               [&] { ThrowAt(element, code::kDuplicateName, name, NameOf(element)); });
  }
  Derived& derived = derived_.emplace_back();
  derived.element = element;
  derived.name = name;
  Try(&derived, [&] { ReadDeclaration(derived); });
}

void Builder::ReadDeclaration(Derived& derived) const {
  const Element* element = derived.element;
  const auto op_type = FindOpType(element, "optype");
  auto type = FindDataType(element, "dataType");
  if (!type) {
    if (!op_type) ThrowAt(element, code::kAttributeMissing, "dataType", NameOf(element));
    type = FieldType{*op_type == OpType::kContinuous ? DataType::kDouble : DataType::kString, 0};
  }
  derived.type = *type;
  derived.op_type = op_type.value_or(UsualOpType(type->data));
  derived.expression = OnlyExpression(element, "Value");
}

void Builder::Collect() {
  for (const Element* child = FirstContent(container_); child != nullptr;
       child = NextContent(child)) {
    Try(nullptr, [&] {
      if (IsNamed(child, "DerivedField")) {
        Declare(child);
      } else if (!IsNamed(child, "DefineFunction")) {
        RefuseKind(child);
      }
    });
  }
}

std::unique_ptr<TransformVar> Builder::MakeVar(Derived& derived) {
  // The only input that the field is computed from directly, if it is computed from nothing else.
  const bool single = derived.inputs.size() == 1 && derived.needs.empty() && !derived.failure;
  auto var = std::make_unique<TransformVar>(
      derived.name, derived.op_type, derived.type,
      single ? inputs_[static_cast<std::size_t>(derived.inputs[0])]->GetName() : std::string());
  if (single) AddEncodedValues(derived, *var);
  return var;
}

void Builder::AddEncodedValues(const Derived& derived, TransformVar& var) const {
  const ScoreDictVar& source = *inputs_[static_cast<std::size_t>(derived.inputs[0])];
  if (IsNamed(derived.expression, "NormDiscrete")) {
    var.AddEncodedValue(source.ValueFromText(RequireAttribute(derived.expression, "value")));
    return;
  }
  if (!IsNamed(derived.expression, "MapValues")) return;
  const Element* table = FindChild(derived.expression, "InlineTable");
  const Element* pair = FindChild(derived.expression, "FieldColumnPair");
  if (table == nullptr || pair == nullptr) return;
  for (const Element* next = NextContent(pair); next != nullptr; next = NextContent(next)) {
    if (IsNamed(next, "FieldColumnPair")) return;  // one key among several does not encode a value
  }
  ForEachRow(table, {RequireAttribute(pair, "column")}, 0, [&](const Element*, Cells cells) {
    if (!cells.empty()) var.AddEncodedValue(source.ValueFromText(cells[0].text));
  });
}

Field Builder::FieldOfInput(const ScoreDictVar* var) {
  const auto known = input_fields_.find(var);
  if (known != input_fields_.end()) return known->second;
  Field field = FieldOfVariable(*var, static_cast<int>(derived_.size() + inputs_.size()));
  inputs_.push_back(var);
  input_fields_.emplace(var, field);
  return field;
}

Field Builder::FieldOfDerived(int position) {
  const Derived& derived = derived_[static_cast<std::size_t>(position)];
  return {position, derived.type, derived.op_type == OpType::kOrdinal, derived.order};
}

// A local derived field takes precedence over an input of its name, and an input over a derived
// field of the whole document. A field that refers to its own name means the input of that name.
std::optional<Field> Builder::Find(const std::string& name) {
  const ScoreDictVar* input = dictionary_ == nullptr ? nullptr : dictionary_->FindVar(name);
  const auto found = positions_.find(name);
  const bool derived = found != positions_.end();
  const auto here = static_cast<std::size_t>(current_);
  if (derived && (input == nullptr || (found->second != current_ &&
                                       Hides(derived_[static_cast<std::size_t>(found->second)])))) {
    derived_[here].needs.push_back(found->second);
    return FieldOfDerived(found->second);
  }
  if (input == nullptr) return std::nullopt;
  const Field field = FieldOfInput(input);
  const int index = field.slot - static_cast<int>(derived_.size());
  std::vector<int>& inputs = derived_[here].inputs;
  if (std::find(inputs.begin(), inputs.end(), index) == inputs.end()) inputs.push_back(index);
  return field;
}

void Builder::CompileDefinitions(Definitions& definitions) {
  definitions.AddFrom(container_);
  if (IsNamed(container_, "LocalTransformations")) definitions.AddFrom(Document());
  definitions.CompileAll();
  for (const SSException& reason : definitions.Failures()) Fail(reason, nullptr);
}

void Builder::ReadOrder(Derived& derived) const {
  const Element* value = FindChild(derived.element, "Value");
  if (value == nullptr || derived.op_type != OpType::kOrdinal) return;
  ScoreDictVar listed(derived.name, derived.op_type, derived.type);
  for (; value != nullptr; value = NextContent(value)) {
    if (!IsNamed(value, "Value")) continue;
    const std::string text = RequireAttribute(value, "value");
    listed.AddCategory(*listed.ValueFromText(text), text);
  }
  derived.order = std::make_shared<const ValueOrder>(listed);
}

void Builder::Compile() {
  Definitions definitions;
  CompileDefinitions(definitions);
  // The order of an ordinal field's values must be known wherever it is used.
  for (Derived& derived : derived_) {
    if (!derived.failure) Try(&derived, [&] { ReadOrder(derived); });
  }
  for (Derived& derived : derived_) {
    current_ = static_cast<int>(expressions_.size());
    std::unique_ptr<Expression>& expression = expressions_.emplace_back();
    if (derived.failure) continue;
    Try(&derived, [&] {
      expression = CompileExpression(derived.expression, *this, definitions, derived.type);
    });
  }
}

std::vector<int> Builder::Sort(const std::vector<bool>& needed) {
  std::vector<std::vector<int>> needs;
  needs.reserve(derived_.size());
  for (const Derived& derived : derived_) needs.push_back(derived.needs);
  DependencyOrder order = SortByDependency(needs);
  const auto circle = FindCircle(order);
  if (!circle) return std::move(order.sequence);
  for (std::size_t i = 0; i < needs.size(); ++i) {
    if (!needed[i]) needs[i].clear();
  }
  order = SortByDependency(needs);
  if (const auto of_needed = FindCircle(order)) throw SSException(*of_needed);
  Fail(*circle, nullptr);
  return std::move(order.sequence);
}

std::optional<SSException> Builder::FindCircle(const DependencyOrder& order) const {
  if (order.cycle.empty()) return std::nullopt;
  std::string chain;
  for (std::size_t i = 0; i < order.cycle.size(); ++i) {
    const bool last = i + 1 == order.cycle.size();
    if (i == kNamesShown && !last) chain += " -> ...";
    if (i >= kNamesShown && !last) continue;
    if (i > 0) chain += " -> ";
    chain += derived_[static_cast<std::size_t>(order.cycle[i])].name;
  }
  SSException circle(MCZandor_850::gErrorFormater);
  circle.PutErrorMessage(code::kDerivedCycle, chain);
  circle.SetElement(derived_[static_cast<std::size_t>(order.cycle[0])].element);
  return circle;
}

std::vector<bool> Builder::Needed() const {
  std::vector<bool> needed(derived_.size(), needed_.model == nullptr);
  std::vector<int> found;
  const auto add = [&](int position) {
    if (needed[static_cast<std::size_t>(position)]) return;
    needed[static_cast<std::size_t>(position)] = true;
    found.push_back(position);
  };
  for (std::size_t i = 0; i < derived_.size(); ++i) {
    if (needed_.names.contains(derived_[i].name)) add(static_cast<int>(i));
  }
  while (!found.empty()) {
    const Derived& derived = derived_[static_cast<std::size_t>(found.back())];
    found.pop_back();
    for (const int need : derived.needs) add(need);
  }
  return needed;
}

void Builder::CheckInputs(const Derived& derived) {
  if (!needed_.has_schema) return;
  for (const int index : derived.inputs) {
    const std::string& name = inputs_[static_cast<std::size_t>(index)]->GetName();
    if (needed_.schema.contains(name)) continue;
    SSException reason(MCZandor_850::gErrorFormater);
    reason.PutErrorMessage(code::kBadContent,
                           "the field " + name + ", which " + derived.name +
                               " is computed from and the MiningSchema leaves out,",
                           NameOf(derived.element));
    reason.SetElement(derived.element);
    remarks_.push_back({Remark::Kind::kNotInSchema, reason});
  }
}

std::unique_ptr<TransformationDictionary> Builder::Build() {
  Collect();
  Compile();
  const std::vector<bool> needed = Needed();
  for (std::size_t i = 0; i < derived_.size(); ++i) {
    if (needed[i] && derived_[i].failure) throw SSException(*derived_[i].failure);
  }
  const std::vector<int> sequence = Sort(needed);

  std::vector<Program::Step> steps;
  std::vector<bool> read(inputs_.size(), false);
  std::int64_t computed = 0;
  for (const int at : sequence) {
    const auto position = static_cast<std::size_t>(at);
    if (!needed[position]) continue;
    const Derived& derived = derived_[position];
    CheckInputs(derived);
    computed += expressions_[position]->Size();
    if (computed > kMostComputed) {
      RefuseContent(derived.element, "the fields up to this one evaluate more than " +
                                         std::to_string(kMostComputed) + " expressions for a case");
    }
    std::vector<int> reads = derived.needs;
    for (const int index : derived.inputs) {
      read[static_cast<std::size_t>(index)] = true;
      reads.push_back(static_cast<int>(derived_.size()) + index);
    }
    steps.push_back({at, derived.type, derived.name, derived.order, std::move(reads)});
  }
  std::vector<Program::Input> inputs;
  for (std::size_t i = 0; i < inputs_.size(); ++i) {
    if (read[i]) inputs.push_back({inputs_[i], static_cast<int>(derived_.size() + i)});
  }
  const std::size_t slots = derived_.size() + inputs_.size();
  auto program = std::make_unique<Program>(std::move(expressions_), std::move(inputs),
                                           std::move(steps), slots);
  auto dictionary =
      std::make_unique<TransformationDictionary>(std::move(program), std::move(remarks_));
  for (Derived& derived : derived_) {
    dictionary->AddVar(MakeVar(derived));
    ScoreDictVar* input = dictionary_ == nullptr ? nullptr : dictionary_->FindVar(derived.name);
    if (input == nullptr) continue;
    const bool hides = Hides(derived);
    if (hides) input->SetHiddenByDerived(true);
    MCZandor_850::ScoringLog::GetInstance().TraceText(
        1, "Derived field %s has the name of an input and %s", derived.name.c_str(),
        hides ? "takes its place" : "is not seen: the input takes precedence");
  }
  // A categorical predictor makes its category one of the derived field's.
  for (const auto& [name, category] : needed_.categories) {
    if (TransformVar* var = dictionary->FindDerived(name)) {
      var->AddCategory(*var->ValueFromText(category), category);
    }
  }
  return dictionary;
}

}  // namespace

bool IsLocal(const Element* derived_field) {
  const auto* parent = static_cast<const Element*>(derived_field->getParentNode());
  return IsNamed(parent, "LocalTransformations") ||
         FindAttribute(derived_field, "x-scope").value_or("") == "local";
}

std::unique_ptr<TransformationDictionary> BuildDictionary(const Element* container,
                                                          const ScoreDictionary* inputs) {
  return Builder(container, inputs).Build();
}

}  // namespace svmscore::transform
