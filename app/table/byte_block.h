// Where in a piece of text certain bytes are, found many at a time.
#ifndef APP_TABLE_BYTE_BLOCK_H_
#define APP_TABLE_BYTE_BLOCK_H_

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
    char padded[kSize] = {};
    if (size < kSize) text = static_cast<const char*>(std::memcpy(padded, text, size));
    std::memcpy(bytes_, text, kSize);
  }

  // A bit for each byte, the first one lowest: whether `test` is true of it. `test` takes Bytes and
  // compares each with something.
  template <typename Test>
  std::uint64_t Where(const Test& test) const {
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < kSize / sizeof(Bytes); ++i) {
      const auto halves = std::bit_cast<Halves>(test(bytes_[i]));
      found |= (BitsOf(halves.low) | BitsOf(halves.high) << 8) << (i * sizeof(Bytes));
    }
    return found & present_;
  }

 private:
  struct Halves {
    std::uint64_t low;
    std::uint64_t high;
  };

  // Eight bytes that are 0 or 255, each as one bit.
  static std::uint64_t BitsOf(std::uint64_t bytes) {
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    return ((bytes & 0x8040201008040201) * 0x0101010101010101) >> 56;
  }

  std::uint64_t present_;
  Bytes bytes_[kSize / sizeof(Bytes)];
};

}  // namespace svmscore::app

#endif  // APP_TABLE_BYTE_BLOCK_H_
