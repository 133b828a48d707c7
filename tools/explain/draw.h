// Random numbers that are the same on every machine.
#ifndef TOOLS_EXPLAIN_DRAW_H_
#define TOOLS_EXPLAIN_DRAW_H_

#include <cstdint>

namespace svmscore::tools {

// The splitmix64 sequence of G. L. Steele, D. Lea and C. H. Flood (2014). What the standard library
// draws differs from one implementation to another. Used by one thread.
class Draw {
 public:
  explicit Draw(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
  }
  // Each number below `bound` is as likely as another. REQUIRES: bound > 0.
  std::uint64_t Below(std::uint64_t bound) {
    const std::uint64_t uneven = (0 - bound) % bound;  // so many of all numbers are too many
    std::uint64_t drawn = Next();
    while (drawn < uneven) drawn = Next();
    return drawn % bound;
  }

 private:
  std::uint64_t state_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_EXPLAIN_DRAW_H_
