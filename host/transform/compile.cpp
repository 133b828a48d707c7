#include "host/transform/compile.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "host/message_codes.h"
#include "host/ss_exception.h"

namespace svmscore::transform {
namespace {

struct Kind {
  std::string_view name;
  Compiled (*compile)(const Element*, const Context&);  // null: not supported
};

// Aggregate is a question to many records and Lag to earlier ones; a case has neither.
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

Compiled Context::Compile(const Element* element) const {
  const Kind* kind = KindOf(element);
  if (kind == nullptr || kind->compile == nullptr) RefuseKind(element);
  CheckDepth(element, depth + 1);
  Compiled compiled = kind->compile(element, {scope, definitions, depth + 1});
  CheckDepth(element, compiled->Depth());
  return compiled;
}

Field Context::FieldOf(const Element* element, const char* attribute) const {
  const std::string name = RequiredAttribute(element, attribute);
  const auto field = scope.Find(name);
  if (!field) ThrowAt(element, code::kUnknownField, name, LocalName(element));
  return *field;
}

void CheckDepth(const Element* element, int depth) {
  if (depth <= kDeepest) return;
  Refuse(element, "expressions nest more than " + std::to_string(kDeepest) + " deep");
}

Compiled CompileExpression(const Element* element, Scope& scope, Definitions& definitions) {
  return Context{scope, definitions, 0}.Compile(element);
}

const Element* OnlyExpression(const Element* parent, const std::string& other) {
  const Element* found = nullptr;
  for (const Element* child = FirstChild(parent); child != nullptr; child = NextSibling(child)) {
    if (!other.empty() && IsNamed(child, other)) continue;
    if (!IsExpression(child)) RefuseKind(child);
    if (found != nullptr) Refuse(child, "there is a second expression");
    found = child;
  }
  if (found == nullptr) Refuse(parent, "there is no expression");
  return found;
}

bool IsExpression(const Element* element) {
  return KindOf(element) != nullptr;
}

}  // namespace svmscore::transform
