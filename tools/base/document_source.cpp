#include "tools/base/document_source.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include <fmt/format.h>

#include "host/model/message_codes.h"
#include "tools/base/decompression.h"
#include "tools/base/error_text.h"
#include "tools/base/file_kind.h"

namespace svmscore::tools {
namespace {

// Keeps the bytes that it hands out; if reading stops early, only those read so far.
class KeepingBuffer : public std::streambuf {
 public:
  // `kept` has what was read of the source already.
  KeepingBuffer(std::streambuf& source, std::string& kept) : source_(source), kept_(kept) {
    kept.copy(chunk_.data(), kept.size());
    setg(chunk_.data(), chunk_.data(), chunk_.data() + kept.size());
  }

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

std::string BeginningOf(std::istream& file) {
  std::string beginning(kCompressionMark, '\0');
  file.read(beginning.data(), std::ssize(beginning));
  beginning.resize(static_cast<std::size_t>(file.gcount()));
  return beginning;
}

[[noreturn]] void RefuseFile(const std::string& path, const std::string& why, std::string remedy) {
  MCZandor_850::SSException error(MCZandor_850::gErrorFormater);
  error.PutErrorMessage(code::kFileUnreadable, path, why);
  error.SetRemedy(std::move(remedy));
  throw error;
}

bool IsPipe(const std::string& path) {
  std::error_code unknown;
  const auto type = std::filesystem::status(path, unknown).type();
  return type == std::filesystem::file_type::fifo || type == std::filesystem::file_type::socket;
}

}  // namespace

PmmlDocument DocumentSource::Parse(Arrays arrays) {
  if (text_) return PmmlDocument::FromText(*text_, path_, limits_, arrays);
  errno = 0;
  std::ifstream file(path_, std::ios::binary);
  if (!file) ThrowAt(nullptr, code::kFileUnreadable, path_, ErrorText(errno));
  RefuseFolder();
  std::string beginning = BeginningOf(file);
  text_ = Decompress(file, beginning);
  if (text_) return PmmlDocument::FromText(*text_, path_, limits_, arrays);
  if (!IsPipe(path_)) return PmmlDocument::FromFile(path_, limits_, arrays);
  KeepingBuffer buffer(*file.rdbuf(), text_.emplace(std::move(beginning)));
  std::istream stream(&buffer);
  return PmmlDocument::FromStream(stream, path_, limits_, arrays);
}

const std::string& DocumentSource::Text() {
  if (text_) return *text_;
  errno = 0;
  std::ifstream file(path_, std::ios::binary);
  if (file) RefuseFolder();
  std::string text = BeginningOf(file);
  text_ = Decompress(file, text);
  if (text_) return *text_;
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

// A folder can be opened, and then not be read, for no reason that the library would tell.
void DocumentSource::RefuseFolder() const {
  std::error_code unknown;
  if (!std::filesystem::is_directory(path_, unknown)) return;
  RefuseFile(path_, ErrorText(EISDIR), "name a file in it");
}

std::string DocumentSource::Beginning() const {
  if (text_) return text_->substr(0, kKindBytes);
  std::string beginning(kKindBytes, '\0');
  std::ifstream file;
  if (!IsPipe(path_)) file.open(path_, std::ios::binary);
  file.read(beginning.data(), std::ssize(beginning));
  beginning.resize(static_cast<std::size_t>(file.gcount()));
  return beginning;
}

std::string Explain(const MCZandor_850::SSException& error, const DocumentSource& source) {
  if (error.GetErrorCode() != code::kNotWellFormed) return Explain(error);
  const NoDocument why = WhyNoDocument(source.Beginning());
  if (why.what.empty()) return Explain(error);
  MCZandor_850::SSException told(error);
  told.Restate("this is not XML: " + why.what);
  told.SetRemedy(why.remedy);
  return Explain(told);
}

std::optional<std::string> DocumentSource::Decompress(std::istream& file,
                                                      std::string_view beginning) const try {
  const std::unique_ptr<Decompressor> decompressor = DecompressorFor(beginning);
  if (decompressor == nullptr) return std::nullopt;
  std::string text;
  std::array<char, 65536> in;
  std::array<char, 65536> out;
  std::size_t more = beginning.copy(in.data(), in.size());
  for (; more > 0; more = static_cast<std::size_t>(file.gcount())) {
    std::string_view ahead(in.data(), more);
    std::size_t count = 0;
    do {
      count = decompressor->Read(ahead, out.data(), out.size());
      text.append(out.data(), count);
      if (text.size() > limits_.document_size) throw BeyondLimit(limits_, &Limits::document_size);
    } while (count == out.size());
    file.read(in.data(), std::ssize(in));
  }
  if (!decompressor->IsComplete()) {
    throw BrokenCompression(
        fmt::format("it ends before its {} stream does", decompressor->Format()));
  }
  return text;
} catch (const BrokenCompression& error) {
  RefuseFile(path_, error.what(), "the file is damaged or incomplete: fetch or compress it again");
}

}  // namespace svmscore::tools
