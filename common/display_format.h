// How the display helpers write numbers and lay elements out in lines: the one place for both.
#ifndef COMMON_DISPLAY_FORMAT_H_
#define COMMON_DISPLAY_FORMAT_H_

#include <cstddef>
#include <string>
#include <utility>

namespace svmscore::display {

// As printf's %g and %.17g in the "C" locale.
std::string General(double value);
std::string Full(double value);
// The same, or "miss" for the missing value.
std::string GeneralOrMiss(double value);
std::string FullOrMiss(double value);

inline std::string TextOf(int value) {
  return std::to_string(value);
}
inline std::string TextOf(double value) {
  return GeneralOrMiss(value);
}

// " (size = N)"
std::string SizeNote(std::size_t size);

inline constexpr std::size_t kWholeNumbersPerLine = 25;
inline constexpr std::size_t kNumbersPerLine = 10;

// Writes elements, `per_line` to a line, after an opening text on the first line. Without elements
// and opening text nothing is written.
class Lines {
 public:
  explicit Lines(std::size_t per_line, std::string opening = {})
      : per_line_(per_line), line_(std::move(opening)) {}
  void Add(const std::string& element);
  // Writes the last line. Call once, at the end.
  void End();

 private:
  std::size_t per_line_;
  std::size_t count_ = 0;
  std::string line_;
};

// Writes each pair or map entry as "(first,second) ".
template <typename Pairs>
void WritePairs(const Pairs& pairs) {
  Lines lines(kNumbersPerLine);
  for (const auto& [first, second] : pairs) {
    lines.Add("(" + TextOf(first) + "," + TextOf(second) + ") ");
  }
  lines.End();
}

}  // namespace svmscore::display

#endif  // COMMON_DISPLAY_FORMAT_H_
