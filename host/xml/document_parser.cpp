#include "host/xml/document_parser.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>
#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLNotationDecl.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/util/XMLResourceIdentifier.hpp>
#include <xercesc/util/XMLUni.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

#include "host/model/message_codes.h"
#include "host/xml/raw_scan.h"
#include "host/xml/transcoder.h"
#include "host/xml/wide_text.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;

// The least that an expansion counts, and what a default counts in addition to its text, in UTF-16
// units.
constexpr std::uint64_t kLeastExpansion = 250;
constexpr std::uint64_t kDefault = 500;
// Of the elements that VectorDictionary has: below the document, the model and itself.
constexpr std::uint64_t kVectorDepth = 4;
// The longest text that is held back to be read as numbers.
constexpr std::size_t kMostHeld = std::size_t{16} << 20;

[[noreturn]] void RefuseAt(int code, const std::string& what, const std::string& place) {
  SSException error(MCZandor_850::gErrorFormater);
  error.PutErrorMessage(code, what, "DOCTYPE");
  error.SetPlace(place);
  throw error;
}

bool IsListOfEntries(WideView name) {
  return name == u"Array" || name == u"REAL-ARRAY" || name == u"NUM-ARRAY" ||
         name == u"INT-ARRAY" || name == u"REAL-Array" || name == u"INT-Array" ||
         name == u"REAL-Entries" || name == u"INT-Entries" || name == u"Entries";
}

// Cuts the units to bytes at the end of `text`. False, with `text` unchanged, where one of them is
// not ASCII.
bool AppendAscii(const XMLCh* units, std::size_t length, std::string& text) {
  const std::size_t before = text.size();
  text.resize(before + length);
  const XMLCh* __restrict from = units;
  char* __restrict to = text.data() + before;
  XMLCh seen = 0;
  for (std::size_t i = 0; i < length; ++i) {
    seen |= from[i];
    to[i] = static_cast<char>(from[i]);
  }
  if (seen < 0x80) return true;
  text.resize(before);
  return false;
}

}  // namespace

xercesc::InputSource* NoEntities::resolveEntity(xercesc::XMLResourceIdentifier* resource) {
  const XMLCh* id = resource->getSystemId();
  ThrowAt(nullptr, code::kExternalEntity, id == nullptr ? std::string("?") : ToUtf8(id));
}

DocumentParser::DocumentParser(xercesc::MemoryManager* memory, const Limits& limits,
                               const std::uint64_t& bytes_read, ArrayNumbers* numbers)
    : XercesDOMParser(nullptr, memory),
      limits_(limits),
      bytes_read_(bytes_read),
      numbers_(numbers) {
  setValidationScheme(Val_Never);
  setDoNamespaces(true);
  setDoSchema(false);
  setDoXInclude(false);
  setLoadExternalDTD(false);
  setLoadSchema(false);
  setSkipDTDValidation(true);
  setCreateEntityReferenceNodes(false);
  setCreateCommentNodes(false);
  setDisableDefaultEntityResolution(true);
  setXMLEntityResolver(&resolver_);
  getScanner()->setErrorReporter(this);
}

void DocumentParser::Parse(const xercesc::InputSource& source) {
  try {
    parse(source);
  } catch (const xercesc::XMLException& failure) {
    ThrowAt(nullptr, code::kNotWellFormed, ToUtf8(failure.getMessage()));
  } catch (const xercesc::DOMException& failure) {
    ThrowAt(nullptr, code::kNotWellFormed, ToUtf8(failure.getMessage()));
  }
}

void DocumentParser::startElement(const xercesc::XMLElementDecl& declaration,
                                  const unsigned int url, const XMLCh* const prefix,
                                  const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                                  const XMLSize_t count, const bool empty, const bool root) {
  HandOnText();
  const XMLCh* name = declaration.getBaseName();
  if (++depth_ > limits_.element_depth) RefuseBeyond(&Limits::element_depth, name);
  if (declaration.getId() > limits_.element_names) RefuseBeyond(&Limits::element_names, name);
  names_.Open(attributes, count);
  if (names_.AttributeNames() > limits_.attribute_names) {
    RefuseBeyond(&Limits::attribute_names, name);
  }
  if (names_.Namespaces() > limits_.namespaces) RefuseBeyond(&Limits::namespaces, name);
  for (XMLSize_t i = 0; i < count; ++i) {
    const std::size_t length = WideView(attributes.elementAt(i)->getValue()).size();
    if (length > limits_.attribute_length) RefuseBeyond(&Limits::attribute_length, name);
    // A default attribute takes memory even where it is empty.
    Deliver(length + (attributes.elementAt(i)->getSpecified() ? 0 : kDefault));
  }
  CheckElement(name);
  XercesDOMParser::startElement(declaration, url, prefix, attributes, count, empty, root);
  const auto* element = static_cast<const Element*>(getCurrentNode());
  lines_.emplace_back(element, getScanner()->getLocator()->getLineNumber());
  const bool is_plain = prefix == nullptr || *prefix == 0;
  only_plain_names_ = only_plain_names_ && is_plain;
  if (in_vector_ && list_depth_ == 0 && !empty) HoldList(name, is_plain);
}

void DocumentParser::endElement(const xercesc::XMLElementDecl& declaration, const unsigned int url,
                                const bool root, const XMLCh* const prefix) {
  KeepList();
  if (list_depth_ == depth_) list_depth_ = 0;
  if (depth_ == kVectorDepth) in_vector_ = false;
  --depth_;
  names_.Close();
  XercesDOMParser::endElement(declaration, url, root, prefix);
}

void DocumentParser::docCharacters(const XMLCh* const text, const XMLSize_t length,
                                   const bool cdata) {
  Deliver(length);
  if (held_ != Held::kNothing) {
    const bool fits = !cdata && length <= kMostHeld - text_.size();
    if (fits && AppendAscii(text, length, text_)) return;
    HandOnText();
  }
  XercesDOMParser::docCharacters(text, length, cdata);
}

void DocumentParser::docComment(const XMLCh* const comment) {
  HandOnText();
  XercesDOMParser::docComment(comment);
}

void DocumentParser::docPI(const XMLCh* const target, const XMLCh* const data) {
  HandOnText();
  XercesDOMParser::docPI(target, data);
}

void DocumentParser::startEntityReference(const xercesc::XMLEntityDecl& entity) {
  HandOnText();
  XercesDOMParser::startEntityReference(entity);
}

void DocumentParser::doctypeDecl(const xercesc::DTDElementDecl& declaration,
                                 const XMLCh* const public_id, const XMLCh* const system_id,
                                 const bool has_internal, const bool has_external) {
  has_doctype_ = true;
  // An entity that is not declared here might be declared in a DTD that is not read; the parser
  // would then silently leave it out. Telling it that there is no such DTD makes that an error.
  getScanner()->setHasNoDTD(true);
  XercesDOMParser::doctypeDecl(declaration, public_id, system_id, has_internal, has_external);
}

// Parameter entities are refused because the parser expands them without counting.
void DocumentParser::entityDecl(const xercesc::DTDEntityDecl& entity, const bool is_parameter,
                                const bool is_ignored) {
  CountDeclaration();
  if (is_parameter) {
    const std::string place = fmt::format("line {}", getScanner()->getLocator()->getLineNumber());
    if (entity.isExternal() && entity.getSystemId() != nullptr) {
      RefuseAt(code::kExternalEntity, ToUtf8(entity.getSystemId()), place);
    }
    RefuseAt(code::kUnsupported, "the parameter entity " + ToUtf8(entity.getName()), place);
  }
  has_entities_ = true;
  // An entity's text may spell markup that the document's own bytes do not show.
  RawScan scan(limits_);
  scan.Read(entity.getValue(), entity.getValueLen());
  if (scan.Found() == RawScan::Problem::kAttributes) RefuseBeyond(&Limits::attributes);
  if (scan.Found() == RawScan::Problem::kDeclarations) RefuseBeyond(&Limits::declarations);
  longest_entity_ = std::max<std::uint64_t>(longest_entity_, entity.getValueLen());
  XercesDOMParser::entityDecl(entity, is_parameter, is_ignored);
}

void DocumentParser::elementDecl(const xercesc::DTDElementDecl& element, const bool is_ignored) {
  CountDeclaration();
  XercesDOMParser::elementDecl(element, is_ignored);
}

void DocumentParser::notationDecl(const xercesc::XMLNotationDecl& notation, const bool is_ignored) {
  CountDeclaration();
  XercesDOMParser::notationDecl(notation, is_ignored);
}

void DocumentParser::attDef(const xercesc::DTDElementDecl& element,
                            const xercesc::DTDAttDef& attribute, const bool ignoring) {
  if (++declared_attributes_ > limits_.attributes) RefuseBeyond(&Limits::attributes);
  XercesDOMParser::attDef(element, attribute, ignoring);
}

// Refused because entities in the default of an attribute would be expanded without being counted.
void DocumentParser::startAttList(const xercesc::DTDElementDecl& declaration) {
  if (has_entities_) {
    RefuseAt(code::kUnsupported, "a declaration of attributes after that of an entity",
             fmt::format("line {}", getScanner()->getLocator()->getLineNumber()));
  }
  CountDeclaration();
  XercesDOMParser::startAttList(declaration);
}

// An attribute is seen only once its entities are expanded. One expansion adds at most the longest
// entity's text, so bounding the number of expansions bounds the total. An empty expansion takes as
// much time as a short text, and counts as one.
void DocumentParser::endIntSubset() {
  const std::uint64_t each = std::max(longest_entity_, kLeastExpansion);
  expansions_.setEntityExpansionLimit(static_cast<XMLSize_t>(limits_.entity_expansion / each));
  getScanner()->setSecurityManager(&expansions_);
  XercesDOMParser::endIntSubset();
}

void DocumentParser::error(const unsigned int number, const XMLCh* const domain,
                           const ErrTypes type, const XMLCh* const text, const XMLCh* const,
                           const XMLCh* const, const XMLFileLoc line, const XMLFileLoc column) {
  if (type == ErrType_Warning) return;
  if (number == xercesc::XMLErrs::EntityExpansionLimitExceeded &&
      WideView(domain) == xercesc::XMLUni::fgXMLErrDomain) {
    RefuseBeyond(&Limits::entity_expansion);
  }
  SSException error(MCZandor_850::gErrorFormater);
  error.PutErrorMessage(code::kNotWellFormed, ToUtf8(text));
  error.SetPlace(fmt::format("line {}, column {}", line, column), {{}, static_cast<long>(line)});
  throw error;
}

void DocumentParser::CheckElement(const XMLCh* name) {
  Deliver(WideView(name).size());
  switch (name[0]) {
    case u'V':
      if (WideView(name) != u"VectorInstance") break;
      if (++vectors_ > limits_.vectors) RefuseBeyond(&Limits::vectors, name);
      if (depth_ == kVectorDepth && numbers_ != nullptr) in_vector_ = true;
      break;
    case u'E':
      if (WideView(name) == u"Extension") only_plain_names_ = false;
      break;
    case u'I':
      if (WideView(name) == u"InlineTable") rows_ = 0;
      break;
    case u'r':
      if (WideView(name) == u"row" && ++rows_ > limits_.table_rows) {
        RefuseBeyond(&Limits::table_rows, name);
      }
      break;
    default:
      break;
  }
}

void DocumentParser::HoldList(const XMLCh* name, bool is_plain) {
  const bool positions = WideView(name) == u"Indices";
  if (!positions && !IsListOfEntries(name)) return;
  // The text of a list includes that of lists inside it, as it is written.
  list_depth_ = depth_;
  // With a DOCTYPE, text may come from entities.
  if (has_doctype_ || !is_plain) return;
  held_ = positions ? Held::kPositions : Held::kEntries;
  list_ = static_cast<const Element*>(getCurrentNode());
  text_.clear();
}

void DocumentParser::KeepList() {
  if (held_ == Held::kPositions) {
    const bool again = last_positions_ != nullptr && text_ == last_positions_text_;
    if (!again && ReadPositions(text_, read_positions_)) {
      last_positions_ = std::make_shared<const std::vector<int>>(read_positions_);
      last_positions_text_ = text_;
    } else if (!again) {
      return HandOnText();
    }
    numbers_->Add(list_, {{}, last_positions_, last_positions_->size()});
  } else if (held_ == Held::kEntries) {
    if (!ReadEntries(text_, read_entries_) || entries_ + read_entries_.size() > limits_.entries) {
      return HandOnText();
    }
    entries_ += read_entries_.size();
    numbers_->Add(list_, {read_entries_, nullptr, read_entries_.size()});
  }
  held_ = Held::kNothing;
}

void DocumentParser::HandOnText() {
  if (held_ == Held::kNothing) return;
  held_ = Held::kNothing;
  if (text_.empty()) return;
  const WideText wide(text_.begin(), text_.end());
  XercesDOMParser::docCharacters(wide.c_str(), wide.size(), false);
}

void DocumentParser::CountDeclaration() {
  if (++declarations_ > limits_.declarations) RefuseBeyond(&Limits::declarations);
}

// Every character of the document takes at least one byte of it; any more come from entities and
// from the defaults of attributes, which only a DOCTYPE declares.
void DocumentParser::Deliver(XMLSize_t length) {
  delivered_ += length;
  if (has_doctype_ && delivered_ > bytes_read_ &&
      delivered_ - bytes_read_ > limits_.entity_expansion) {
    RefuseBeyond(&Limits::entity_expansion);
  }
}

void DocumentParser::RefuseBeyond(Limit limit, const XMLCh* element) const {
  SSException error = BeyondLimit(limits_, limit);
  const auto line = getScanner()->getLocator()->getLineNumber();
  const std::string name = element == nullptr ? std::string() : ToUtf8(element);
  error.SetPlace(
      name.empty() ? fmt::format("line {}", line) : fmt::format("element {}, line {}", name, line),
      {name, static_cast<long>(line)});
  throw error;
}

}  // namespace svmscore
