// The built-in functions.
#ifndef HOST_TRANSFORM_FUNCTIONS_FUNCTIONS_H_
#define HOST_TRANSFORM_FUNCTIONS_FUNCTIONS_H_

#include <memory>
#include <span>
#include <string_view>

#include "host/transform/value/arena.h"
#include "host/transform/value/conversion.h"
#include "host/transform/value/value.h"
#include "host/xml/attributes.h"

namespace svmscore::transform {

// What a function has prepared at load from arguments that never change, such as a pattern.
class Prepared {
 public:
  virtual ~Prepared();
};

struct Arguments {
  std::span<const Value> values;
  Arena& arena;
  const Prepared* prepared;  // null where nothing was prepared
  const ValueOrder* order;   // of the ordinal field among the arguments; null if absent

  const Value& operator[](std::size_t index) const { return values[index]; }
  std::size_t size() const { return values.size(); }
};

// The arguments that a function can be called with. With others it is not called: the result is
// invalid if any argument is invalid, for every function, else missing if one is missing. Tests of
// validity only see values that were invalid but are passed on as they are (unfit).
enum class Accepts { kPresent, kMissing };

enum class Returns { kNumber, kBoolean, kString };

inline constexpr std::size_t kManyArguments = static_cast<std::size_t>(-1);

struct Function {
  std::string_view name;
  std::size_t least;
  std::size_t most;
  Returns returns;
  Accepts accepts;
  Value (*call)(const Arguments& in);
  // Null, or prepares a call at load: `fixed` holds a value for each argument that never changes,
  // and null for the others. Throws an SSException at `element` for an argument that can never be
  // right.
  std::unique_ptr<Prepared> (*prepare)(const Element* element,
                                       std::span<const Value* const> fixed) = nullptr;
};

// The families, one file each.
std::span<const Function> ArithmeticFunctions();
std::span<const Function> MathsFunctions();
std::span<const Function> NormalFunctions();
std::span<const Function> LogicFunctions();
std::span<const Function> TextFunctions();
std::span<const Function> FormatFunctions();
std::span<const Function> DateFunctions();

// Null where there is no such function. A name may have the prefix x-, which some had before they
// became standard. `if` is not among them, because it chooses what is evaluated.
const Function* FindFunction(std::string_view name);

// For the families: a function of one number.
template <double (*F)(double)>
Value OfNumber(const Arguments& in) {
  const auto x = NumberOf(in[0]);
  return x ? Value::Result(F(*x)) : Value::Invalid();
}

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_FUNCTIONS_FUNCTIONS_H_
