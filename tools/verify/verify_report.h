// What agreed with expectations and what did not.
#ifndef TOOLS_VERIFY_VERIFY_REPORT_H_
#define TOOLS_VERIFY_VERIFY_REPORT_H_

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/output/verification_records.h"
#include "tools/verify/verify_case.h"

namespace svmscore::tools {

// A value that is not the expected one.
struct Disagreement {
  std::size_t record = 0;  // the number of the case, from 1
  std::string name;        // of the quantity
  std::string expected;
  std::optional<std::string> got;  // nothing where the case has no value
  long status = 0;                 // of the case
  std::string reason;              // why it has no value; empty where its status is 0
  bool is_label = false;           // compared letter by letter
  output::Judgement judgement;
  output::Allowance allowed;
};
// One line of text, printable.
std::string LineOf(const Disagreement& disagreement);

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
  // Printable, in the order in which they came; without those that the sink has.
  const std::vector<std::string>& Remarks() const { return remarks_; }
  const std::vector<Disagreement>& Differences() const { return differences_; }
  // The remarks, one line for each disagreement, what was added, and the summary; all printable,
  // and without what the sink has.
  std::string Text() const;

 private:
  std::string Lines() const;

  Sink sink_;
  std::vector<std::string> remarks_;
  std::vector<Disagreement> differences_;
  std::string figures_;
  std::size_t held_ = 0;  // bytes of their texts
  std::size_t compared_ = 0;
  std::size_t disagreements_ = 0;
};

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_REPORT_H_
