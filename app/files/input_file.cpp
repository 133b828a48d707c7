#include "app/files/input_file.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "tools/base/error_text.h"

namespace svmscore::app {

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (descriptor_ < 0) Fail();
  struct stat about {};
  if (fstat(descriptor_, &about) == 0 && S_ISREG(about.st_mode)) {
    size_ = static_cast<std::uint64_t>(about.st_size);
  }
}

InputFile::~InputFile() {
  if (descriptor_ > STDIN_FILENO) close(descriptor_);
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = read(descriptor_, buffer, size);
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) Fail();
  }
}

void InputFile::Fail() const {
  throw Failure(kInputError, fmt::format("cannot read {}: {}", name_, tools::ErrorText(errno)));
}

}  // namespace svmscore::app
