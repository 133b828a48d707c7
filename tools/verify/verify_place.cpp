// Finding the place of the verification block in the bytes of a document.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/xml/transcoder.h"
#include "tools/base/bad_input.h"
#include "tools/verify/verify_block.h"

namespace svmscore::tools {
namespace {

// How the bytes of a document hold ASCII characters.
enum class Width { kOneByte, kTwoBytesLow, kTwoBytesHigh, kUnknown };

Width WidthOf(std::string_view document) {
  const auto byte = [document](std::size_t i) {
    return i < document.size() ? static_cast<unsigned char>(document[i]) : 0x100U;
  };
  if (byte(0) == 0xFF && byte(1) == 0xFE) {
    return byte(2) == 0 && byte(3) == 0 ? Width::kUnknown : Width::kTwoBytesLow;
  }
  if (byte(0) == 0xFE && byte(1) == 0xFF) return Width::kTwoBytesHigh;
  if (byte(0) == '<' && byte(1) == 0 && byte(2) != 0) return Width::kTwoBytesLow;
  if (byte(0) == 0 && byte(1) == '<') return Width::kTwoBytesHigh;
  return byte(0) == 0 || byte(1) == 0 || byte(0) == 0x4C ? Width::kUnknown : Width::kOneByte;
}

// The size of a byte-order mark, which the parser does not count.
std::size_t MarkSize(std::string_view document) {
  if (document.starts_with("\xEF\xBB\xBF")) return 3;
  return document.starts_with("\xFF\xFE") || document.starts_with("\xFE\xFF") ? 2 : 0;
}

std::string Widen(std::string_view ascii, Width width) {
  if (width == Width::kOneByte) return std::string(ascii);
  std::string wide;
  for (const char c : ascii) {
    if (width == Width::kTwoBytesHigh) wide += '\0';
    wide += c;
    if (width == Width::kTwoBytesLow) wide += '\0';
  }
  return wide;
}

// Notes where the children of the first model stand. Within an entity the parser counts from the
// entity's beginning, and there is no place for a block.
class PlaceFinder : public xercesc::DefaultHandler {
 public:
  PlaceFinder(const xercesc::SAX2XMLReader& reader, std::string_view document, std::string tag)
      : reader_(reader), document_(document), tag_(std::move(tag)) {}

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
      place_.begin = document_.rfind(tag_, Offset() - 1);
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
  std::string tag_;  // the sign that opens one, as the document spells it
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

BlockPlace FindBlockPlace(const std::string& document, const std::string& name) {
  const Width width = WidthOf(document);
  if (width == Width::kUnknown) {
    throw BadDocument(
        fmt::format("{}: its encoding cannot be written; save the document "
                    "as UTF-8",
                    name));
  }
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(
      xercesc::XMLReaderFactory::createXMLReader());
  reader->setFeature(xercesc::XMLUni::fgXercesCalculateSrcOfs, true);
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(xercesc::XMLUni::fgXercesSchema, false);
  reader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(xercesc::XMLUni::fgXercesDisableDefaultEntityResolution, true);
  PlaceFinder finder(*reader, document, Widen("<", width));
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
}

std::string PutBlock(const std::string& document, const BlockPlace& place,
                     const std::string& block) {
  const bool replaces = place.begin != place.end;
  return document.substr(0, place.begin) +
         Widen(replaces ? block : "\n    " + block, WidthOf(document)) + document.substr(place.end);
}

}  // namespace svmscore::tools
