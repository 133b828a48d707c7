// How the cells of a table of cases are read.
#ifndef TOOLS_BASE_CELL_RULES_H_
#define TOOLS_BASE_CELL_RULES_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/load/loader.h"
#include "host/model/score_case_record.h"

namespace svmscore::tools {

class CellRules {
 public:
  // Empty cells are missing, and those that hold a token. With no token given these are NA and N/A,
  // but not for a variable that declares them as values; one that is given is missing everywhere.
  // With `decimal_comma` numbers are written with a comma in place of the point.
  explicit CellRules(std::vector<std::string> given_tokens = {}, bool decimal_comma = false);

  bool IsMissing(std::string_view cell, const MCZandor_850::ScoreDictVar& var) const {
    return cell.empty() || (IsToken(cell) && (tokens_given_ || !Declares(var, cell)));
  }
  // Whether no token has a digit, so that a cell which is a finite number is never missing.
  bool NumbersAreNeverMissing() const;
  bool HasDecimalComma() const { return decimal_comma_; }
  // The text of a cell that is not missing as the model reads it; it lives as long as both `cell`
  // and `buffer`, and until the next use of `buffer`.
  std::string_view TextOf(std::string_view cell, const MCZandor_850::ScoreDictVar& var,
                          std::string& buffer) const {
    return decimal_comma_ && IsOfNumbers(var) ? ExchangePointAndComma(cell, buffer) : cell;
  }
  // Sets a value of the record from a cell, as missing where the cell is; uses `buffer`.
  void Set(MCZandor_850::InputCaseRecord& record, std::size_t position, std::string_view cell,
           std::string& buffer) const {
    const MCZandor_850::ScoreDictVar& var = record.Variable(position);
    if (IsMissing(cell, var)) {
      record.SetMissing(position);
    } else {
      record.SetText(position, TextOf(cell, var, buffer));
    }
  }
  // A line for each token that was given although some input of the model declares it as a value.
  std::vector<std::string> OverruledValues(const LoadedModel& loaded) const;

  // False for texts, dates, times and booleans.
  static bool IsOfNumbers(const MCZandor_850::ScoreDictVar& var);
  // Makes "1,5" the "1.5" that the model reads, and "1.5" the "1,5" that is no number: in a table
  // with decimal commas a point groups thousands, or the table is not what it is said to be.
  static std::string_view ExchangePointAndComma(std::string_view cell, std::string& buffer);

 private:
  bool IsToken(std::string_view cell) const;
  static bool Declares(const MCZandor_850::ScoreDictVar& var, std::string_view cell);

  std::vector<std::string> tokens_;
  bool tokens_given_;
  bool decimal_comma_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_CELL_RULES_H_
