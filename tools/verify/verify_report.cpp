#include "tools/verify/verify_report.h"

#include <fmt/format.h>

#include "host/text/printable.h"

namespace svmscore::tools {
namespace {

constexpr std::size_t kHandedOn = std::size_t{1} << 16;

// What a disagreement looks like beside its two values.
std::string Distance(const output::Judgement& judgement, const output::Allowance& allowance) {
  if (judgement.near_zero) {
    return fmt::format(" (near zero: beyond the zero threshold {})", allowance.zero_threshold);
  }
  if (!judgement.deviation) return {};
  return fmt::format(" (relative deviation {:.2g}, allowed {})", *judgement.deviation,
                     allowance.precision);
}

}  // namespace

std::string LineOf(const Disagreement& of) {
  std::string got = "nothing";
  if (of.got) {
    got = Shortened(*of.got, kLongestInsert) +
          (of.is_label ? "" : Distance(of.judgement, of.allowed));
  } else if (of.status != 0) {
    got += fmt::format(" (status {}; {})", of.status, of.reason);
  }
  return Printable(fmt::format("record {}: {}: expected {}, got {}", of.record,
                               Shortened(of.name, kLongestInsert),
                               Shortened(of.expected, kLongestInsert), got));
}

void VerifyReport::Remark(std::string_view text) {
  remarks_.push_back(Printable(text));
}

void VerifyReport::Compare(std::size_t record, const Quantity& quantity, std::string_view expected,
                           const output::Allowance& allowance, VerifyCase& scored) {
  if (expected.empty()) return;
  ++compared_;
  output::Allowance allowed = allowance;
  if (quantity.is_label) allowed = {0.0, 0.0};
  const transform::Value actual = scored.Read(quantity);
  const output::Judgement judgement = output::Judge(expected, actual, allowed);
  if (judgement.agrees) return;
  ++disagreements_;
  Disagreement& difference = differences_.emplace_back();
  difference.record = record;
  difference.name = quantity.name;
  difference.expected = expected;
  if (actual.IsPresent()) difference.got = scored.TextOf(actual);
  difference.status = scored.Status();
  if (!difference.got && difference.status != 0) difference.reason = scored.WhyFailed();
  difference.is_label = quantity.is_label;
  difference.judgement = judgement;
  difference.allowed = allowed;
  held_ += sizeof difference + difference.name.size() + expected.size();
  if (difference.got) held_ += difference.got->size();
  if (!sink_ || held_ < kHandedOn) return;
  sink_(Lines());
  remarks_.clear();
  differences_.clear();
  held_ = 0;
}

std::string VerifyReport::Lines() const {
  std::string lines;
  for (const std::string& remark : remarks_) lines += remark + '\n';
  for (const Disagreement& difference : differences_) lines += LineOf(difference) + '\n';
  return lines;
}

std::string VerifyReport::Text() const {
  return fmt::format("{}{}{} cell{} compared, {} disagree\n", Lines(), figures_, compared_,
                     compared_ == 1 ? "" : "s", disagreements_);
}

}  // namespace svmscore::tools
