// What agreed with expectations and what did not.
#ifndef APP_VERIFY_REPORT_H_
#define APP_VERIFY_REPORT_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "app/verify_case.h"
#include "host/output/verification.h"

namespace svmscore::app {

class VerifyReport {
 public:
  // A remark that stands before everything else.
  void Remark(std::string_view text);
  // Compares the value that `scored` has for `quantity` with the expected text. `record` is the
  // number of the case, from 1. An empty text expects nothing.
  void Compare(std::size_t record, const Quantity& quantity, std::string_view expected,
               const output::Allowance& allowance, VerifyCase& scored);

  std::size_t Compared() const { return compared_; }
  std::size_t Disagreements() const { return disagreements_; }
  // The remarks, one line for each disagreement, and the summary; all printable.
  std::string Text() const;

 private:
  std::string remarks_;
  std::string lines_;
  std::size_t compared_ = 0;
  std::size_t disagreements_ = 0;
};

}  // namespace svmscore::app

#endif  // APP_VERIFY_REPORT_H_
