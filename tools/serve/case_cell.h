// A value that a request gives for an input of a model.
#ifndef TOOLS_SERVE_CASE_CELL_H_
#define TOOLS_SERVE_CASE_CELL_H_

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "host/model/score_case_record.h"
#include "tools/base/cell_rules.h"
#include "tools/score/row_scorer.h"
#include "tools/serve/json_scanner.h"

namespace svmscore::serve {

// Borrows its text. Missing at first.
class CaseCell {
 public:
  enum class Kind : std::uint8_t { kMissing, kNumber, kWhole, kBool, kText, kSpelled };

  CaseCell() : kind_(Kind::kMissing), size_(0), whole_(0) {}
  static CaseCell Number(double number) {
    CaseCell cell(Kind::kNumber);
    cell.number_ = number;
    return cell;
  }
  static CaseCell Whole(std::int64_t whole) {
    CaseCell cell(Kind::kWhole);
    cell.whole_ = whole;
    return cell;
  }
  static CaseCell Bool(bool truth) {
    CaseCell cell(Kind::kBool);
    cell.whole_ = truth ? 1 : 0;
    return cell;
  }
  static CaseCell Text(std::string_view text) { return OfText(Kind::kText, text); }
  // A number that neither a whole number of 64 bits nor a double holds as it is spelled.
  static CaseCell Spelled(std::string_view number) { return OfText(Kind::kSpelled, number); }

  // Puts the value where a file's cell of the same text would be. [one thread] for each record.
  // Fails: std::bad_alloc.
  void Put(MCZandor_850::InputCaseRecord& record, std::size_t position,
           const tools::CellRules& rules) const;
  tools::GivenText Given(const MCZandor_850::ScoreDictVar& var,
                         const tools::CellRules& rules) const;
  // Whether it is a finite number that a double holds exactly, and that is no value beside others;
  // then that is `number`.
  bool IsNumber(double& number) const {
    constexpr std::int64_t kExact = std::int64_t{1} << 53;
    if (kind_ == Kind::kNumber) {
      number = number_;
      // The lowest one means missing.
      return number > std::numeric_limits<double>::lowest() &&
             number <= std::numeric_limits<double>::max();
    }
    if (kind_ != Kind::kWhole || whole_ > kExact || whole_ < -kExact) return false;
    number = static_cast<double>(whole_);
    return true;
  }
  // A number as single precision holds it; any other value as it is.
  CaseCell InSinglePrecision() const;
  // Whether a tensor of the type may hold it: FP64, FP32, INT64, INT32, BOOL (also 0 and 1) or
  // BYTES. What is missing is of each.
  bool IsOf(std::string_view type) const;

 private:
  static CaseCell OfText(Kind kind, std::string_view text) {
    CaseCell cell(kind);
    cell.text_ = text.data();
    cell.size_ = static_cast<std::uint32_t>(text.size());
    return cell;
  }
  explicit CaseCell(Kind kind) : kind_(kind), size_(0), whole_(0) {}

  Kind kind_;
  std::uint32_t size_;  // of the text
  union {
    double number_;
    std::int64_t whole_;
    const char* text_;
  };
};

// Reads null, NaN, a number, a text or a truth value; nothing for an array or an object, which is
// passed over. A number beyond a double's range is no value of a number field.
// Fails: JsonError; std::bad_alloc.
bool ReadCell(JsonScanner& scanner, CaseCell& cell);

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_CASE_CELL_H_
