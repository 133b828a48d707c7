// The bytes that end a cell of CSV or must not be part of one, found many at a time.
#ifndef APP_TABLE_SPECIAL_BYTES_H_
#define APP_TABLE_SPECIAL_BYTES_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "app/table/byte_block.h"

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
      if (at < ByteBlock::kSize) {
        const std::uint64_t rest = found_ >> at;
        if (rest != 0) return from + std::countr_zero(rest);
        from = std::min(block_ + ByteBlock::kSize, end);
      }
      if (from == end) return end;
      Look(from, static_cast<std::size_t>(end - from));
    }
  }

 private:
  using Bytes = ByteBlock::Bytes;

  void Look(char* block, std::size_t size) {
    const ByteBlock bytes(block, std::min(size, ByteBlock::kSize));
    found_ = bytes.Where([this](Bytes b) {
      return (b == delimiter_) | (b == '\n') | (b == '\r') | (b == '"') | (b == '\0');
    });
    block_ = block;
  }

  Bytes delimiter_;  // in every place
  char* block_ = nullptr;
  std::uint64_t found_ = 0;  // of its 64 bytes, the first one lowest
};

}  // namespace svmscore::app

#endif  // APP_TABLE_SPECIAL_BYTES_H_
