// The values of one case.
#ifndef HOST_MODEL_SCORE_CASE_RECORD_H_
#define HOST_MODEL_SCORE_CASE_RECORD_H_

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/score_dictionary.h"
#include "host/model/score_value.h"
#include "host/text/api.h"

namespace MCZandor_850 {

// What models read.
// [one thread] for each record. Owns: the record the values that it returns. Lives: those, until
// the record takes its next case. Fails: never, except by returning -1 or null.
class SVMSCORE_HOST_API ScoreCaseRecord {
 public:
  virtual ~ScoreCaseRecord();

  // True where values are read by position: then every record that a model sees must have the same
  // layout, because the positions are taken from the first.
  virtual bool IsIndexedByPosition() const = 0;
  // Position of a variable, or -1 (also where the record is not indexed by position).
  virtual int GetPosition(const std::string& name) const = 0;
  // The value; null where it is missing, or where the record has no such position or name.
  virtual const ScoreValue* GetValue(int position) const = 0;
  virtual const ScoreValue* GetValue(const std::string& name) const = 0;
  // The value of a variable: by its case position or by its name, whichever the record uses.
  const ScoreValue* GetValueOf(const ScoreDictVar& var) const {
    return IsIndexedByPosition() ? GetValue(var.GetCasePosition()) : GetValue(var.GetName());
  }
};

// What the variable's declaration and treatment make of a raw value on its way into a record.
enum class InputState { kPresent, kMissing, kInvalid };

// Something computed from the values of a case.
class SVMSCORE_HOST_API WorkedOut {
 public:
  virtual ~WorkedOut();
};

// A record that a program fills case by case. Setting a value applies the variable's
// declarations and treatment (missing and invalid values, outliers, replacements), so that
// models and derived fields see the treated values only. Nothing is allocated after the first
// cases, except for texts longer than any before, and those over a kilobyte.
// [one thread] for each record. Owns: the caller the record. Lives: arguments for the call. Fails:
// SetText and SetNumber by std::bad_alloc, after which the value must be set again; the others
// never.
class SVMSCORE_HOST_API InputCaseRecord : public ScoreCaseRecord {
 public:
  // Holds a value for each of `variables`, in their order. With `replace_missing`, a missing value
  // of a variable that has a replacement becomes that replacement.
  // Lives: the variables, longer than the record. Fails: std::bad_alloc.
  InputCaseRecord(std::vector<const ScoreDictVar*> variables, bool by_position,
                  bool replace_missing);
  ~InputCaseRecord() override;

  // Makes every value missing (or its replacement).
  void Clear();
  // Each returns what became of the value. `text` is read as the variable's data type.
  // REQUIRES: 0 <= position < Size().
  InputState SetText(std::size_t position, std::string_view text);
  InputState SetNumber(std::size_t position, double number);
  InputState SetMissing(std::size_t position);

  std::size_t Size() const { return slots_.size(); }
  // True when some value of the present case is invalid.
  bool HasInvalid() const { return invalid_count_ > 0; }
  // The number of a variable whose value is one that no declaration or treatment touches; null for
  // any other, and where `var` is not the variable at its case position. A value found this way is
  // neither missing nor invalid.
  const double* FindPlainNumber(const ScoreDictVar& var) const {
    const auto index = static_cast<std::size_t>(var.GetCasePosition());
    if (!by_position_ || index >= slots_.size()) return nullptr;
    const Slot& slot = slots_[index];
    return slot.var == &var && slot.holds_plain ? &slot.plain_number : nullptr;
  }
  // What has been computed from the present values is kept here until one of them changes, so that
  // it is computed once for each case, however many need it.
  struct Kept {
    const void* by = nullptr;
    std::unique_ptr<WorkedOut> what;  // null at first
    bool is_current = false;          // false once a value has been set
  };
  // What `by` keeps here; what anyone else kept is dropped. Owns: the record. Lives: until someone
  // else keeps something.
  Kept& KeptBy(const void* by) const {
    if (kept_.by != by) kept_ = {by, nullptr, false};
    return kept_;
  }
  // What became of the value at a position, as when it was set.
  InputState StateOf(std::size_t position) const { return slots_[position].state; }
  // The variable behind a position.
  const ScoreDictVar& Variable(std::size_t position) const { return *slots_[position].var; }

  bool IsIndexedByPosition() const override { return by_position_; }
  int GetPosition(const std::string& name) const override;
  const ScoreValue* GetValue(int position) const override;
  const ScoreValue* GetValue(const std::string& name) const override;

 private:
  struct Slot {
    const ScoreDictVar* var = nullptr;
    std::unique_ptr<NumericValue> number;  // number variables
    std::unique_ptr<StringValue> text;     // string variables
    const ScoreValue* current = nullptr;   // null where missing
    InputState state = InputState::kMissing;
    bool takes_plain = false;  // finite numbers in its intervals need no treatment
    bool holds_plain = false;  // such a number is the current value
    double plain_number = 0.0;
  };
  // Stores the number where it needs no treatment. REQUIRES: slot.takes_plain.
  bool StorePlain(Slot& slot, double number);
  InputState Store(Slot& slot, InputState state, const ScoreValue* value);
  InputState Treat(Slot& slot, const ScoreValue& value);
  InputState TreatMissing(Slot& slot);

  bool by_position_;
  bool replace_missing_;
  std::size_t invalid_count_ = 0;
  mutable Kept kept_;
  std::vector<Slot> slots_;
  std::unordered_map<std::string, int> positions_;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_CASE_RECORD_H_
