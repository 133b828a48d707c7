#include "host/transform/value/arena.h"

#include <algorithm>

namespace svmscore::transform {
namespace {

constexpr std::size_t kFirstChunk = 256;
constexpr std::size_t kLargestChunk = std::size_t{1} << 20;

}  // namespace

char* Arena::Allocate(std::size_t size) {
  size = (size + 7) & ~std::size_t{7};
  taken_ += size;
  while (chunk_ < chunks_.size()) {
    Chunk& chunk = chunks_[chunk_];
    if (chunk.size - used_ >= size) {
      char* memory = chunk.data.get() + used_;
      used_ += size;
      return memory;
    }
    ++chunk_;
    used_ = 0;
  }
  const std::size_t grown =
      chunks_.empty() ? kFirstChunk : std::min(2 * chunks_.back().size, kLargestChunk);
  const std::size_t wanted = std::max(size, grown);
  chunks_.push_back({std::make_unique_for_overwrite<char[]>(wanted), wanted});
  used_ = size;
  return chunks_.back().data.get();
}

std::string_view Arena::Copy(std::string_view text) {
  if (text.empty()) return {};
  char* memory = Allocate(text.size());
  text.copy(memory, text.size());
  return {memory, text.size()};
}

}  // namespace svmscore::transform
