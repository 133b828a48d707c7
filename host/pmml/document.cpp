#include "host/pmml/document.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <istream>
#include <new>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/message_codes.h"
#include "host/pmml/document_memory.h"
#include "host/transcoder.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;
using xercesc::DOMElement;
using xercesc::DOMNode;

// Expansions of entities that a document may cause: far beyond honest use, far below harm.
constexpr XMLSize_t kMostExpansions = 10000;

// The first complaint of the parser, as an exception with line and column.
class ComplaintHandler : public xercesc::ErrorHandler {
 public:
  void warning(const xercesc::SAXParseException&) override {}
  void error(const xercesc::SAXParseException& complaint) override { Refuse(complaint); }
  void fatalError(const xercesc::SAXParseException& complaint) override { Refuse(complaint); }
  void resetErrors() override {}

 private:
  [[noreturn]] static void Refuse(const xercesc::SAXParseException& complaint) {
    SSException error(MCZandor_850::gErrorFormater);
    error.PutErrorMessage(code::kNotWellFormed, ToUtf8(complaint.getMessage()));
    error.SetPlace(
        fmt::format("line {}, column {}", complaint.getLineNumber(), complaint.getColumnNumber()));
    throw error;
  }
};

// Nothing outside the document is ever opened.
class NoEntities : public xercesc::XMLEntityResolver {
 public:
  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override {
    const XMLCh* id = resource->getSystemId();
    ThrowAt(nullptr, code::kExternalEntity, id == nullptr ? std::string("?") : ToUtf8(id));
  }
};

// Notes the line of every element in document order: one number an element, and no work beyond.
class LineParser : public xercesc::XercesDOMParser {
 public:
  explicit LineParser(xercesc::MemoryManager* memory) : XercesDOMParser(nullptr, memory) {}
  std::vector<XMLFileLoc> TakeLines() { return std::move(lines_); }

 protected:
  void startElement(const xercesc::XMLElementDecl& declaration, const unsigned int url,
                    const XMLCh* const prefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, const XMLSize_t count,
                    const bool empty, const bool root) override {
    XercesDOMParser::startElement(declaration, url, prefix, attributes, count, empty, root);
    lines_.push_back(getScanner()->getLocator()->getLineNumber());
  }

 private:
  std::vector<XMLFileLoc> lines_;
};

// The library's own handler ends the process.
class PanicThrower : public xercesc::PanicHandler {
 public:
  void panic(const PanicReasons) override { throw std::bad_alloc(); }
};

DOMNode* NextInDocument(DOMNode* node, DOMNode* root) {
  if (DOMNode* child = node->getFirstChild()) return child;
  while (node != root) {
    if (DOMNode* next = node->getNextSibling()) return next;
    node = node->getParentNode();
  }
  return nullptr;
}

// What is left to read, where the stream can tell and what it tells can be believed; else 0.
std::size_t SizeOf(std::istream& stream) {
  constexpr std::streamoff kMost = std::streamoff{1} << 30;
  const auto start = stream.tellg();
  std::streamoff size = 0;
  if (start >= 0 && stream.seekg(0, std::ios::end)) {
    size = stream.tellg() - start;
    stream.seekg(start);
  }
  stream.clear();
  return size > 0 && size <= kMost ? static_cast<std::size_t>(size) : 0;
}

}  // namespace

void StartXerces() {
  // What a failed start leaves half made cannot be started again.
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
  xercesc::DOMDocument* dom = nullptr;
  std::vector<XMLFileLoc> lines;
  std::unordered_map<const DOMElement*, long> line_of;
  bool fixed = false;

  ~Parsed() {
    if (dom != nullptr) dom->release();
  }
};

PmmlDocument::PmmlDocument(std::unique_ptr<Parsed> parsed) : parsed_(std::move(parsed)) {}
PmmlDocument::~PmmlDocument() = default;
PmmlDocument::PmmlDocument(PmmlDocument&&) noexcept = default;
PmmlDocument& PmmlDocument::operator=(PmmlDocument&&) noexcept = default;

PmmlDocument PmmlDocument::FromFile(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) ThrowAt(nullptr, code::kFileUnreadable, path, std::strerror(errno));
  return FromStream(file, path);
}

PmmlDocument PmmlDocument::FromStream(std::istream& stream, const std::string& name) {
  constexpr std::size_t kChunk = std::size_t{1} << 16;
  std::string text;
  text.reserve(SizeOf(stream) + kChunk);
  errno = 0;
  do {
    const std::size_t size = text.size();
    text.resize(size + kChunk);
    stream.read(text.data() + size, static_cast<std::streamsize>(kChunk));
    text.resize(size + static_cast<std::size_t>(stream.gcount()));
  } while (stream);
  if (stream.bad()) {
    ThrowAt(nullptr, code::kFileUnreadable, name,
            errno == 0 ? "the stream failed" : std::strerror(errno));
  }
  return FromText(text, name);
}

PmmlDocument PmmlDocument::FromText(const std::string& text, const std::string& name) try {
  StartXerces();
  xercesc::SecurityManager limits;
  limits.setEntityExpansionLimit(kMostExpansions);
  ComplaintHandler complaints;
  NoEntities resolver;
  auto parsed = std::make_unique<Parsed>();
  LineParser parser(&parsed->memory);
  parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
  parser.setDoNamespaces(true);
  parser.setDoSchema(false);
  parser.setLoadExternalDTD(false);
  parser.setLoadSchema(false);
  parser.setSkipDTDValidation(true);
  parser.setCreateEntityReferenceNodes(false);
  parser.setCreateCommentNodes(false);
  parser.setDisableDefaultEntityResolution(true);
  parser.setXMLEntityResolver(&resolver);
  parser.setSecurityManager(&limits);
  parser.setErrorHandler(&complaints);
  const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()),
                                          text.size(), ToUtf16(name).c_str(), false,
                                          &parsed->memory);
  try {
    parser.parse(source);
  } catch (const xercesc::XMLException& failure) {
    ThrowAt(nullptr, code::kNotWellFormed, ToUtf8(failure.getMessage()));
  } catch (const xercesc::DOMException& failure) {
    ThrowAt(nullptr, code::kNotWellFormed, ToUtf8(failure.getMessage()));
  }
  parsed->name = name;
  parsed->dom = parser.adoptDocument();
  parsed->lines = parser.TakeLines();
  return PmmlDocument(std::move(parsed));
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();  // the parser's own exception is none of the standard's
}

xercesc::DOMDocument* PmmlDocument::Dom() const {
  return parsed_->dom;
}
const std::string& PmmlDocument::Name() const {
  return parsed_->name;
}

void PmmlDocument::FixLines() const {
  if (parsed_->fixed) return;
  parsed_->fixed = true;
  DOMElement* root = parsed_->dom->getDocumentElement();
  std::size_t index = 0;
  for (DOMNode* node = root; node != nullptr; node = NextInDocument(node, root)) {
    if (node->getNodeType() != DOMNode::ELEMENT_NODE) continue;
    if (index >= parsed_->lines.size()) break;
    parsed_->line_of.emplace(static_cast<DOMElement*>(node),
                             static_cast<long>(parsed_->lines[index++]));
  }
  parsed_->lines = {};
}

long PmmlDocument::LineOf(const DOMElement* element) const {
  FixLines();
  const auto found = parsed_->line_of.find(element);
  return found == parsed_->line_of.end() ? 0 : found->second;
}

void PmmlDocument::Locate(SSException& error) const {
  const DOMElement* element = error.GetElement();
  if (element == nullptr) return;
  // An element that was made while the document was read stands for the one around it.
  const DOMNode* node = element;
  long line = 0;
  while (node != nullptr && node->getNodeType() == DOMNode::ELEMENT_NODE) {
    line = LineOf(static_cast<const DOMElement*>(node));
    if (line != 0) break;
    node = node->getParentNode();
  }
  std::string place = "element " + ToUtf8(element->getNodeName());
  if (line != 0) place += fmt::format(", line {}", line);
  error.SetPlace(place);
}

}  // namespace svmscore
