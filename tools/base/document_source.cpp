#include "tools/base/document_source.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "host/model/message_codes.h"
#include "tools/base/error_text.h"

namespace svmscore::tools {
namespace {

// Keeps the bytes that it hands out; if reading stops early, only those read so far.
class KeepingBuffer : public std::streambuf {
 public:
  KeepingBuffer(std::streambuf& source, std::string& kept) : source_(source), kept_(kept) {}

 protected:
  int underflow() override {
    const auto count = source_.sgetn(chunk_.data(), std::ssize(chunk_));
    if (count <= 0) return traits_type::eof();
    kept_.append(chunk_.data(), static_cast<std::size_t>(count));
    setg(chunk_.data(), chunk_.data(), chunk_.data() + count);
    return traits_type::to_int_type(chunk_[0]);
  }

 private:
  std::streambuf& source_;
  std::string& kept_;
  std::array<char, 65536> chunk_;
};

bool IsPipe(const std::string& path) {
  std::error_code unknown;
  const auto type = std::filesystem::status(path, unknown).type();
  return type == std::filesystem::file_type::fifo || type == std::filesystem::file_type::socket;
}

}  // namespace

PmmlDocument DocumentSource::Parse() {
  if (text_) return PmmlDocument::FromText(*text_, path_, limits_);
  if (!IsPipe(path_)) return PmmlDocument::FromFile(path_, limits_);
  errno = 0;
  std::ifstream pipe(path_, std::ios::binary);
  if (!pipe) ThrowAt(nullptr, code::kFileUnreadable, path_, ErrorText(errno));
  KeepingBuffer buffer(*pipe.rdbuf(), text_.emplace());
  std::istream stream(&buffer);
  return PmmlDocument::FromStream(stream, path_, limits_);
}

const std::string& DocumentSource::Text() {
  if (text_) return *text_;
  errno = 0;
  std::ifstream file(path_, std::ios::binary);
  std::string text;
  std::array<char, 65536> buffer;
  while (file) {
    errno = 0;
    file.read(buffer.data(), buffer.size());
    text.append(buffer.data(), static_cast<std::size_t>(file.gcount()));
    if (text.size() > limits_.document_size) throw BeyondLimit(limits_, &Limits::document_size);
  }
  if (!file.is_open() || file.bad()) {
    ThrowAt(nullptr, code::kFileUnreadable, path_, ErrorText(errno));
  }
  return text_.emplace(std::move(text));
}

}  // namespace svmscore::tools
