// SPLITTER_STR: the numbers of a text.
#ifndef SVM_TRANSLATOR_SPLITTER_H_
#define SVM_TRANSLATOR_SPLITTER_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <vector>

#include "host/text/number_text.h"

namespace MCZandor_850 {

// Appends the tokens of `text` to `output` as numbers and returns how many there were. Runs of
// separators count as one, so no token is empty. The value of a token is that of its longest
// numeric prefix, or 0; as an int it is truncated toward zero, and saturates. `text` is modified.
// Null for either text gives nothing. Any number of threads may split different texts.
template <typename T>
int SPLITTER_STR(char* text, const char* separators, std::vector<T>& output) {
  static_assert(std::is_same_v<T, int> || std::is_same_v<T, double>);
  if (text == nullptr || separators == nullptr) return 0;
  std::array<bool, 256> separates = {};
  for (const char* c = separators; *c != '\0'; ++c)
    separates[static_cast<unsigned char>(*c)] = true;
  const auto is_separator = [&separates](char c) {
    return separates[static_cast<unsigned char>(c)];
  };
  char* const end = text + std::strlen(text);
  const std::size_t before = output.size();
  for (char* next = std::find_if_not(text, end, is_separator); next != end;
       next = std::find_if_not(next, end, is_separator)) {
    if constexpr (std::is_same_v<T, int>) {
      // Plain positions, without a conversion to double; up to nine digits always fit.
      int position = 0;
      char* digit = next;
      for (; digit - next < 9 && *digit >= '0' && *digit <= '9'; ++digit) {
        position = 10 * position + (*digit - '0');
      }
      if (digit != next && (digit == end || is_separator(*digit))) {
        output.push_back(position);
        next = digit;
        continue;
      }
    }
    double number = 0.0;
    const char* read = svmscore::ReadDecimal(next, end, number);
    if (read != nullptr && (read == end || is_separator(*read))) {
      next += read - next;
    } else {
      char* const token = next;
      next = std::find_if(token, end, is_separator);
      const char separator = *next;
      *next = '\0';
      number = svmscore::NumberPrefix(token);
      *next = separator;
    }
    if constexpr (std::is_same_v<T, int>) {
      output.push_back(svmscore::TruncateToInt(number));
    } else {
      output.push_back(number);
    }
  }
  return static_cast<int>(output.size() - before);
}

}  // namespace MCZandor_850

#endif  // SVM_TRANSLATOR_SPLITTER_H_
