// A file that exists only in memory, for code that takes a path.
#ifndef FUZZ_MEMORY_FILE_H_
#define FUZZ_MEMORY_FILE_H_

#include <string>
#include <string_view>

namespace svmscore::fuzz {

class MemoryFile {
 public:
  explicit MemoryFile(std::string_view content);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  // Valid while this object lives.
  const std::string& Path() const { return path_; }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace svmscore::fuzz

#endif  // FUZZ_MEMORY_FILE_H_
