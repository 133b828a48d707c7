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

// What models read. A record is used by one thread at a time.
class SVMSCORE_HOST_API ScoreCaseRecord {
 public:
  virtual ~ScoreCaseRecord();

  // True where values are read by position: then every record that a model sees must have the same
  // layout, because the positions are taken from the first.
  virtual bool IsIndexedByPosition() const = 0;
  // Position of a variable, or -1 (also where the record is not indexed by position).
  virtual int GetPosition(const std::string& name) const = 0;
  // The value, or null where it is missing or the position or name is none of the record's. The
  // record owns it; it changes with the next case.
  virtual const ScoreValue* GetValue(int position) const = 0;
  virtual const ScoreValue* GetValue(const std::string& name) const = 0;
  // The value of a variable: by its case position or by its name, whichever the record goes by.
  const ScoreValue* GetValueOf(const ScoreDictVar& var) const {
    return IsIndexedByPosition() ? GetValue(var.GetCasePosition()) : GetValue(var.GetName());
  }
};

// What becomes of a raw value on its way into a record, by the variable's declaration and
// treatment.
enum class InputState { kPresent, kMissing, kInvalid };

// Something worked out from the values of a case.
class SVMSCORE_HOST_API WorkedOut {
 public:
  virtual ~WorkedOut();
};

// A record that a program fills case by case. Setting a value applies the variable's
// declarations and treatment (missing and invalid values, outliers, replacements), so that
// models and derived fields see the treated values only. No allocation after the first cases,
// save for texts longer than any before, and those over a kilobyte.
class SVMSCORE_HOST_API InputCaseRecord : public ScoreCaseRecord {
 public:
  // Holds a value for each of `variables`, which must outlive it, in their order. With
  // `replace_missing` a missing value of a variable that has a replacement becomes it.
  InputCaseRecord(std::vector<const ScoreDictVar*> variables, bool by_position,
                  bool replace_missing);
  ~InputCaseRecord() override;

  // Makes every value missing (or its replacement).
  void Clear();
  // Each returns what became of the value. `text` is read by the variable's data type.
  // REQUIRES: 0 <= position < Size().
  InputState SetText(std::size_t position, std::string_view text);
  InputState SetNumber(std::size_t position, double number);
  InputState SetMissing(std::size_t position);

  std::size_t Size() const { return slots_.size(); }
  // True when some value of the present case is invalid.
  bool HasInvalid() const { return invalid_count_ > 0; }
  // The number of a variable whose present value is one that no declaration or treatment touches;
  // null for any other, and where `var` is not the variable at its case position. A value that is
  // found so is neither missing nor invalid.
  const double* FindPlainNumber(const ScoreDictVar& var) const {
    const auto index = static_cast<std::size_t>(var.GetCasePosition());
    if (!by_position_ || index >= slots_.size()) return nullptr;
    const Slot& slot = slots_[index];
    return slot.var == &var && slot.holds_plain ? &slot.plain_number : nullptr;
  }
  // What has been worked out from the present values stays here until one of them changes, so that
  // it is worked out once a case, whoever needs it.
  struct Kept {
    const void* by = nullptr;
    std::unique_ptr<WorkedOut> what;  // null at first
    bool is_current = false;          // false once a value has been set
  };
  // That of `by`; what another one keeps goes. Belongs to the record, as long as it lives.
  Kept& KeptBy(const void* by) const {
    if (kept_.by != by) kept_ = {by, nullptr, false};
    return kept_;
  }
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
    bool takes_plain = false;  // every finite number is a valid value, and stays what it is
    bool holds_plain = false;  // such a number is the current value
    double plain_number = 0.0;
  };
  // Takes the text where it spells a number that needs no treatment.
  bool StorePlain(Slot& slot, std::string_view text);
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
