// A file or standard input, read as bytes.
#ifndef APP_FILES_INPUT_FILE_H_
#define APP_FILES_INPUT_FILE_H_

#include <cstdint>
#include <string>

namespace svmscore::app {

// Failures are thrown as Failure(kInputError) that names the file.
class InputFile {
 public:
  // "-" is standard input.
  explicit InputFile(const std::string& path);
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  // Reads up to `size` bytes; 0 at the end of the input only.
  std::size_t Read(char* buffer, std::size_t size);
  // How messages call the input.
  const std::string& Name() const { return name_; }
  // The size in bytes of a regular file; 0 where it is not known.
  std::uint64_t Size() const { return size_; }

 private:
  [[noreturn]] void Fail() const;

  std::string name_;
  int descriptor_;
  std::uint64_t size_ = 0;
};

}  // namespace svmscore::app

#endif  // APP_FILES_INPUT_FILE_H_
