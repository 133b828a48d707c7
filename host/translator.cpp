#include "host/translator.h"

#include <istream>
#include <new>
#include <utility>

#include <xercesc/util/OutOfMemoryException.hpp>

#include "host/descendants.h"
#include "host/message_codes.h"
#include "host/number_text.h"
#include "host/pmml/document.h"
#include "host/ss_exception.h"
#include "host/transcoder.h"

namespace MCZandor_850 {

using svmscore::PmmlDocument;
using xercesc::DOMDocument;
using xercesc::DOMElement;
using xercesc::DOMNode;

BaseTranslator::BaseTranslator() {
  svmscore::StartXerces();
}

BaseTranslator::~BaseTranslator() {
  delete transcoder_;
}

ScoreModel* BaseTranslator::ParseFromTree(DOMDocument*, const std::string&) {
  svmscore::ThrowAt(nullptr, svmscore::code::kUnsupported, "a translator without a model element",
                    "PMML");
}

ScoreModel* BaseTranslator::ParseFromTree(std::istream& stream, const std::string& encoding) {
  return ParseFromTree(stream, "stream", encoding);
}

ScoreModel* BaseTranslator::ParseFromTree(const std::string& file, const std::string& encoding) {
  const PmmlDocument document = PmmlDocument::FromFile(file);
  return ParseFromTree(document.Dom(), encoding);
}

ScoreModel* BaseTranslator::ParseFromTree(DOMElement* element, ScoreDictionary*, ScoreDictionary*,
                                          const std::string&) {
  svmscore::ThrowAt(element, svmscore::code::kUnsupported, "a model inside another model", "PMML");
}

ScoreModel* BaseTranslator::ParseFromTree(DOMElement* element, ScoreModel*, const std::string&) {
  svmscore::ThrowAt(element, svmscore::code::kUnsupported, "a model inside another model", "PMML");
}

ScoreModel* BaseTranslator::ParseFromTree(std::istream& stream, const std::string& name,
                                          const std::string& encoding) {
  const PmmlDocument document = PmmlDocument::FromStream(stream, name);
  return ParseFromTree(document.Dom(), encoding);
}

ScoreModel* BaseTranslator::ParseFromTree(DOMDocument* document, ScoreDictionary* result_dictionary,
                                          const std::string& encoding) {
  ScoreModel* model = ParseFromTree(document, encoding);
  if (model != nullptr) model->SetResultScoreDictionary(result_dictionary);
  return model;
}

void BaseTranslator::CreateTranscoder(const std::string& encoding) {
  auto transcoder = std::make_unique<ZandorTranscoder>(encoding);
  delete transcoder_;
  transcoder_ = transcoder.release();
}

xercesc::DOMNodeList* BaseTranslator::GetElementsByTagName(const DOMElement* element,
                                                           const std::string& name) try {
  return element == nullptr ? nullptr
                            : svmscore::Descendants::Of(element, svmscore::ToUtf16(name).c_str());
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
}

DOMElement* BaseTranslator::GetFirstChildElt(DOMNode* node) {
  if (node == nullptr) return nullptr;
  DOMNode* child = node->getFirstChild();
  while (child != nullptr && child->getNodeType() != DOMNode::ELEMENT_NODE) {
    child = child->getNextSibling();
  }
  return static_cast<DOMElement*>(child);
}

DOMElement* BaseTranslator::GetNextSiblingElt(DOMNode* node) {
  if (node == nullptr) return nullptr;
  DOMNode* next = node->getNextSibling();
  while (next != nullptr && next->getNodeType() != DOMNode::ELEMENT_NODE) {
    next = next->getNextSibling();
  }
  return static_cast<DOMElement*>(next);
}

bool BaseTranslator::IsEqual(const XMLCh* text, const std::string& name) {
  if (text == nullptr) return false;
  // Names are nearly always ASCII: compared in place, without a copy.
  for (std::size_t i = 0;; ++i) {
    const auto expected = i < name.size() ? static_cast<unsigned char>(name[i]) : 0U;
    if (expected >= 0x80) return svmscore::ToUtf8(text) == name;
    if (text[i] != expected) return false;
    if (i == name.size()) return true;
  }
}

double BaseTranslator::VerifyDouble(const XMLCh* text) {
  const std::string narrow = svmscore::ToUtf8(text);
  const std::optional<double> number = svmscore::ParseNumber(narrow);
  if (!number) svmscore::ThrowAt(nullptr, svmscore::code::kBadValue, narrow);
  return *number;
}

void BaseTranslator::KeepAbandonedModel(ScoreModel* model) noexcept {
  std::unique_ptr<ScoreModel> kept(model);
  try {
    abandoned_.push_back(std::move(kept));
  } catch (...) {
    // Without memory to remember it by, the model is freed now: nobody holds it.
  }
}

PMMLTranslator::PMMLTranslator(const std::string& model_element) : model_element_(model_element) {}
PMMLTranslator::~PMMLTranslator() = default;

}  // namespace MCZandor_850
