// What is wrong with a case that has no score.
#ifndef HOST_REASONS_REASON_H_
#define HOST_REASONS_REASON_H_

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "host/model/score_dict_var.h"
#include "host/text/api.h"

namespace svmscore::reasons {

enum class Cause {
  // Of an input.
  kNothingGiven,
  kMeansMissing,  // a text that means missing, to the caller or as the field declares
  kWrongType,     // not a value of the field's data type
  kNotFinite,
  kNotListed,  // not among the field's categories
  kDeclaredInvalid,
  kOutsideInterval,
  kOutlier,  // beyond the bounds of a treatment that makes outliers missing
  // Of a derived field that a vector position needs.
  kDerivedMissing,
  kDerivedInvalid,
  // Of what the model makes of the case.
  kDecisionNotFinite,
  kNoCategory,  // the decision values are for no category
  kNoResult,    // no more is known than that the result is not valid
  kPercentsNotFinite,
  kNotExplained,     // the decision value is finite, and what contributes to it is not
  kNotOfTargetType,  // the prediction is not finite, or cannot be a value of the target's type
  kOutputField,      // an output field comes to an invalid value
  kCannotScore,      // memory ran out, or the model lacks data
  // Of the case as a whole.
  kHeaderRow,    // every text is the name of its field
  kOtherHeader,  // most texts are names of inputs, but not of their own
  kEmptyRow,     // nothing is given for any of several inputs
};

// What a text that cannot be used looks like.
enum class Hint {
  kNone,
  kPercent,
  kApostrophe,  // in front of a number
  kDecimalComma,
  kDecimalPoint,  // where decimal commas are read
  kThousands,     // separators of thousands
  kUnclearComma,  // one or the other: 1,234
  kUnit,          // a number with a unit or currency
  kMissingWord,   // null, None, ...
  kBlanks,        // blanks around a category
  kMinusSign,     // a minus sign or dash where a hyphen is read
  kInvisible,     // characters that are not seen, such as a no-break space
  kDate,          // a date where a number is wanted
  kEncoding,      // bytes that are not UTF-8
  kTruthValue,    // true or false where a number is wanted
  kFormulaError,  // what a spreadsheet shows for a formula that fails: #REF!
};

// One reason. Lives: the names, as long as the model and the examiner that found it; the text, as
// long as the case that gave it.
struct Reason {
  Cause cause = Cause::kCannotScore;
  // The input to blame, or else the derived field, output field or decision; empty for the case as
  // a whole.
  std::string_view field = {};
  const MCZandor_850::ScoreDictVar* input = nullptr;  // where the field is an input
  std::string_view text = {};                         // what the input was given
  // The derived field that cannot do without the input.
  std::string_view derived = {};
  // What becomes of an input's value that cannot be used as it is.
  enum class Effect {
    kFails,
    kMissing,      // it counts as missing, and nothing replaces it
    kNotReplaced,  // the same, though the field has a replacement: the policy does not use it
  };
  Effect effect = Effect::kFails;
  Hint hint = Hint::kNone;
  std::string detail = {};  // numbers or texts that belong to the words
};

// The words, printable and on one line, texts shortened: `horsepower: "5%" is not a number`.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
SVMSCORE_HOST_API std::string TextOf(const Reason& reason);
// Several reasons of one case; of many the first few, and how many more there are.
SVMSCORE_HOST_API std::string TextOf(const std::vector<Reason>& reasons);
// What the hint says, in a few words: `write it without the percent sign`. Empty for none.
// [any thread] Lives: as long as the process. Fails: never.
SVMSCORE_HOST_API std::string_view TextOf(Hint hint);

// How often each field failed for each cause. Memory grows with the fields of the model, not with
// the cases.
// [one thread] for each object. Lives: names, longer than the counts. Fails: std::bad_alloc.
class SVMSCORE_HOST_API ReasonCounts {
 public:
  struct Count {
    std::string text;  // `horsepower: not a number (a percent sign)`, printable
    std::uint64_t cells = 0;
  };

  void Add(const Reason& reason);
  void Add(const ReasonCounts& other);
  void Clear() { counts_.clear(); }
  bool IsEmpty() const { return counts_.empty(); }
  std::size_t Size() const { return counts_.size(); }
  // The `most` most frequent, the most frequent first, after a header of another order; among
  // equals by name and cause.
  std::vector<Count> MostFrequent(std::size_t most) const;

 private:
  using Key = std::tuple<std::string_view, Cause, Hint>;
  struct Entry {
    const MCZandor_850::ScoreDictVar* input = nullptr;
    std::uint64_t cells = 0;
  };
  static std::string TextOfGroup(const Key& key, const Entry& entry);

  std::map<Key, Entry> counts_;
};

}  // namespace svmscore::reasons

#endif  // HOST_REASONS_REASON_H_
