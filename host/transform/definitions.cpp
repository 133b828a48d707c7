#include "host/transform/definitions.h"

#include <utility>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/compile_expression.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {

using MCZandor_850::SSException;

namespace {

// The names that a function's body may use: its parameters, by position.
class ParameterScope : public Scope {
 public:
  void Add(const Element* element, const std::string& name, std::optional<FieldType> type) {
    Field field;
    field.slot = static_cast<int>(fields_.size());
    field.type = type;
    if (!fields_.emplace(name, std::move(field)).second) {
      ThrowAt(element, code::kDuplicateName, name, NameOf(element));
    }
  }
  std::optional<Field> Find(const std::string& name) override {
    const auto found = fields_.find(name);
    if (found == fields_.end()) return std::nullopt;
    return found->second;
  }

 private:
  std::unordered_map<std::string, Field> fields_;
};

}  // namespace

UserFunction::UserFunction(Types parameters, std::optional<FieldType> result,
                           std::unique_ptr<Expression> body)
    : parameters_(std::move(parameters)), result_(result), body_(std::move(body)) {}

Value UserFunction::Call(std::span<Value> arguments, Arena& arena) const {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (parameters_[i]) arguments[i] = Convert(arguments[i], *parameters_[i], arena);
  }
  const Value value = body_->Evaluate({arguments.data(), arena});
  return result_ ? Convert(value, *result_, arena) : value;
}

Definitions::Definitions() = default;
Definitions::~Definitions() = default;

void Definitions::AddFrom(const Element* container) {
  if (container == nullptr) return;
  for (const Element* child = FirstContent(container); child != nullptr;
       child = NextContent(child)) {
    if (!IsNamed(child, "DefineFunction")) continue;
    Definition* first = nullptr;
    try {
      const std::string name = RequireAttribute(child, "name");
      const auto [known, is_new] = definitions_.emplace(name, Definition{child, nullptr});
      if (!is_new) {
        first = &known->second;
        ThrowAt(child, code::kDuplicateName, name, NameOf(child));
      }
      order_.push_back(name);
    } catch (const SSException& reason) {
      Fail(reason, first);
    }
  }
}

void Definitions::Fail(const SSException& reason, Definition* definition) {
  // A caller fails with what it calls, which has been noted.
  const bool noted = !failures_.empty() && failures_.back().GetElement() == reason.GetElement();
  if (!noted) failures_.push_back(reason);
  if (definition != nullptr && !definition->failure) definition->failure = failures_.size() - 1;
}

void Definitions::AddFrom(const xercesc::DOMDocument* document) {
  const Element* root = document == nullptr ? nullptr : document->getDocumentElement();
  if (root != nullptr) AddFrom(FindChild(root, "TransformationDictionary"));
}

void Definitions::CompileAll() {
  for (const std::string& name : order_) {
    const Definition& definition = definitions_.at(name);
    if (definition.failure) continue;
    try {
      Find(name, definition.element, 0);
    } catch (const SSException&) {
      continue;  // noted
    }
  }
}

std::shared_ptr<const UserFunction> Definitions::Find(const std::string& name,
                                                      const Element* caller, int depth) {
  const auto found = definitions_.find(name);
  if (found == definitions_.end()) return nullptr;
  Definition& definition = found->second;
  if (definition.failure) throw SSException(failures_[*definition.failure]);
  if (definition.function == nullptr) {
    if (definition.in_work) RefuseContent(caller, "function " + name + " calls itself");
    definition.in_work = true;
    try {
      Compile(definition, depth);
    } catch (const SSException& reason) {
      Fail(reason, &definition);
      throw;
    }
    definition.in_work = false;
  }
  return definition.function;
}

void Definitions::Compile(Definition& definition, int depth) {
  const Element* element = definition.element;
  const auto result = FindDataType(element, "dataType");
  ParameterScope scope;
  UserFunction::Types types;
  for (const Element* child = FirstContent(element); child != nullptr; child = NextContent(child)) {
    if (!IsNamed(child, "ParameterField")) continue;
    types.push_back(FindDataType(child, "dataType"));
    scope.Add(child, RequireAttribute(child, "name"), types.back());
  }
  if (types.empty()) RefuseContent(element, "there is no ParameterField");
  const Context context{scope, *this, depth};
  auto body = context.Compile(OnlyExpression(element, "ParameterField"), result);
  definition.function = std::make_shared<UserFunction>(std::move(types), result, std::move(body));
}

}  // namespace svmscore::transform
