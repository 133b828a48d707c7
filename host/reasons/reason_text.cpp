#include <algorithm>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "host/reasons/categories.h"
#include "host/reasons/reason.h"
#include "host/text/look_alikes.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"

namespace svmscore::reasons {
namespace {

using MCZandor_850::ScoreDictVar;

// Bytes of a text and of a name that a reason repeats; reasons and intervals that are listed.
constexpr std::size_t kLongestText = 48;
constexpr std::size_t kLongestName = 64;
constexpr std::size_t kReasonsTold = 3;
constexpr std::size_t kIntervalsTold = 3;

std::string Quoted(std::string_view text) {
  return '"' + SpellInvisible(Printable(text, kLongestText)) + '"';
}

// What a value of the type is called: `"5%" is not a number`.
std::string_view NameOfType(DataType type) {
  switch (type) {
    case DataType::kInteger:
      return "a whole number";
    case DataType::kBoolean:
      return "true or false";
    case DataType::kDate:
      return "a date (2024-12-31)";
    case DataType::kTime:
      return "a time (23:59:59)";
    case DataType::kDateTime:
      return "a date and time (2024-12-31T23:59:59)";
    default:
      return "a number";
  }
}

std::string TextOf(const Interval& interval) {
  return fmt::format("{}{}, {}{}", interval.left_closed ? '[' : '(', FormatNumber(interval.left),
                     FormatNumber(interval.right), interval.right_closed ? ']' : ')');
}

std::string Intervals(const ScoreDictVar& input) {
  std::string list;
  const auto& intervals = input.GetIntervals();
  for (std::size_t i = 0; i < std::min(intervals.size(), kIntervalsTold); ++i) {
    list += (i == 0 ? "" : " and ") + TextOf(intervals[i]);
  }
  if (intervals.size() > kIntervalsTold) list += " and others";
  return list;
}

std::string NotListed(const Reason& reason) {
  const std::size_t count = reason.input->GetCategories().size();
  std::string text = fmt::format("{} is not one of its {} categor{}", Quoted(reason.text), count,
                                 count == 1 ? "y" : "ies");
  const std::string nearest = NearestCategory(*reason.input, reason.text);
  if (!nearest.empty()) return text + "; did you mean " + Quoted(nearest) + '?';
  return text + ": " + SomeCategories(*reason.input);
}

// What becomes of a value after what is wrong with it.
std::string_view EffectOf(const Reason& reason) {
  const bool is_missing = reason.cause == Cause::kNothingGiven ||
                          reason.cause == Cause::kMeansMissing || reason.cause == Cause::kOutlier;
  switch (reason.effect) {
    case Reason::Effect::kFails:
      return is_missing ? ", which the model does not allow" : "";
    case Reason::Effect::kMissing:
      return is_missing ? ", and nothing replaces it"
                        : ", so it counts as missing, and nothing replaces it";
    case Reason::Effect::kNotReplaced:
      return is_missing ? ", and the missing-value policy does not replace it"
                        : ", so it counts as missing, and the missing-value policy does not "
                          "replace it";
  }
  return "";
}

std::string WordsOf(const Reason& reason) {
  switch (reason.cause) {
    case Cause::kNothingGiven:
      return "no value is given";
    case Cause::kMeansMissing:
      return Quoted(reason.text) + " means missing";
    case Cause::kWrongType:
      return fmt::format("{} is not {}", Quoted(reason.text),
                         NameOfType(reason.input->GetFieldType().data));
    case Cause::kNotFinite:
      return Quoted(reason.text) + " is not a finite number";
    case Cause::kNotListed:
      return NotListed(reason);
    case Cause::kDeclaredInvalid:
      return Quoted(reason.text) + " is a value that the model declares invalid";
    case Cause::kOutsideInterval:
      return fmt::format("{} is outside {}", Quoted(reason.text), Intervals(*reason.input));
    case Cause::kOutlier:
      return fmt::format("{} is beyond {} to {} and counts as missing", Quoted(reason.text),
                         FormatNumber(reason.input->GetTreatment().low),
                         FormatNumber(reason.input->GetTreatment().high));
    case Cause::kDerivedMissing:
      return "the derived field has no value" + reason.detail;
    case Cause::kDerivedInvalid:
      return "the derived field has no valid value" + reason.detail;
    case Cause::kDecisionNotFinite:
      return "the decision value is " + reason.detail + ", not a finite number";
    case Cause::kNoCategory:
      return "the decision values are for no category";
    case Cause::kNoResult:
      return "the model comes to no valid result";
    case Cause::kPercentsNotFinite:
      return "the probabilities are not finite numbers";
    case Cause::kNotExplained:
      return "the decision value is not defined, or not finite, between the case and the "
             "background; use another background";
    case Cause::kNotOfTargetType:
      return "the predicted value is not finite, or cannot be one of the target's type";
    case Cause::kOutputField:
      return "the output field has no valid value";
    case Cause::kCannotScore:
      return "memory ran out, or the model lacks what scoring needs";
    case Cause::kHeaderRow:
      return "it repeats the header";
    case Cause::kOtherHeader:
      return "it is a header of another order; the rows after it are read in the order of the "
             "first header, so that their scores may be wrong";
    case Cause::kEmptyRow:
      return "every input is empty";
  }
  return {};
}

// The cause without the value, for counts.
std::string GroupOf(Cause cause, const ScoreDictVar* input) {
  switch (cause) {
    case Cause::kNothingGiven:
      return "no value given";
    case Cause::kMeansMissing:
      return "a missing value";
    case Cause::kWrongType:
      return fmt::format("not {}", NameOfType(input->GetFieldType().data));
    case Cause::kNotFinite:
      return "not finite";
    case Cause::kNotListed:
      return "not one of its categories";
    case Cause::kDeclaredInvalid:
      return "declared invalid";
    case Cause::kOutsideInterval:
      return "outside its intervals";
    case Cause::kOutlier:
      return "an outlier";
    case Cause::kDerivedMissing:
      return "derived, and without a value";
    case Cause::kDerivedInvalid:
      return "derived, and not valid";
    case Cause::kDecisionNotFinite:
      return "not finite";
    case Cause::kNoCategory:
      return "decision values for no category";
    case Cause::kNoResult:
      return "no valid result";
    case Cause::kPercentsNotFinite:
      return "probabilities not finite";
    case Cause::kNotExplained:
      return "not finite between cases and background";
    case Cause::kNotOfTargetType:
      return "not finite, or not of the target's type";
    case Cause::kOutputField:
      return "not valid";
    case Cause::kCannotScore:
      return "memory ran out, or the model lacks data";
    case Cause::kHeaderRow:
      return "the header again";
    case Cause::kOtherHeader:
      return "a header of another order";
    case Cause::kEmptyRow:
      return "every input empty";
  }
  return {};
}

std::string_view NameOf(Hint hint) {
  switch (hint) {
    case Hint::kNone:
      return "";
    case Hint::kPercent:
      return " (a percent sign)";
    case Hint::kApostrophe:
      return " (an apostrophe)";
    case Hint::kDecimalComma:
      return " (a decimal comma)";
    case Hint::kDecimalPoint:
      return " (a point, where numbers have a decimal comma)";
    case Hint::kThousands:
      return " (separators of thousands)";
    case Hint::kUnclearComma:
      return " (a comma)";
    case Hint::kUnit:
      return " (a unit)";
    case Hint::kMissingWord:
      return " (a word for a missing value)";
    case Hint::kBlanks:
      return " (blanks around it)";
    case Hint::kMinusSign:
      return " (a minus sign that is no hyphen)";
    case Hint::kInvisible:
      return " (invisible characters)";
    case Hint::kDate:
      return " (a date)";
    case Hint::kEncoding:
      return " (not in UTF-8)";
    case Hint::kTruthValue:
      return " (true or false)";
    case Hint::kFormulaError:
      return " (an error of a spreadsheet)";
  }
  return "";
}

}  // namespace

std::string TextOf(const Reason& reason) {
  std::string text;
  if (!reason.field.empty()) text = Printable(reason.field, kLongestName) + ": ";
  text += WordsOf(reason);
  if (!reason.derived.empty()) {
    text +=
        ", and the derived field \"" + Printable(reason.derived, kLongestName) + "\" needs a value";
  } else {
    text += EffectOf(reason);
  }
  return text;
}

std::string TextOf(const std::vector<Reason>& reasons) {
  std::string text;
  for (std::size_t i = 0; i < std::min(reasons.size(), kReasonsTold); ++i) {
    text += (i == 0 ? "" : "; ") + TextOf(reasons[i]);
  }
  if (reasons.size() > kReasonsTold) {
    text += fmt::format("; and {} more", reasons.size() - kReasonsTold);
  }
  return text;
}

std::string_view TextOf(Hint hint) {
  switch (hint) {
    case Hint::kNone:
      return "";
    case Hint::kPercent:
      return "write it without the percent sign";
    case Hint::kApostrophe:
      return "write it without the apostrophe";
    case Hint::kDecimalComma:
      return "write it with a decimal point";
    case Hint::kDecimalPoint:
      return "numbers have a decimal comma here; write it with one, and thousands without points";
    case Hint::kThousands:
      return "write it without separators of thousands";
    case Hint::kUnclearComma:
      return "write it without a separator of thousands, or with a decimal point";
    case Hint::kUnit:
      return "write the number alone";
    case Hint::kMissingWord:
      return "leave a missing value empty";
    case Hint::kBlanks:
      return "write it without the blanks around it";
    case Hint::kMinusSign:
      return "its minus sign is no hyphen but another character, such as U+2212; write -";
    case Hint::kInvisible:
      return "it holds invisible characters, shown as \\uXXXX here; write it without them";
    case Hint::kDate:
      return "has a spreadsheet made a date of the number? Format the column as numbers there";
    case Hint::kEncoding:
      return "the table is not in UTF-8 but, it seems, in Latin-1 or Windows-1252; save it in "
             "UTF-8, "
             "or convert it: iconv -f WINDOWS-1252 -t UTF-8";
    case Hint::kTruthValue:
      return "write the number that the training had for it, as a rule 1 for true and 0 for false";
    case Hint::kFormulaError:
      return "a formula of the spreadsheet fails; correct it, or leave a missing value empty";
  }
  return "";
}

void ReasonCounts::Add(const Reason& reason) {
  Entry& entry = counts_[{reason.field, reason.cause, reason.hint}];
  entry.input = reason.input;
  ++entry.cells;
}

void ReasonCounts::Add(const ReasonCounts& other) {
  for (const auto& [key, added] : other.counts_) {
    Entry& entry = counts_[key];
    entry.input = added.input;
    entry.cells += added.cells;
  }
}

std::string ReasonCounts::TextOfGroup(const Key& key, const Entry& entry) {
  const auto& [field, cause, hint] = key;
  std::string text = GroupOf(cause, entry.input) + std::string(NameOf(hint));
  return field.empty() ? text : Printable(field, kLongestName) + ": " + text;
}

std::vector<ReasonCounts::Count> ReasonCounts::MostFrequent(std::size_t most) const {
  using Group = const std::pair<const Key, Entry>*;
  std::vector<Group> groups;
  groups.reserve(counts_.size());
  for (const auto& group : counts_) groups.push_back(&group);
  // Scores of other rows depend on a header among them.
  const auto rank = [](Group group) {
    return std::pair(std::get<Cause>(group->first) == Cause::kOtherHeader, group->second.cells);
  };
  std::stable_sort(groups.begin(), groups.end(),
                   [rank](Group a, Group b) { return rank(a) > rank(b); });
  groups.resize(std::min(most, groups.size()));
  std::vector<Count> counts;
  counts.reserve(groups.size());
  for (const Group group : groups) {
    counts.push_back({TextOfGroup(group->first, group->second), group->second.cells});
  }
  return counts;
}

}  // namespace svmscore::reasons
