// Memory for the texts of one case, all of which is released together.
#ifndef HOST_TRANSFORM_VALUE_ARENA_H_
#define HOST_TRANSFORM_VALUE_ARENA_H_

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "host/text/api.h"

namespace svmscore::transform {

// Allocates nothing before the first use, nor after Reset until more is used than before it.
// [one thread] for each arena. Owns: the arena the texts. Lives: texts, until Reset, even when the
// arena is moved. Fails: std::bad_alloc.
class SVMSCORE_HOST_API Arena {
 public:
  // The most that all texts made for one case may take: a few expressions that each double a text
  // would fill any memory. Whoever makes a text asks HasRoomFor; a value that does not fit is
  // invalid.
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20;

  // Aligned to 8 bytes.
  char* Allocate(std::size_t size);
  std::string_view Copy(std::string_view text);
  bool HasRoomFor(std::size_t size) const {
    return taken_ <= kMostBytes && size <= kMostBytes - taken_;
  }
  std::size_t BytesTaken() const { return taken_; }
  void Reset() { chunk_ = used_ = taken_ = 0; }

 private:
  struct Chunk {
    std::unique_ptr<char[]> data;
    std::size_t size;
  };
  std::vector<Chunk> chunks_;
  std::size_t chunk_ = 0;  // the chunk in use
  std::size_t used_ = 0;   // bytes of it that are taken
  std::size_t taken_ = 0;  // bytes handed out since Reset
};

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_VALUE_ARENA_H_
