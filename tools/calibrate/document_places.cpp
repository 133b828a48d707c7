#include "tools/calibrate/document_places.h"

#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/xml/document_memory.h"
#include "host/xml/transcoder.h"
#include "tools/base/bad_input.h"
#include "tools/base/document_bytes.h"

namespace svmscore::tools {
namespace {

bool IsOwn(const xercesc::Attributes& attributes) {
  const XMLCh* extender = attributes.getValue(u"extender");
  return extender != nullptr && ToUtf8(extender) == "svmscore";
}

bool IsCalibrationNote(const xercesc::Attributes& attributes) {
  const XMLCh* name = attributes.getValue(u"name");
  return IsOwn(attributes) && name != nullptr && ToUtf8(name) == "calibration";
}

// Notes the header and the machines of models, with what they hold of this system's own.
class PartFinder : public xercesc::DefaultHandler {
 public:
  PartFinder(const xercesc::SAX2XMLReader& reader, std::string_view document)
      : reader_(reader), document_(document), width_(WidthOf(document)) {}

  void startElement(const XMLCh*, const XMLCh*, const XMLCh* qualified,
                    const xercesc::Attributes& attributes) override {
    // What is deeper than a machine's extension does not matter.
    if (path_.size() > 4) return path_.push_back({});
    Open open;
    open.name = ToUtf8(qualified);
    if (const std::size_t colon = open.name.find(':'); colon != std::string::npos) {
      open.place.prefix = open.name.substr(0, colon + 1);
      open.name.erase(0, colon + 1);
    }
    open.place.inside = Offset();
    open.place.begin = FindBefore(document_, '<', open.place.inside, width_);
    open.model = Parent().model;
    if (open.name == "SupportVectorMachineModel" && open.model < 0) {
      open.model = static_cast<int>(models_.size());
      models_.push_back({path_.size(), {}});
      open.is_model = true;
    }
    open.is_machine = Parent().is_model && open.name == "SupportVectorMachine";
    open.is_header = path_.size() == 1 && open.name == "Header" && !places_.header;
    const bool is_extension = open.name == "Extension";
    open.is_own = (is_extension && Parent().is_machine && IsOwn(attributes)) ||
                  (is_extension && Parent().is_header && IsCalibrationNote(attributes));
    open.entity = Entity();
    path_.push_back(std::move(open));
  }

  void endElement(const XMLCh*, const XMLCh*, const XMLCh*) override {
    Open open = std::move(path_.back());
    path_.pop_back();
    const bool is_root = path_.empty();
    if (!is_root && !open.is_machine && !open.is_header && !open.is_own) return;
    open.place.end = Offset();
    if (entity_.empty()) entity_ = open.entity.empty() ? Entity() : open.entity;
    if (is_root) {
      places_.root = std::move(open.place);
    } else if (open.is_machine) {
      models_[static_cast<std::size_t>(open.model)].machines.push_back(std::move(open.place));
    } else if (open.is_header) {
      places_.header = std::move(open.place);
    } else {
      path_.back().place.own.push_back(std::move(open.place));
    }
  }

  void startEntity(const XMLCh* name) override { entities_.push_back(ToUtf8(name)); }
  void endEntity(const XMLCh*) override { entities_.pop_back(); }

  // The entity that some part comes out of; empty without one.
  const std::string& PartsEntity() const { return entity_; }
  // The model that is scored is the first below the root, or else the first of all.
  DocumentPlaces Take() {
    for (const std::size_t depth : {std::size_t{1}, std::size_t{2}}) {
      for (Model& model : models_) {
        if (model.depth != depth || !places_.machines.empty()) continue;
        places_.machines = std::move(model.machines);
      }
    }
    return std::move(places_);
  }

 private:
  struct Open {
    std::string name;
    std::string entity;
    ElementPlace place;
    int model = -1;  // that it is in, or is
    bool is_model = false;
    bool is_machine = false;
    bool is_header = false;
    bool is_own = false;
  };
  struct Model {
    std::size_t depth;
    std::vector<ElementPlace> machines;
  };

  const Open& Parent() const {
    static const Open kNone;
    return path_.empty() ? kNone : path_.back();
  }
  std::string Entity() const { return entities_.empty() ? "" : entities_.front(); }
  // Just after the tag that was read last.
  std::size_t Offset() const {
    return MarkSize(document_) + static_cast<std::size_t>(reader_.getSrcOffset());
  }

  const xercesc::SAX2XMLReader& reader_;
  std::string_view document_;
  ByteWidth width_;
  std::vector<Open> path_;
  std::vector<Model> models_;
  std::vector<std::string> entities_;  // that the parser is in
  std::string entity_;
  DocumentPlaces places_;
};

}  // namespace

DocumentPlaces FindPlaces(const std::string& document, const std::string& name) try {
  if (WidthOf(document) == ByteWidth::kUnknown) {
    throw BadDocument(
        fmt::format("{}: its encoding cannot be written; save the document as UTF-8", name));
  }
  DocumentMemory memory;  // which frees what the parser's constructors lose
  const std::unique_ptr<xercesc::SAX2XMLReader> reader(
      xercesc::XMLReaderFactory::createXMLReader(&memory));
  reader->setFeature(xercesc::XMLUni::fgXercesCalculateSrcOfs, true);
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreNameSpaces, false);
  reader->setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
  reader->setFeature(xercesc::XMLUni::fgXercesSchema, false);
  reader->setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
  reader->setFeature(xercesc::XMLUni::fgXercesDisableDefaultEntityResolution, true);
  PartFinder finder(*reader, document);
  reader->setContentHandler(&finder);
  reader->setLexicalHandler(&finder);
  reader->parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(document.data()),
                                           document.size(), "document"));
  if (!finder.PartsEntity().empty()) {
    throw BadDocument(
        fmt::format("{}: it cannot be calibrated, for elements of its model come out of the entity "
                    "\"{}\"; write them in its place",
                    name, finder.PartsEntity()));
  }
  return finder.Take();
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();  // the parser's own exception is not a standard one
}

}  // namespace svmscore::tools
