// Expressions of a document, compiled once and evaluated case by case.
#ifndef HOST_TRANSFORM_EXPRESSION_H_
#define HOST_TRANSFORM_EXPRESSION_H_

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "host/text/api.h"
#include "host/text/field_types.h"
#include "host/transform/value/arena.h"
#include "host/transform/value/value.h"
#include "host/xml/attributes.h"

namespace svmscore::transform {

class Definitions;
class ValueOrder;

// What an expression is evaluated over: the values of the fields of its scope, by their slots,
// and memory for the texts that it makes. Both must outlive the use of the result.
struct Frame {
  const Value* slots;
  Arena& arena;
};

// A call of a defined function may evaluate this many expressions: functions that call others twice
// double the work with every level.
inline constexpr int kMostCalled = 1000000;
// The derived fields that a model needs may evaluate this many for a case, including calls of
// functions, and so may its output fields: about a second.
inline constexpr std::int64_t kMostComputed = 10000000;

// Immutable once the field or function that it belongs to is compiled.
// [any thread] from then on. Lives: a result, as long as the frame. Fails: Evaluate by
// std::bad_alloc.
class SVMSCORE_HOST_API Expression {
 public:
  Expression() = default;
  virtual ~Expression();
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;

  virtual Value Evaluate(const Frame& frame) const = 0;

  // The order of the values, where the expression is an ordinal field; else null.
  virtual const ValueOrder* Order() const { return nullptr; }
  // The value, where it is the same for every case; else null.
  virtual const Value* Fixed() const { return nullptr; }
  // Says that the expression is passed to a parameter declared with `type`. A constant without a
  // declared type then reads its text as that type.
  virtual void AdoptType(FieldType) {}
  // How deeply evaluation nests, including calls of defined functions.
  int Depth() const { return depth_; }
  // How many expressions one evaluation may take, including calls of defined functions; counted up
  // to one more than kMostCalled.
  int Size() const { return size_; }

 protected:
  void Contain(int inner_size) { size_ = std::min(kMostCalled + 1 - size_, inner_size) + size_; }
  void NestOver(int inner_depth) { depth_ = depth_ > inner_depth ? depth_ : inner_depth + 1; }

 private:
  int depth_ = 1;
  int size_ = 1;
};

// A field as an expression sees it.
struct Field {
  int slot = 0;
  std::optional<FieldType> type;  // nothing: it depends on the case
  bool ordinal = false;
  std::shared_ptr<const ValueOrder> order;  // null unless the field lists its values
};

// The names that an expression may use. [one thread] while a document is loaded.
class SVMSCORE_HOST_API Scope {
 public:
  virtual ~Scope();
  // The field of that name; nothing if absent.
  virtual std::optional<Field> Find(const std::string& name) = 0;
};

// Compiles an expression element. `definitions` are the functions that the document defines.
// `result` is the type that the result will be converted to, if known: constant values are then
// converted now, and refused where that is impossible.
// [one thread] for each document. Owns: the caller. Lives: arguments for the call; variables that
// `scope` finds, longer than the expression. Fails: SSException at the element that is wrong or not
// supported; std::bad_alloc.
SVMSCORE_HOST_API std::unique_ptr<Expression> CompileExpression(const Element* element,
                                                                Scope& scope,
                                                                Definitions& definitions,
                                                                std::optional<FieldType> result);

// The expression child of `parent`, which must be its only child apart from extensions and elements
// named `other` (may be empty).
// [one thread] for each document. Lives: as long as the document. Fails: SSException at the
// element; std::bad_alloc.
SVMSCORE_HOST_API const Element* OnlyExpression(const Element* parent, const std::string& other);

// Whether the element is an expression, supported or not.
// [one thread] for each document. Fails: never.
SVMSCORE_HOST_API bool IsExpression(const Element* element);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_EXPRESSION_H_
