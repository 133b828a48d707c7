#include "host/xml/document.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <istream>
#include <new>
#include <utility>

#include <fmt/format.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/BinInputStream.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/model/message_codes.h"
#include "host/xml/document_memory.h"
#include "host/xml/document_parser.h"
#include "host/xml/raw_scan.h"
#include "host/xml/transcoder.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;
using xercesc::DOMElement;
using xercesc::DOMNode;

// The parser's name for a document that it reads; errors give their place by line and column.
constexpr const XMLCh* kSystemId = u"document";

void CheckScan(const Limits& limits, const RawScan& scan) {
  if (scan.Found() == RawScan::Problem::kNone) return;
  SSException error(MCZandor_850::gErrorFormater);
  if (scan.Found() == RawScan::Problem::kControl) {
    error.PutErrorMessage(
        code::kNotWellFormed,
        "it contains a control character such as NUL; is it XML in the encoding that it declares?");
  } else if (scan.Found() == RawScan::Problem::kEncoding) {
    error.PutErrorMessage(code::kNotWellFormed, scan.EncodingProblem());
  } else {
    error =
        BeyondLimit(limits, scan.Found() == RawScan::Problem::kAttributes ? &Limits::attributes
                                                                          : &Limits::declarations);
  }
  error.SetPlace(fmt::format("line {}", scan.Line()), {{}, static_cast<long>(scan.Line())});
  throw error;
}

// The parser tells where it was when it decoded a block of the document, not where in it the byte
// is.
void PlaceBadByte(const RawScan& scan, SSException& error) {
  const bool is_bad_byte = scan.BadByteLine() != 0 &&
                           error.GetErrorCode() == code::kNotWellFormed &&
                           !error.GetMessageParts().empty() &&
                           error.GetMessageParts()[0].find("-byte sequence") != std::string::npos;
  if (!is_bad_byte) return;
  error.PutErrorMessage(code::kNotWellFormed, "it is not in UTF-8: " + error.GetMessageParts()[0]);
  error.SetPlace(fmt::format("line {}", scan.BadByteLine()),
                 {{}, static_cast<long>(scan.BadByteLine())});
  error.SetRemedy(
      "save the document in UTF-8, or let its first line declare the encoding that it is in, such "
      "as ISO-8859-1 for Latin-1");
}

// Called when everything has been read.
void CheckEnd(const RawScan& scan) {
  if (!scan.EndsInsideCharacter()) return;
  SSException error(MCZandor_850::gErrorFormater);
  error.PutErrorMessage(code::kNotWellFormed, "it ends inside a character");
  error.SetPlace(fmt::format("line {}", scan.Line()), {{}, static_cast<long>(scan.Line())});
  throw error;
}

// A stream as the parser reads it, up to a limit. On failure it ends early, because the parser does
// not clean up after an exception of its source; Check then throws the reason.
class StreamSource : public xercesc::InputSource {
 public:
  StreamSource(std::istream& stream, const std::string& name, const Limits& limits,
               xercesc::MemoryManager* memory)
      : InputSource(kSystemId, memory),
        stream_(stream),
        name_(name),
        limits_(limits),
        scan_(limits) {}

  xercesc::BinInputStream* makeStream() const override {
    return new (getMemoryManager()) Bytes(*this);
  }
  const std::uint64_t& BytesRead() const { return read_; }

  void Check() const {
    if (failed_) std::rethrow_exception(failed_);
    if (read_ > limits_.document_size) throw BeyondLimit(limits_, &Limits::document_size);
    CheckScan(limits_, scan_);
    if (!stream_.bad()) return;
    ThrowAt(nullptr, code::kFileUnreadable, name_,
            error_ == 0 ? "the stream failed" : std::strerror(error_));
  }
  const RawScan& Scan() const { return scan_; }
  // Whether the end of the document was read.
  bool IsRead() const { return stream_.eof(); }
  // Whether what was read last closes PMML.
  bool EndsWithRoot() const { return end_.ends_with("PMML>"); }

 private:
  class Bytes : public xercesc::BinInputStream {
   public:
    explicit Bytes(const StreamSource& source) : source_(source) {}
    XMLFilePos curPos() const override { return source_.read_; }
    const XMLCh* getContentType() const override { return nullptr; }
    XMLSize_t readBytes(XMLByte* to, XMLSize_t most) override { return source_.Read(to, most); }

   private:
    const StreamSource& source_;
  };

  XMLSize_t Read(XMLByte* to, XMLSize_t most) const {
    errno = 0;
    stream_.read(reinterpret_cast<char*>(to), static_cast<std::streamsize>(most));
    if (stream_.bad()) error_ = errno;
    const auto count = static_cast<XMLSize_t>(stream_.gcount());
    read_ += count;
    KeepEnd({reinterpret_cast<const char*>(to), count});
    try {
      scan_.Read(to, count);
    } catch (...) {
      failed_ = std::current_exception();
      return 0;
    }
    const bool refused = read_ > limits_.document_size || scan_.Found() != RawScan::Problem::kNone;
    return refused ? 0 : count;
  }

  // In wide encodings each letter has zeros beside it.
  void KeepEnd(std::string_view bytes) const {
    constexpr std::size_t kKept = 64;
    end_ += bytes.substr(bytes.size() - std::min(bytes.size(), kKept));
    std::erase_if(end_, [](char c) { return c == '\0' || c == ' ' || c == '\n' || c == '\r'; });
    if (end_.size() > kKept) end_.erase(0, end_.size() - kKept);
  }

  std::istream& stream_;
  const std::string& name_;
  const Limits& limits_;
  mutable std::string end_;  // of what was read, without blanks
  mutable std::uint64_t read_ = 0;
  mutable RawScan scan_;
  mutable int error_ = 0;
  mutable std::exception_ptr failed_;
};

// Tells a document that is cut off from one with a fault in its last line.
void TellCutOff(const StreamSource& source, SSException& error) {
  const bool at_end = error.GetErrorCode() == code::kNotWellFormed && source.IsRead() &&
                      error.Where().line == static_cast<long>(source.Scan().Line());
  if (at_end && !source.EndsWithRoot()) {
    error.SetRemedy("the file ends there, as if it were cut off: copy it, or export it, again");
  }
}

// Used because the library's own handler ends the process.
class PanicThrower : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons) override { throw std::bad_alloc(); }
};

}  // namespace

void StartXerces() {
  // A start that failed half-way cannot be tried again.
  static const bool started = [] {
    try {
      static PanicThrower panic;
      xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                            &panic);
      return true;
    } catch (...) {
      return false;
    }
  }();
  if (!started) throw std::bad_alloc();
}

struct PmmlDocument::Parsed {
  DocumentMemory memory;
  std::string name;
  Limits limits;
  xercesc::DOMDocument* dom = nullptr;
  DocumentParser::Lines lines;
  bool sorted = false;  // the lines, by element
  std::unique_ptr<ArrayNumbers> numbers;
  bool only_plain_names = false;

  Parsed(std::string of_name, const Limits& of_limits, Arrays arrays)
      : name(std::move(of_name)), limits(of_limits) {
    if (arrays == Arrays::kAsNumbers) numbers = std::make_unique<ArrayNumbers>();
  }
  ~Parsed() {
    if (dom == nullptr) return;
    DetachLimits(dom);
    if (numbers != nullptr) DetachNumbers(dom);
    dom->release();
  }
  Parsed(const Parsed&) = delete;
  Parsed& operator=(const Parsed&) = delete;

  void Take(DocumentParser& parser) {
    dom = parser.TakeDocument();
    lines = parser.TakeLines();
    only_plain_names = numbers != nullptr && parser.HasOnlyPlainNames();
    AttachLimits(dom, limits);
    if (numbers != nullptr) AttachNumbers(dom, *numbers);
  }
};

PmmlDocument::PmmlDocument(std::unique_ptr<Parsed> parsed) : parsed_(std::move(parsed)) {}
PmmlDocument::~PmmlDocument() = default;
PmmlDocument::PmmlDocument(PmmlDocument&&) noexcept = default;
PmmlDocument& PmmlDocument::operator=(PmmlDocument&&) noexcept = default;

PmmlDocument PmmlDocument::FromFile(const std::string& path, const Limits& limits) {
  return FromFile(path, limits, Arrays::kAsTexts);
}

PmmlDocument PmmlDocument::FromFile(const std::string& path, const Limits& limits, Arrays arrays) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) ThrowAt(nullptr, code::kFileUnreadable, path, std::strerror(errno));
  std::error_code unknown;
  const std::uintmax_t size = std::filesystem::file_size(path, unknown);
  if (!unknown && size > limits.document_size) throw BeyondLimit(limits, &Limits::document_size);
  return FromStream(file, path, limits, arrays);
}

PmmlDocument PmmlDocument::FromStream(std::istream& stream, const std::string& name,
                                      const Limits& limits) {
  return FromStream(stream, name, limits, Arrays::kAsTexts);
}

PmmlDocument PmmlDocument::FromStream(std::istream& stream, const std::string& name,
                                      const Limits& limits, Arrays arrays) try {
  StartXerces();
  auto parsed = std::make_unique<Parsed>(name, limits, arrays);
  const StreamSource source(stream, name, limits, &parsed->memory);
  DocumentParser parser(&parsed->memory, parsed->limits, source.BytesRead(), parsed->numbers.get());
  try {
    parser.Parse(source);
  } catch (SSException& error) {
    source.Check();
    TellCutOff(source, error);
    PlaceBadByte(source.Scan(), error);
    throw;
  }
  source.Check();
  CheckEnd(source.Scan());
  parsed->Take(parser);
  return PmmlDocument(std::move(parsed));
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();  // the parser's own exception is not a standard one
}

PmmlDocument PmmlDocument::FromText(const std::string& text, const std::string& name,
                                    const Limits& limits) {
  return FromText(text, name, limits, Arrays::kAsTexts);
}

PmmlDocument PmmlDocument::FromText(const std::string& text, const std::string& name,
                                    const Limits& limits, Arrays arrays) try {
  StartXerces();
  if (text.size() > limits.document_size) throw BeyondLimit(limits, &Limits::document_size);
  RawScan scan(limits);
  scan.Read(text.data(), text.size());
  CheckScan(limits, scan);
  auto parsed = std::make_unique<Parsed>(name, limits, arrays);
  const std::uint64_t size = text.size();
  DocumentParser parser(&parsed->memory, parsed->limits, size, parsed->numbers.get());
  try {
    parser.Parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(text.data()),
                                            text.size(), kSystemId, false, &parsed->memory));
  } catch (SSException& error) {
    PlaceBadByte(scan, error);
    throw;
  }
  CheckEnd(scan);
  parsed->Take(parser);
  return PmmlDocument(std::move(parsed));
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();  // the parser's own exception is not a standard one
}

xercesc::DOMDocument* PmmlDocument::Dom() const {
  return parsed_->dom;
}
const std::string& PmmlDocument::Name() const {
  return parsed_->name;
}

bool PmmlDocument::HasOnlyPlainNames() const {
  return parsed_->only_plain_names;
}

void PmmlDocument::FixLines() const {}

long PmmlDocument::LineOf(const DOMElement* element) const {
  using Line = DocumentParser::Lines::value_type;
  const auto before = [](const Line& a, const Line& b) { return std::less<>()(a.first, b.first); };
  if (!parsed_->sorted) std::sort(parsed_->lines.begin(), parsed_->lines.end(), before);
  parsed_->sorted = true;
  const auto found =
      std::lower_bound(parsed_->lines.begin(), parsed_->lines.end(), Line{element, 0}, before);
  return found == parsed_->lines.end() || found->first != element
             ? 0
             : static_cast<long>(found->second);
}

void PmmlDocument::Locate(SSException& error) const {
  const DOMElement* element = error.GetElement();
  if (element == nullptr) return;
  // An element that was not in the file has the line of the one around it.
  const DOMNode* node = element;
  long line = 0;
  while (node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE) {
    line = LineOf(static_cast<const DOMElement*>(node));
    if (line != 0) break;
    node = node->getParentNode();
  }
  const std::string name = ToUtf8(element->getNodeName());
  std::string words = "element " + name;
  if (line != 0) words += fmt::format(", line {}", line);
  error.SetPlace(std::move(words), {name, line});
}

}  // namespace svmscore
