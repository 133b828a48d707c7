// A file or standard input, read as bytes; what is compressed is read as what it holds.
#ifndef APP_FILES_INPUT_FILE_H_
#define APP_FILES_INPUT_FILE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tools/base/decompression.h"

namespace svmscore::app {

// Failures are thrown as Failure(kInputError) that names the file. A file that begins as gzip or
// zstd do is decompressed while it is read, in bounded memory.
class InputFile {
 public:
  // "-" is standard input.
  explicit InputFile(const std::string& path);
  // A file that is open. Owns: the descriptor. `name` is how messages call it.
  InputFile(int descriptor, std::string name);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // Reads up to `size` bytes; 0 at the end of the input only.
  std::size_t Read(char* buffer, std::size_t size) { return *Read(buffer, size, true); }
  // The same where that need not wait for whoever writes; nothing where it would.
  std::optional<std::size_t> ReadWaiting(char* buffer, std::size_t size) {
    return Read(buffer, size, false);
  }
  // Whether the bytes that are read are those of a regular file.
  bool IsPlainFile();
  // How messages call the input.
  const std::string& Name() const { return name_; }
  // The size in bytes of a regular file; 0 where it is not known.
  std::uint64_t Size() const { return size_; }
  // Bytes of the file that were read so far.
  std::uint64_t BytesRead() const { return bytes_read_; }

 private:
  void NoteSize();
  std::optional<std::size_t> Read(char* buffer, std::size_t size, bool may_wait);
  // Reads the first bytes of the file, which tell whether it is compressed.
  void Begin();
  bool IsInputWaiting() const;
  std::size_t ReadFile(char* buffer, std::size_t size);
  std::optional<std::size_t> Decompress(char* buffer, std::size_t size, bool may_wait);
  [[noreturn]] void Fail() const;

  std::string name_;
  int descriptor_;
  bool is_regular_ = false;
  std::uint64_t size_ = 0;
  std::uint64_t bytes_read_ = 0;
  bool begun_ = false;
  std::string held_;        // bytes of the file that are not handed out
  std::string_view ahead_;  // of these, the ones that are left
  bool more_at_hand_ = false;
  std::unique_ptr<tools::Decompressor> decompressor_;
};

}  // namespace svmscore::app

#endif  // APP_FILES_INPUT_FILE_H_
