// What agreed with expectations and what did not.
#ifndef TOOLS_VERIFY_VERIFY_REPORT_H_
#define TOOLS_VERIFY_VERIFY_REPORT_H_

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "host/output/verification_records.h"
#include "tools/verify/verify_case.h"

namespace svmscore::tools {

class VerifyReport {
 public:
  // Takes the report piece by piece.
  using Sink = std::function<void(std::string_view)>;

  // Keeps the whole report.
  VerifyReport() = default;
  // Hands on what has been said whenever it is more than a little.
  explicit VerifyReport(Sink sink) : sink_(std::move(sink)) {}

  // A remark that stands before everything else. With a sink, REQUIRES: nothing is compared yet.
  void Remark(std::string_view text);
  // Compares the value that `scored` has for `quantity` with the expected text. `record` is the
  // number of the case, from 1. An empty text expects nothing.
  void Compare(std::size_t record, const Quantity& quantity, std::string_view expected,
               const output::Allowance& allowance, VerifyCase& scored);

  // Lines, printable already, to stand before the summary.
  void Add(std::string_view lines) { figures_ += lines; }

  std::size_t Compared() const { return compared_; }
  std::size_t Disagreements() const { return disagreements_; }
  // The remarks, one line for each disagreement, what was added, and the summary; all printable,
  // and without what the sink has.
  std::string Text() const;

 private:
  Sink sink_;
  std::string remarks_;
  std::string lines_;
  std::string figures_;
  std::size_t compared_ = 0;
  std::size_t disagreements_ = 0;
};

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_REPORT_H_
