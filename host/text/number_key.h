// Numbers that keep all 64-bit whole numbers distinct, as doubles do not beyond 2^53.
#ifndef HOST_TEXT_NUMBER_KEY_H_
#define HOST_TEXT_NUMBER_KEY_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>

namespace svmscore {

// The number is the sum of both parts: the nearest double, and what that leaves of a whole number.
// The rest is 0 unless the number is a whole number that no double holds.
struct NumberKey {
  double number = 0.0;
  std::int64_t rest = 0;
  bool operator==(const NumberKey&) const = default;
};

inline NumberKey KeyOf(double number) {
  return {number, 0};
}

inline NumberKey KeyOf(std::int64_t whole) {
  const auto number = static_cast<double>(whole);
  // The largest whole numbers round to 2^63, which does not fit in 64 bits.
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (number >= 0x1p63) return {number, whole - kLargest - 1};
  return {number, whole - static_cast<std::int64_t>(number)};
}

// The whole number that a key with a rest was made from.
inline std::int64_t WholeOf(const NumberKey& key) {
  constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (key.number >= 0x1p63) return kLargest + key.rest + 1;
  return static_cast<std::int64_t>(key.number) + key.rest;
}

struct NumberKeyHash {
  std::size_t operator()(const NumberKey& key) const {
    return std::hash<double>()(key.number) ^ static_cast<std::size_t>(key.rest);
  }
};

}  // namespace svmscore

#endif  // HOST_TEXT_NUMBER_KEY_H_
