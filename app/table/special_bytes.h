// The bytes that end a cell of CSV or must not be part of one, found many at a time.
#ifndef APP_TABLE_SPECIAL_BYTES_H_
#define APP_TABLE_SPECIAL_BYTES_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace svmscore::app {

// Looks at a block of the text once, and keeps where in it those bytes are. Used by one thread.
class SpecialBytes {
 public:
  explicit SpecialBytes(char delimiter = ',') {
    std::memset(&delimiter_, static_cast<unsigned char>(delimiter), sizeof delimiter_);
  }
  // The first delimiter, line end, quotation mark or NUL at `from` or after it, or `end`. REQUIRES:
  // the text from `from` on is what it was when this object first saw it.
  char* Find(char* from, char* end) {
    for (;;) {
      const auto at =
          reinterpret_cast<std::uintptr_t>(from) - reinterpret_cast<std::uintptr_t>(block_);
      if (at < kBlock) {
        const std::uint64_t rest = found_ >> at;
        if (rest != 0) return from + std::countr_zero(rest);
        from = std::min(block_ + kBlock, end);
      }
      if (from == end) return end;
      Look(from, static_cast<std::size_t>(end - from));
    }
  }

 private:
  static constexpr std::size_t kBlock = 64;
  // A register's worth of bytes, whatever the CPU calls it.
  using Bytes = unsigned char __attribute__((vector_size(16)));
  struct Halves {
    std::uint64_t low;
    std::uint64_t high;
  };

  // Eight bytes that are 0 or 255, each as one bit.
  static std::uint64_t BitsOf(std::uint64_t bytes) {
    static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
    return ((bytes & 0x8040201008040201) * 0x0101010101010101) >> 56;
  }
  void Look(char* block, std::size_t size) {
    char padded[kBlock] = {};
    const char* next = block;
    if (size < kBlock) next = static_cast<const char*>(std::memcpy(padded, block, size));
    found_ = 0;
    for (std::size_t i = 0; i < kBlock; i += sizeof(Bytes)) {
      Bytes bytes;
      std::memcpy(&bytes, next + i, sizeof bytes);
      const auto special =
          std::bit_cast<Halves>((bytes == delimiter_) | (bytes == '\n') | (bytes == '\r') |
                                (bytes == '"') | (bytes == '\0'));
      found_ |= (BitsOf(special.low) | BitsOf(special.high) << 8) << i;
    }
    if (size < kBlock) found_ &= (std::uint64_t{1} << size) - 1;
    block_ = block;
  }

  Bytes delimiter_;  // in every place
  char* block_ = nullptr;
  std::uint64_t found_ = 0;  // of its 64 bytes, the first one lowest
};

}  // namespace svmscore::app

#endif  // APP_TABLE_SPECIAL_BYTES_H_
