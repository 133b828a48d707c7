#include "app/report/html_text.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "host/text/printable.h"

namespace svmscore::app {
namespace {

std::string WithMinusSign(std::string text) {
  for (std::size_t at = text.find('-'); at != std::string::npos; at = text.find('-', at)) {
    text.replace(at, 1, "\u2212");
  }
  return text;
}

std::size_t SizeOf(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

// About how many columns a character takes, judged by its first byte and on the safe side for the
// usual fonts.
double ColumnsOf(char lead) {
  constexpr std::string_view kNarrow = "ijlI.,:;'|!()[]{} tfr\"-";
  constexpr std::string_view kWide = "mwMW@%";
  // Scripts whose characters take three bytes or more are about twice as wide as Latin letters.
  if (SizeOf(lead) > 2) return 2.0;
  if (kNarrow.find(lead) != std::string_view::npos) return 0.7;
  if (kWide.find(lead) != std::string_view::npos) return 1.7;
  return (lead >= 'A' && lead <= 'Z') || SizeOf(lead) == 2 ? 1.25 : 1.05;
}

}  // namespace

std::string Escaped(std::string_view text) {
  std::string out;
  for (const char c : Printable(text, kAnyLength)) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string Brief(std::string_view text, std::size_t columns) {
  // What is cut off need not be made printable.
  const std::string printable = Printable(text.substr(0, 4 * columns + 8), kAnyLength);
  const bool is_cut = text.size() > 4 * columns + 8;
  const auto room = static_cast<double>(columns);
  double used = 0.0;
  std::size_t end = 0;
  std::size_t last = 0;  // the end of what leaves room for the ellipsis
  while (end < printable.size()) {
    used += ColumnsOf(printable[end]);
    if (used > room) break;
    end += SizeOf(printable[end]);
    if (used + 1.7 <= room) last = end;
  }
  if (end >= printable.size() && !is_cut) return Escaped(printable);
  return Escaped(printable.substr(0, last)) + "\u2026";
}

std::string Name(std::string_view text, std::size_t longest) {
  const std::string whole = Printable(text, std::max(longest, kTitleShown));
  const std::string shown = Shortened(whole, longest);
  if (shown == whole) return fmt::format("<bdi>{}</bdi>", Escaped(shown));
  return fmt::format("<bdi title=\"{}\">{}</bdi>", Escaped(whole), Escaped(shown));
}

std::string Number(double number, int digits) {
  if (std::isnan(number)) return "\u2013";
  if (std::isinf(number)) return number > 0 ? "\u221E" : "\u2212\u221E";
  const bool is_tiny = std::fabs(number) <= std::numeric_limits<double>::min();
  return WithMinusSign(fmt::format("{:.{}g}", is_tiny ? 0.0 : number, digits));
}

std::string Fixed(double number, int decimals) {
  if (!std::isfinite(number)) return Number(number);
  std::string text = fmt::format("{:.{}f}", number, decimals);
  if (text.find_first_not_of("-0.") == std::string::npos && text.front() == '-') text.erase(0, 1);
  return WithMinusSign(text);
}

std::string Percent(double share) {
  return Fixed(100.0 * share, 1) + "\u00A0%";
}

std::string Count(std::uint64_t count) {
  std::string digits = fmt::to_string(count);
  if (count < 10000) return digits;
  for (std::size_t at = digits.size() - 3; at > 0 && at < digits.size(); at -= 3) {
    digits.insert(at, "\u202F");
    if (at < 4) break;
  }
  return digits;
}

std::string Counted(std::uint64_t count, std::string_view what) {
  return fmt::format("{} {}{}", Count(count), what, count == 1 ? "" : "s");
}

std::string ShortCount(std::uint64_t count) {
  if (count < 1000) return fmt::to_string(count);
  const double thousands = static_cast<double>(count) / 1e3;
  if (count < 9950) return fmt::format("{:.1f}k", thousands);
  if (count < 999500) return fmt::format("{:.0f}k", thousands);
  return fmt::format("{:.0f}M", thousands / 1e3);
}

}  // namespace svmscore::app
