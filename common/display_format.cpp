#include "common/display_format.h"

#include <charconv>

#include "common/display.h"
#include "common/missing_value.h"

namespace svmscore::display {
namespace {

// to_chars does not depend on the locale, unlike printf.
std::string Digits(double value, int precision) {
  char buffer[64];
  const auto end =
      std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision);
  return std::string(buffer, end.ptr);
}

}  // namespace

std::string General(double value) {
  return Digits(value, 6);
}

std::string Full(double value) {
  return Digits(value, 17);
}

std::string GeneralOrMiss(double value) {
  return MCCommon_850::MCMV::IsMissing(value) ? "miss" : General(value);
}

std::string FullOrMiss(double value) {
  return MCCommon_850::MCMV::IsMissing(value) ? "miss" : Full(value);
}

std::string SizeNote(std::size_t size) {
  return " (size = " + std::to_string(size) + ")";
}

void Lines::Add(const std::string& element) {
  if (count_ == per_line_) {
    MCDisplay_850::DisplayText(1, line_);
    line_.clear();
    count_ = 0;
  }
  line_ += element;
  ++count_;
}

void Lines::End() {
  if (!line_.empty()) MCDisplay_850::DisplayText(1, line_);
}

}  // namespace svmscore::display
