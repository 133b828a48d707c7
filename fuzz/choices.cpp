#include "fuzz/choices.h"

#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <string_view>

namespace svmscore::fuzz {
namespace {

constexpr std::array<std::string_view, 34> kOddTexts = {"0",
                                                        "-0",
                                                        "1",
                                                        "-1",
                                                        "2",
                                                        "1e308",
                                                        "-1.7e308",
                                                        "5e-324",
                                                        "-1e-310",
                                                        "INF",
                                                        "-INF",
                                                        "NaN",
                                                        "1e400",
                                                        "32768",
                                                        "2147483647",
                                                        "2147483648",
                                                        "-2147483648",
                                                        "4294967295",
                                                        "4294967296",
                                                        "9007199254740993",
                                                        "9223372036854775807",
                                                        "-9223372036854775808",
                                                        "18446744073709551616",
                                                        "1e19",
                                                        "0.1",
                                                        "1,5",
                                                        " 3 ",
                                                        "",
                                                        "+",
                                                        "1e",
                                                        "0x10",
                                                        ".5",
                                                        "00000001",
                                                        "1 2"};

constexpr std::array<std::string_view, 44> kWords = {"a",
                                                     "b",
                                                     "c",
                                                     "yes",
                                                     "no",
                                                     "red",
                                                     "",
                                                     " ",
                                                     "x",
                                                     "y",
                                                     "t",
                                                     "true",
                                                     "false",
                                                     "2004-08-20",
                                                     "12:30:00",
                                                     "24:00:00",
                                                     "2004-08-20T12:30:00",
                                                     "-0001-02-29",
                                                     "9999-12-31T23:59:60.5Z",
                                                     "the quick brown fox",
                                                     "fox fox  fox, foxes",
                                                     "(a+)+$",
                                                     "[",
                                                     "^.*$",
                                                     "\\w+",
                                                     "(?R)",
                                                     "$1$$\\",
                                                     "%5.2f",
                                                     "%d",
                                                     "%s",
                                                     "%Y-%m-%d %j",
                                                     "%%",
                                                     "%",
                                                     "%*d",
                                                     "%99999d",
                                                     "\xC3\x9F\xC4\xB0",
                                                     "\xF0\x9F\x98\x80",
                                                     "e\xCC\x81",
                                                     "NA",
                                                     "1",
                                                     "1.0",
                                                     "a b c",
                                                     "\"",
                                                     "]]>&<"};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::array<double, 24> kOddNumbers = {0.0,
                                                -0.0,
                                                1.0,
                                                -1.0,
                                                0.5,
                                                5e-324,
                                                -5e-324,
                                                1e-310,
                                                -2e-310,
                                                1e-160,
                                                1e160,
                                                -1e160,
                                                1.7e308,
                                                -1.7e308,
                                                kInfinity,
                                                -kInfinity,
                                                std::numeric_limits<double>::quiet_NaN(),
                                                709.8,
                                                -745.2,
                                                0x1.fffffffffffffp-1,
                                                0x1.0000000000001p0,
                                                1e-8,
                                                100.0,
                                                -30.0};

}  // namespace

Choices Choices::SplitOff(std::size_t part, std::size_t whole) {
  const std::size_t taken = left_ * part / whole;
  left_ -= taken;
  return {next_ + left_, taken};
}

std::uint8_t Choices::Byte() {
  if (left_ == 0) return 0;
  --left_;
  return *next_++;
}

std::size_t Choices::Below(std::size_t count) {
  std::size_t number = Byte();
  if (count > 256) number = number << 8U | Byte();
  return number % count;
}

double Choices::AnyDouble() {
  std::uint64_t bits = 0;
  for (int i = 0; i < 8; ++i) bits = bits << 8U | Byte();
  return std::bit_cast<double>(bits);
}

std::string Choices::Rest() {
  std::string rest(reinterpret_cast<const char*>(next_), left_);
  next_ += left_;
  left_ = 0;
  return rest;
}

std::string NumberText(Choices& choices) {
  const std::uint8_t kind = choices.Byte();
  if (kind < 128) return std::to_string(kind % 16);
  if (kind >= 224) return std::string(choices.Pick(kOddTexts));
  const double number =
      kind >= 208 ? choices.AnyDouble() : (static_cast<double>(choices.Byte()) - 128.0) / 16.0;
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  return {buffer.data(), end};
}

double OddNumber(Choices& choices) {
  const std::uint8_t kind = choices.Byte();
  if (kind < 192) return (static_cast<double>(choices.Byte()) - 128.0) / 64.0;
  return kind < 248 ? kOddNumbers[kind % kOddNumbers.size()] : choices.AnyDouble();
}

std::string Word(Choices& choices) {
  if (!choices.Rarely()) return std::string(choices.Pick(kWords));
  std::string word;
  for (std::size_t left = choices.Below(12); left > 0; --left) {
    word += static_cast<char>(' ' + choices.Below(95));
  }
  return word;
}

}  // namespace svmscore::fuzz
