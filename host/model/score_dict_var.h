// One variable of a dictionary: its name, type, categories, and what counts as missing or valid.
#ifndef HOST_MODEL_SCORE_DICT_VAR_H_
#define HOST_MODEL_SCORE_DICT_VAR_H_

#include <algorithm>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/model/score_value.h"
#include "host/model/var_stats.h"
#include "host/text/api.h"
#include "host/text/field_types.h"

namespace MCZandor_850 {

// What a model's mining schema says of one of its fields.
struct FieldTreatment {
  enum class Outliers { kAsIs, kAsMissing, kAsExtreme };
  enum class Invalid { kReturnInvalid, kAsIs, kAsMissing, kAsValue };
  Outliers outliers = Outliers::kAsIs;
  double low = -std::numeric_limits<double>::infinity();
  double high = std::numeric_limits<double>::infinity();
  Invalid invalid = Invalid::kReturnInvalid;
  std::shared_ptr<const ScoreValue> invalid_replacement;  // with kAsValue
  bool missing_is_invalid = false;
};

// Changed while a document is translated: [set-up]. Read afterwards: [any thread]. Only the case
// position is set later, by the first scored case.
// Owns: the dictionary the variable, the variable its categories, treatment and replacement. Lives:
// what is returned, as long as the variable. Fails: what adds or creates something, by
// std::bad_alloc; the rest never.
class SVMSCORE_HOST_API ScoreDictVar {
 public:
  ScoreDictVar(std::string name, svmscore::OpType op_type, svmscore::FieldType type);
  virtual ~ScoreDictVar();
  ScoreDictVar(const ScoreDictVar&) = delete;
  ScoreDictVar& operator=(const ScoreDictVar&) = delete;

  const std::string& GetName() const { return name_; }
  svmscore::FieldType GetFieldType() const { return type_; }
  // 0 continuous, 1 ordinal, 2 cyclic, 3 categorical.
  int GetTypeCode() const { return static_cast<int>(op_type_); }
  void SetOpType(svmscore::OpType op_type) { op_type_ = op_type; }
  // 0 to 2: plain numbers and texts, whose missing-value replacement a translator reads. 3: dates,
  // times and booleans, whose replacement the mining schema attaches.
  int GetKindCode() const;
  // 0 number, 1 string.
  int GetStorageType() const { return svmscore::IsNumberStored(type_.data) ? 0 : 1; }
  bool IsDerived() const { return derived_; }

  // Categories: the valid values in document order. The count is 1 for a continuous variable and
  // the number of categories for any other.
  int GetCategoryCount() const;
  const std::vector<const ScoreValue*>& GetCategories() const { return category_views_; }
  // Position of the category equal to `value`, or -1. Constant time.
  int GetCategoryIndex(const ScoreValue* value) const;
  // Position of the category that `text` spells (a number is compared as a number), or -1.
  int GetCategoryIndexOfText(const std::string& text) const;
  // True for a variable that is not continuous and whose declaration lists no values: then every
  // value is valid, even after AddCategory.
  bool DeclaresNoValues() const;
  // Adds a category with its text. False, with nothing added, for one that equals an earlier
  // category and for a value that is missing or invalid.
  bool AddCategory(const ScoreValue& value, const std::string& text);
  // Adds a category that the declaration lists: from then on only declared values are valid.
  void DeclareCategory(const std::string& text, const std::string& display);
  // How to show a category to people: its display text where one was declared, else its text.
  const std::string& GetCategoryDisplay(std::size_t category) const { return displays_[category]; }
  void SetCategoryDisplay(std::size_t category, std::string display) {
    displays_[category] = std::move(display);
  }
  void DeclareMissing(const std::string& text);
  void DeclareInvalid(const std::string& text);
  void DeclareInterval(const svmscore::Interval& interval) { intervals_.push_back(interval); }
  const std::vector<svmscore::Interval>& GetIntervals() const { return intervals_; }

  // True where the value is missing or declared to mean missing; a null pointer is missing.
  bool IsMissingValue(const ScoreValue* value) const;
  // False where the value is marked invalid, is not a finite number in a number variable, is
  // declared invalid, or is outside the declared values and intervals; true throughout for a
  // variable whose treatment takes invalid values as they are. REQUIRES: value is not null.
  bool IsValidValue(const ScoreValue* value) const;
  // Whether the declared values and intervals allow a value of the field's type, whatever the
  // treatment.
  bool IsDeclaredValid(const ScoreValue& value) const;

  // True for a variable of type double for which every finite number in its intervals, except the
  // system-missing one, is valid and changed by no treatment.
  bool TakesNumbersInIntervals() const;
  // True for such a variable without intervals.
  bool TakesEveryNumber() const;
  // True where none are declared.
  bool IsInIntervals(double number) const {
    return intervals_.empty() ||
           std::any_of(intervals_.begin(), intervals_.end(),
                       [number](const svmscore::Interval& i) { return i.Contains(number); });
  }

  // Replaces and deletes an earlier record. Owns: the variable. Fails: never.
  void SetVarStats(VarStats* stats) { stats_.reset(stats); }
  // Null where a missing value has no replacement.
  const ScoreValue* GetMissingReplacement() const {
    return stats_ ? stats_->GetMissingReplacement() : nullptr;
  }
  void SetTreatment(const FieldTreatment& treatment) { treatment_ = treatment; }
  const FieldTreatment& GetTreatment() const { return treatment_; }

  // Index into case records that are read by position; -1 until the first case sets it.
  void SetCasePosition(int position) { case_position_ = position; }
  int GetCasePosition() const { return case_position_; }
  // True for an input variable that a derived field of the same name hides: a model reads it from
  // the derived values where the caller asks for that.
  void SetHiddenByDerived(bool hidden) { hidden_by_derived_ = hidden; }
  bool IsHiddenByDerived() const { return hidden_by_derived_; }

  // Writes the name and a line end. Fails: what the stream throws; std::bad_alloc.
  void Display(std::ostream& os) const;

  // A new value of this variable, read from `text` as its data type: invalid where the text is not
  // of that type, never missing. Owns: the caller.
  std::unique_ptr<ScoreValue> ValueFromText(std::string_view text) const;

 protected:
  void MarkDerived() { derived_ = true; }

 private:
  // Values declared missing or invalid: as texts, and as numbers where they spell one.
  struct Declared {
    std::vector<std::string> texts;
    std::vector<svmscore::NumberKey> numbers;
    bool Holds(const ScoreValue& value) const;
  };
  static void Declare(Declared& set, const std::string& text, svmscore::FieldType type);

  std::string name_;
  svmscore::OpType op_type_;
  svmscore::FieldType type_;
  bool derived_ = false;
  bool hidden_by_derived_ = false;
  bool values_declared_ = false;
  int case_position_ = -1;
  std::vector<std::unique_ptr<ScoreValue>> categories_;
  std::vector<const ScoreValue*> category_views_;
  std::vector<std::string> displays_;
  std::unordered_map<std::string, int> text_index_;  // string variables
  std::unordered_map<svmscore::NumberKey, int, svmscore::NumberKeyHash>
      number_index_;  // number variables
  Declared missing_;
  Declared invalid_;
  std::vector<svmscore::Interval> intervals_;
  std::unique_ptr<VarStats> stats_;
  FieldTreatment treatment_;
};

}  // namespace MCZandor_850

#endif  // HOST_MODEL_SCORE_DICT_VAR_H_
