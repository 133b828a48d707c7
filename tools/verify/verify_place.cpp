// Finding the place of the verification block in the bytes of a document.
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/xml/document_memory.h"
#include "host/xml/transcoder.h"
#include "tools/base/bad_input.h"
#include "tools/base/document_bytes.h"
#include "tools/verify/verify_block.h"

namespace svmscore::tools {
namespace {

// Notes where the children of the first model stand. Within an entity the parser counts from the
// entity's beginning, and there is no place for a block.
class PlaceFinder : public xercesc::DefaultHandler {
 public:
  PlaceFinder(const xercesc::SAX2XMLReader& reader, std::string_view document)
      : reader_(reader), document_(document), width_(WidthOf(document)) {}

  void startElement(const XMLCh*, const XMLCh* local_name, const XMLCh* name,
                    const xercesc::Attributes&) override {
    ++depth_;
    const std::string local = ToUtf8(local_name);
    if (model_depth_ == 0 && !left_ && local == "SupportVectorMachineModel") {
      model_depth_ = depth_;
      const std::string whole = ToUtf8(name);
      place_.prefix = whole.substr(0, whole.size() - local.size());
    }
    if (IsRecords(local)) {
      // No tag holds another sign of this kind.
      place_.begin = FindBefore(document_, '<', Offset(), width_);
    }
  }

  void endElement(const XMLCh*, const XMLCh* local_name, const XMLCh*) override {
    const std::string local = IsChild() ? ToUtf8(local_name) : "";
    const std::string entity = entities_.empty() ? "" : entities_.front();
    if (IsRecords(local)) {
      place_.end = Offset();
      entity_of_records_ = entity;
    } else if (local == "SupportVectorMachine") {
      machines_end_ = Offset();
      entity_of_machines_ = entity;
    }
    if (depth_ == model_depth_) {
      model_depth_ = 0;
      left_ = true;
    }
    --depth_;
  }

  void startEntity(const XMLCh* name) override { entities_.push_back(ToUtf8(name)); }
  void endEntity(const XMLCh*) override { entities_.pop_back(); }

  // The entity of the document that the place is in; empty where it is in the document itself.
  const std::string& Entity() const {
    return place_.end > 0 ? entity_of_records_ : entity_of_machines_;
  }
  BlockPlace Place() const {
    if (place_.end > 0) return place_;
    return {machines_end_, machines_end_, place_.prefix};
  }

 private:
  bool IsChild() const { return model_depth_ > 0 && depth_ == model_depth_ + 1; }
  // Readers take the first.
  bool IsRecords(const std::string& local) const {
    return IsChild() && local == "ModelVerification" && place_.end == 0;
  }
  // Just after the tag that was read last.
  std::size_t Offset() const {
    return MarkSize(document_) + static_cast<std::size_t>(reader_.getSrcOffset());
  }

  const xercesc::SAX2XMLReader& reader_;
  std::string_view document_;
  ByteWidth width_;
  int depth_ = 0;
  int model_depth_ = 0;
  bool left_ = false;
  std::size_t machines_end_ = 0;
  BlockPlace place_;
  std::vector<std::string> entities_;  // that the parser is in
  std::string entity_of_machines_;
  std::string entity_of_records_;
};

}  // namespace

BlockPlace FindBlockPlace(const std::string& document, const std::string& name) try {
  if (WidthOf(document) == ByteWidth::kUnknown) {
    throw BadDocument(
        fmt::format("{}: its encoding cannot be written; save the document "
                    "as UTF-8",
                    name));
  }
  DocumentMemory memory;  // which frees what the parser's constructors lose
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(
      xercesc::XMLReaderFactory::createXMLReader(&memory));
  reader->setFeature(xercesc::XMLUni::fgXercesCalculateSrcOfs, true);
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(xercesc::XMLUni::fgXercesSchema, false);
  reader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(xercesc::XMLUni::fgXercesDisableDefaultEntityResolution, true);
  PlaceFinder finder(*reader, document);
  reader->setContentHandler(&finder);
  reader->setLexicalHandler(&finder);
  reader->parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()),
                                           document.size(), "document"));
  if (!finder.Entity().empty()) {
    throw BadDocument(
        fmt::format("{}: records cannot be put into it, for the model's elements come out "
                    "of the entity \"{}\"; write them in its place",
                    name, finder.Entity()));
  }
  return finder.Place();
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();  // the parser's own exception is not a standard one
}

std::string PutBlock(const std::string& document, const BlockPlace& place,
                     const std::string& block) {
  const bool replaces = place.begin != place.end;
  return document.substr(0, place.begin) +
         Widen(replaces ? block : "\n    " + block, WidthOf(document)) + document.substr(place.end);
}

}  // namespace svmscore::tools
