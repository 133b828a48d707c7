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

void VerifyReport::Remark(std::string_view text) {
  remarks_ += Printable(text) + '\n';
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
  std::string got = "nothing";
  if (actual.IsPresent()) {
    got = Shortened(scored.TextOf(actual), kLongestInsert) +
          (quantity.is_label ? "" : Distance(judgement, allowed));
  } else if (scored.Status() != 0) {
    got += fmt::format(" (status {}; {})", scored.Status(), scored.WhyFailed());
  }
  lines_ += Printable(fmt::format("record {}: {}: expected {}, got {}", record,
                                  Shortened(quantity.name, kLongestInsert),
                                  Shortened(expected, kLongestInsert), got)) +
            '\n';
  if (!sink_ || lines_.size() < kHandedOn) return;
  sink_(remarks_);
  sink_(lines_);
  remarks_.clear();
  lines_.clear();
}

std::string VerifyReport::Text() const {
  return fmt::format("{}{}{}{} cells compared, {} disagree\n", remarks_, lines_, figures_,
                     compared_, disagreements_);
}

}  // namespace svmscore::tools
