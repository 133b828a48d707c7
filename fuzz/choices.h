// Decisions read from the bytes that a fuzzer makes up.
#ifndef FUZZ_CHOICES_H_
#define FUZZ_CHOICES_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace svmscore::fuzz {

// The same bytes always give the same decisions. Once they have run out every decision is the first
// choice, so that whatever is built from them comes to an end.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

  // Splits off the last `part` in `whole` of the bytes: decisions made with those stay the same
  // while the other bytes change.
  Choices SplitOff(std::size_t part, std::size_t whole);

  bool IsEmpty() const { return left_ == 0; }
  std::uint8_t Byte();
  // From 0 to count - 1. REQUIRES: 0 < count <= 65536.
  std::size_t Below(std::size_t count);
  bool Half() { return Byte() % 2 == 1; }
  bool Rarely() { return Byte() > 236; }
  // Any bits at all.
  double AnyDouble();
  template <typename List>
  auto Pick(const List& list) {
    return list[Below(std::size(list))];
  }
  // All bytes that are left.
  std::string Rest();

 private:
  const std::uint8_t* next_;
  std::size_t left_;
};

// A number as text: mostly a small one, sometimes one at the edge of some type, or not a number.
std::string NumberText(Choices& choices);
// A number that arithmetic may have trouble with, or an ordinary one.
double OddNumber(Choices& choices);
// A word from a vocabulary that documents, cases and patterns share, or a few letters.
std::string Word(Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_CHOICES_H_
