// How the kinds of expression are compiled; the skeleton for a new kind.
//
// A new kind needs a class derived from Expression with its own Evaluate, a function below that
// reads its element, and a line in the table of compile_expression.cpp.
#ifndef HOST_TRANSFORM_COMPILE_EXPRESSION_H_
#define HOST_TRANSFORM_COMPILE_EXPRESSION_H_

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "host/transform/expression.h"

namespace svmscore::transform {

// Expressions may be nested this deep, including calls of defined functions.
inline constexpr int kDeepest = 1000;

// What compiling an expression needs beyond its element.
struct Context {
  Scope& scope;
  Definitions& definitions;
  int depth = 1;
  // The type that the result will be converted to, where the document states it.
  std::optional<FieldType> target = std::nullopt;

  // Compiles an expression one level deeper, whose result will be converted to `result` (if any).
  std::unique_ptr<Expression> Compile(const Element* element,
                                      std::optional<FieldType> result = std::nullopt) const;
  // `text` read as `type` and converted to the target. A text for which that is impossible is
  // refused at `at`, with `what` to say what the text is; a blank one is an invalid value.
  Value Fixed(const Element* at, const std::string& what, std::string_view text, FieldType type,
              Arena& pool) const;
  // The field that an attribute of `element` names; throws 260311 if there is no such field.
  Field FieldOf(const Element* element, const char* attribute) const;
};

using Compiled = std::unique_ptr<Expression>;

Compiled CompileConstant(const Element* element, const Context& context);
Compiled CompileFieldRef(const Element* element, const Context& context);
Compiled CompileNormContinuous(const Element* element, const Context& context);
Compiled CompileNormDiscrete(const Element* element, const Context& context);
Compiled CompileDiscretize(const Element* element, const Context& context);
Compiled CompileMapValues(const Element* element, const Context& context);
Compiled CompileTextIndex(const Element* element, const Context& context);
Compiled CompileApply(const Element* element, const Context& context);

// Refuses a constant value of the document that `type` cannot hold, unless its text is blank.
void CheckFixed(const Element* at, const std::string& what, std::string_view text,
                const Value& value, FieldType type);

// Refuses a text that dates or times are compared with but that is not a date or time itself. Texts
// for other types need not equal anything.
void CheckMoment(const Element* at, const std::string& what, std::string_view text,
                 std::optional<FieldType> type);

// Refuses an expression that is nested too deeply.
void CheckDepth(const Element* element, int depth);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_COMPILE_EXPRESSION_H_
