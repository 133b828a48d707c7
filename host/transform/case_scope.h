// Expressions outside derived fields, such as those of output fields: what they may name, and their
// evaluation for a case.
//
//   Definitions definitions;
//   definitions.AddFrom(document);
//   CaseScope scope(inputs, derived);
//   const int prediction = scope.AddValue("label", FieldType{DataType::kString, 0}, false);
//   const auto expression = CompileExpression(element, scope, definitions);
//   ...
//   CaseValues values(scope);                       // one a thread
//   values.Begin(record, derived_record.get());     // one a case
//   values.Set(prediction, Value::Text("alarm"));
//   const Value result = values.Evaluate(*expression, FieldType{DataType::kDouble, 0});
#ifndef HOST_TRANSFORM_CASE_SCOPE_H_
#define HOST_TRANSFORM_CASE_SCOPE_H_

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/api.h"
#include "host/score_case_record.h"
#include "host/score_dictionary.h"
#include "host/transform/arena.h"
#include "host/transform/definitions.h"
#include "host/transform/expression.h"
#include "host/transform/value.h"
#include "host/transformation_dictionary.h"

namespace svmscore::transform {

// Input variables, derived fields, and values that the caller supplies. Filled while a document is
// loaded, on one thread; afterwards read by any number.
class SVMSCORE_HOST_API CaseScope : public Scope {
 public:
  // Either may be null. Both must outlive the scope.
  CaseScope(const MCZandor_850::ScoreDictionary* inputs,
            const MCZandor_850::TransformationDictionary* derived)
      : inputs_(inputs), derived_(derived) {}

  // Adds a value under `name` and returns its index. Expressions compiled from now on mean this
  // value by the name, whatever had the name before. Without a type its values may be of any.
  int AddValue(const std::string& name, std::optional<FieldType> type, bool ordinal);

  std::optional<Field> Find(const std::string& name) override;

  // The input variables that the expressions compiled so far read, each once.
  const std::vector<const MCZandor_850::ScoreDictVar*>& NeededInputs() const { return needed_; }

 private:
  friend class CaseValues;

  // A field that is read from a record of the case.
  struct Source {
    const MCZandor_850::ScoreDictVar* var;
    bool derived;
    int slot;
  };
  Field FieldOf(const MCZandor_850::ScoreDictVar* var, bool derived);

  const MCZandor_850::ScoreDictionary* inputs_;
  const MCZandor_850::TransformationDictionary* derived_;
  std::unordered_map<std::string, Field> added_;
  std::unordered_map<const MCZandor_850::ScoreDictVar*, Field> fields_;
  std::vector<Source> sources_;
  std::vector<const MCZandor_850::ScoreDictVar*> needed_;
  int slots_ = 0;
};

// The values of one case. One thread at a time.
class SVMSCORE_HOST_API CaseValues {
 public:
  // REQUIRES: nothing is added to the scope, and no expression compiled in it, from now on.
  explicit CaseValues(const CaseScope& scope)
      : scope_(scope), slots_(static_cast<std::size_t>(scope.slots_)) {}

  // Reads the fields of a case, and makes the added values missing. `derived` may be null where
  // there are no derived fields. Both records must stay as they are until the next case.
  void Begin(const MCZandor_850::ScoreCaseRecord& inputs,
             const MCZandor_850::DerivedCaseRecord* derived);
  // Sets an added value. Its text is copied.
  void Set(int index, const Value& value);
  // The value of an expression, converted to `type` where one is given. Its text lives until the
  // next case. Throws nothing but std::bad_alloc.
  Value Evaluate(const Expression& expression, std::optional<FieldType> type);
  // The text of a present value; lives until the next case.
  std::string_view Text(const Value& value);

 private:
  const CaseScope& scope_;
  std::vector<Value> slots_;
  Arena arena_;
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_CASE_SCOPE_H_
