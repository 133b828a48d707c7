#include "host/transform/compile_expression.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/transform/value/conversion.h"

namespace svmscore::transform {
namespace {

struct Kind {
  std::string_view name;
  Compiled (*compile)(const Element*, const Context&);  // null: not supported
};

// Aggregate refers to many records and Lag to earlier ones; a case has neither.
constexpr std::array kKinds = {
    Kind{"Constant", CompileConstant},
    Kind{"FieldRef", CompileFieldRef},
    Kind{"NormContinuous", CompileNormContinuous},
    Kind{"NormDiscrete", CompileNormDiscrete},
    Kind{"Discretize", CompileDiscretize},
    Kind{"MapValues", CompileMapValues},
    Kind{"TextIndex", CompileTextIndex},
    Kind{"Apply", CompileApply},
    Kind{"Aggregate", nullptr},
    Kind{"Lag", nullptr},
};

const Kind* KindOf(const Element* element) {
  const auto* found = std::find_if(kKinds.begin(), kKinds.end(), [element](const Kind& kind) {
    return IsNamed(element, kind.name);
  });
  return found == kKinds.end() ? nullptr : found;
}

}  // namespace

Expression::~Expression() = default;
Scope::~Scope() = default;

Compiled Context::Compile(const Element* element, std::optional<FieldType> result) const {
  const Kind* kind = KindOf(element);
  if (kind == nullptr || kind->compile == nullptr) RefuseKind(element);
  CheckDepth(element, depth + 1);
  Compiled compiled = kind->compile(element, {scope, definitions, depth + 1, result});
  CheckDepth(element, compiled->Depth());
  return compiled;
}

Field Context::FieldOf(const Element* element, const char* attribute) const {
  const std::string name = RequireAttribute(element, attribute);
  const auto field = scope.Find(name);
  if (!field) ThrowAt(element, code::kUnknownField, name, NameOf(element));
  return *field;
}

Value Context::Fixed(const Element* at, const std::string& what, std::string_view text,
                     FieldType type, Arena& pool) const {
  const Value value = FromDocument(text, type, pool);
  CheckFixed(at, what, text, value, type);
  if (!target) return value;
  const Value converted = Convert(value, *target, pool);
  CheckFixed(at, what, text, converted, *target);
  return converted;
}

void CheckFixed(const Element* at, const std::string& what, std::string_view text,
                const Value& value, FieldType type) {
  if (!value.IsInvalid() || text.find_first_not_of(" \t\r\n") == std::string::npos) return;
  RefuseContent(at, what + " \"" + std::string(text) + "\" is not of the type " +
                        std::string(DataTypeName(type.data)));
}

void CheckMoment(const Element* at, const std::string& what, std::string_view text,
                 std::optional<FieldType> type) {
  if (!type || type->data < DataType::kDate) return;
  Arena pool;
  const Value value = FromDocument(text, *type, pool);
  if (value.IsInvalid() && !MomentOf(Value::Text(text))) CheckFixed(at, what, text, value, *type);
}

void CheckDepth(const Element* element, int depth) {
  if (depth <= kDeepest) return;
  RefuseContent(element, "expressions are nested more than " + std::to_string(kDeepest) + " deep");
}

Compiled CompileExpression(const Element* element, Scope& scope, Definitions& definitions,
                           std::optional<FieldType> result) {
  return Context{scope, definitions, 0}.Compile(element, result);
}

const Element* OnlyExpression(const Element* parent, const std::string& other) {
  const Element* found = nullptr;
  for (const Element* child = FirstContent(parent); child != nullptr; child = NextContent(child)) {
    if (!other.empty() && IsNamed(child, other)) continue;
    if (!IsExpression(child)) RefuseKind(child);
    if (found != nullptr) RefuseContent(child, "there is a second expression");
    found = child;
  }
  if (found == nullptr) RefuseContent(parent, "there is no expression");
  return found;
}

bool IsExpression(const Element* element) {
  return KindOf(element) != nullptr;
}

}  // namespace svmscore::transform
