// Files that come compressed, told by their first bytes and read as a stream.
#ifndef TOOLS_BASE_DECOMPRESSION_H_
#define TOOLS_BASE_DECOMPRESSION_H_

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace svmscore::tools {

// A compressed stream that is corrupt or goes on with something else; says what is wrong.
class BrokenCompression : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Holds as much memory as the format's window: 128 MiB at most. Used by one thread.
class Decompressor {
 public:
  virtual ~Decompressor() = default;
  // Writes up to `size` bytes to `out` and returns how many; takes what it has read off the front
  // of `in`. Fewer bytes mean that it has used all of `in`. Streams may follow each other. Throws
  // BrokenCompression and std::bad_alloc.
  virtual std::size_t Read(std::string_view& in, char* out, std::size_t size) = 0;
  // True where the stream may end after what was read.
  virtual bool IsComplete() const = 0;
  // gzip or zstd.
  virtual const char* Format() const = 0;
};

// So many bytes tell whether something is compressed.
inline constexpr std::size_t kCompressionMark = 4;
// For something that begins with these bytes; null where it is not compressed by gzip or zstd.
std::unique_ptr<Decompressor> DecompressorFor(std::string_view beginning);
// True where `beginning`, which is shorter than a mark, may be the beginning of one.
bool MayBecomeCompressed(std::string_view beginning);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_DECOMPRESSION_H_
