// Where in a piece of text certain bytes are, found many at a time.
#ifndef APP_TABLE_BYTE_BLOCK_H_
#define APP_TABLE_BYTE_BLOCK_H_

#include <emmintrin.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace svmscore::app {

// A copy of up to 64 bytes.
class ByteBlock {
 public:
  static constexpr std::size_t kSize = 64;
  // A register's worth of bytes, whatever the CPU calls it.
  using Bytes = unsigned char __attribute__((vector_size(16)));

  // REQUIRES: `size` is 1 to kSize.
  ByteBlock(const char* text, std::size_t size) : present_(~std::uint64_t{0} >> (kSize - size)) {
    if (size == kSize) {
      std::memcpy(bytes_, text, kSize);
    } else {
      std::memset(bytes_, 0, kSize);
      std::memcpy(bytes_, text, size);
    }
  }

  // A bit for each byte, the first one lowest: whether `test` is true of it. `test` takes Bytes and
  // compares each with something.
  template <typename Test>
  std::uint64_t Where(const Test& test) const {
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < kSize / sizeof(Bytes); ++i) {
      const int bits = _mm_movemask_epi8(std::bit_cast<__m128i>(test(bytes_[i])));
      found |= std::uint64_t{static_cast<std::uint16_t>(bits)} << (i * sizeof(Bytes));
    }
    return found & present_;
  }

 private:
  std::uint64_t present_;
  Bytes bytes_[kSize / sizeof(Bytes)];
};

}  // namespace svmscore::app

#endif  // APP_TABLE_BYTE_BLOCK_H_
