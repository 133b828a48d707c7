#include "app/files/input_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include "app/base/failure.h"
#include "tools/base/error_text.h"

namespace svmscore::app {
namespace {

// Compressed bytes that are read at once.
constexpr std::size_t kCompressedBytes = std::size_t{64} << 10;

}  // namespace

InputFile::InputFile(const std::string& path)
    : name_(path == "-" ? "standard input" : path),
      descriptor_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
  if (descriptor_ < 0) Fail();
  NoteSize();
}

InputFile::InputFile(int descriptor, std::string name)
    : name_(std::move(name)), descriptor_(descriptor) {
  NoteSize();
}

void InputFile::NoteSize() {
  struct stat about {};
  if (fstat(descriptor_, &about) == 0 && S_ISREG(about.st_mode)) {
    is_regular_ = true;
    size_ = static_cast<std::uint64_t>(about.st_size);
  }
}

InputFile::~InputFile() {
  if (descriptor_ > STDIN_FILENO) close(descriptor_);
}

std::optional<std::size_t> InputFile::Read(char* buffer, std::size_t size, bool may_wait) {
  if (!begun_) Begin();
  if (decompressor_ != nullptr) return Decompress(buffer, size, may_wait);
  if (!ahead_.empty()) {
    const std::size_t count = ahead_.copy(buffer, size);
    ahead_.remove_prefix(count);
    return count;
  }
  if (!may_wait && !IsInputWaiting()) return std::nullopt;
  return ReadFile(buffer, size);
}

bool InputFile::IsPlainFile() {
  if (!is_regular_) return false;
  if (!begun_) Begin();
  return decompressor_ == nullptr;
}

void InputFile::Begin() {
  begun_ = true;
  held_.resize(tools::kCompressionMark);
  std::size_t held = 0;
  while (held < held_.size() && tools::MayBecomeCompressed({held_.data(), held})) {
    const std::size_t count = ReadFile(held_.data() + held, held_.size() - held);
    if (count == 0) break;
    held += count;
  }
  ahead_ = {held_.data(), held};
  decompressor_ = tools::DecompressorFor(ahead_);
}

// The end of the input counts: reading it takes no time.
bool InputFile::IsInputWaiting() const {
  if (is_regular_) return true;
  struct pollfd input = {descriptor_, POLLIN, 0};
  return poll(&input, 1, 0) != 0;
}

std::size_t InputFile::ReadFile(char* buffer, std::size_t size) {
  for (;;) {
    const ssize_t count = read(descriptor_, buffer, size);
    if (count >= 0) {
      bytes_read_ += static_cast<std::uint64_t>(count);
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR) Fail();
  }
}

std::optional<std::size_t> InputFile::Decompress(char* buffer, std::size_t size, bool may_wait) {
  try {
    for (;;) {
      if (more_at_hand_ || !ahead_.empty()) {
        const std::size_t count = decompressor_->Read(ahead_, buffer, size);
        more_at_hand_ = count == size;
        if (count > 0) return count;
      }
      if (!may_wait && !IsInputWaiting()) return std::nullopt;
      held_.resize(kCompressedBytes);
      ahead_ = {held_.data(), ReadFile(held_.data(), held_.size())};
      if (!ahead_.empty()) continue;
      if (decompressor_->IsComplete()) return 0;
      throw Failure(kInputError,
                    fmt::format("{}: the file is compressed by {} and ends before its stream does; "
                                "it is incomplete",
                                name_, decompressor_->Format()));
    }
  } catch (const tools::BrokenCompression& error) {
    throw Failure(kInputError, fmt::format("{}: {}", name_, error.what()));
  }
}

void InputFile::Fail() const {
  throw Failure(kInputError, fmt::format("cannot read {}: {}", name_, tools::ErrorText(errno)));
}

}  // namespace svmscore::app
