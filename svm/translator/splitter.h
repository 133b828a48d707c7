// SPLITTER_STR: the numbers of a text.
#ifndef SVM_TRANSLATOR_SPLITTER_H_
#define SVM_TRANSLATOR_SPLITTER_H_

#include <cstring>
#include <type_traits>
#include <vector>

#include "host/number_text.h"

namespace MCZandor_850 {

// Appends the tokens of `text` to `output` as numbers and returns how many there were. Runs of
// separators count as one, so no token is empty. A token is the value of its longest numeric
// prefix, or 0; as an int it is truncated toward zero, and saturates. `text` is overwritten. Null
// for either text gives nothing. Any number of threads may split texts of their own.
template <typename T>
int SPLITTER_STR(char* text, const char* separators, std::vector<T>& output) {
  static_assert(std::is_same_v<T, int> || std::is_same_v<T, double>);
  if (text == nullptr || separators == nullptr) return 0;
  int count = 0;
  char* rest = nullptr;
  for (const char* token = strtok_r(text, separators, &rest); token != nullptr;
       token = strtok_r(nullptr, separators, &rest)) {
    const double number = svmscore::NumberPrefix(token);
    if constexpr (std::is_same_v<T, int>) {
      output.push_back(svmscore::TruncateToInt(number));
    } else {
      output.push_back(number);
    }
    ++count;
  }
  return count;
}

}  // namespace MCZandor_850

#endif  // SVM_TRANSLATOR_SPLITTER_H_
