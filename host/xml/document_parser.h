// The parser behind PmmlDocument: closed against everything outside, and held to limits.
#ifndef HOST_XML_DOCUMENT_PARSER_H_
#define HOST_XML_DOCUMENT_PARSER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/InputSource.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/XMLEntityResolver.hpp>

#include "host/xml/array_numbers.h"
#include "host/xml/limits.h"
#include "host/xml/name_count.h"

namespace svmscore {

// Nothing outside the document is ever opened.
class NoEntities : public xercesc::XMLEntityResolver {
 public:
  xercesc::InputSource* resolveEntity(xercesc::XMLResourceIdentifier* resource) override;
};

// Parses one document. Limits are checked while it is read, so that whatever exceeds one is refused
// before it takes memory.
class DocumentParser : private xercesc::XercesDOMParser {
 public:
  // The document lives in `memory`. `bytes_read` says how much has been read so far. Lists of
  // numbers go into `numbers` instead of the document, unless it is null. All arguments must
  // outlive the parser.
  DocumentParser(xercesc::MemoryManager* memory, const Limits& limits,
                 const std::uint64_t& bytes_read, ArrayNumbers* numbers);

  // Throws an SSException whose place is in words.
  void Parse(const xercesc::InputSource& source);

  using Lines = std::vector<std::pair<const Element*, XMLFileLoc>>;
  // After Parse: the document, which the caller owns, and the lines of its elements in document
  // order.
  xercesc::DOMDocument* TakeDocument() { return adoptDocument(); }
  Lines TakeLines() { return std::move(lines_); }
  // Whether no element has a prefix or is an Extension.
  bool HasOnlyPlainNames() const { return only_plain_names_; }

 protected:
  void startElement(const xercesc::XMLElementDecl& declaration, unsigned int url,
                    const XMLCh* prefix, const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                    XMLSize_t count, bool empty, bool root) override;
  void endElement(const xercesc::XMLElementDecl& declaration, unsigned int url, bool root,
                  const XMLCh* prefix) override;
  void docCharacters(const XMLCh* text, XMLSize_t length, bool cdata) override;
  void docComment(const XMLCh* comment) override;
  void docPI(const XMLCh* target, const XMLCh* data) override;
  void startEntityReference(const xercesc::XMLEntityDecl& entity) override;
  void doctypeDecl(const xercesc::DTDElementDecl& declaration, const XMLCh* public_id,
                   const XMLCh* system_id, bool has_internal, bool has_external) override;
  void entityDecl(const xercesc::DTDEntityDecl& entity, bool is_parameter,
                  bool is_ignored) override;
  void elementDecl(const xercesc::DTDElementDecl& element, bool is_ignored) override;
  void notationDecl(const xercesc::XMLNotationDecl& notation, bool is_ignored) override;
  void attDef(const xercesc::DTDElementDecl& element, const xercesc::DTDAttDef& attribute,
              bool ignoring) override;
  void startAttList(const xercesc::DTDElementDecl& declaration) override;
  void endIntSubset() override;
  void error(unsigned int number, const XMLCh* domain, ErrTypes type, const XMLCh* text,
             const XMLCh* system_id, const XMLCh* public_id, XMLFileLoc line,
             XMLFileLoc column) override;

 private:
  void CheckElement(const XMLCh* name);
  // Begins to hold back the text of an element that may be a list of numbers, if its name is plain.
  void HoldList(const XMLCh* name, bool is_plain);
  // At the end of that element: adds it to the numbers, or hands its text on.
  void KeepList();
  // Hands the held text on, because there is something else beside it.
  void HandOnText();
  void CountDeclaration();
  // Counts the text that the parser hands out.
  void Deliver(XMLSize_t length);
  // Throws, with the current line and the element's name, if any.
  [[noreturn]] void RefuseBeyond(Limit limit, const XMLCh* element = nullptr) const;

  const Limits& limits_;
  const std::uint64_t& bytes_read_;
  NoEntities resolver_;
  xercesc::SecurityManager expansions_;
  ArrayNumbers* numbers_;
  Lines lines_;
  NameCount names_;
  std::uint64_t depth_ = 0;
  std::uint64_t vectors_ = 0;
  std::uint64_t declarations_ = 0;
  std::uint64_t declared_attributes_ = 0;
  std::uint64_t rows_ = 0;  // of the current table
  std::uint64_t delivered_ = 0;
  std::uint64_t longest_entity_ = 0;
  // The list whose text is held back: at most kMostHeld characters, all of them ASCII.
  enum class Held { kNothing, kEntries, kPositions } held_ = Held::kNothing;
  const Element* list_ = nullptr;
  std::string text_;
  bool in_vector_ = false;
  std::uint64_t list_depth_ = 0;  // of the outermost list around; 0 outside of any
  std::uint64_t entries_ = 0;     // that were kept as numbers
  std::vector<double> read_entries_;
  std::vector<int> read_positions_;
  std::string last_positions_text_;
  std::shared_ptr<const std::vector<int>> last_positions_;
  bool only_plain_names_ = true;
  bool has_doctype_ = false;
  bool has_entities_ = false;
};

}  // namespace svmscore

#endif  // HOST_XML_DOCUMENT_PARSER_H_
