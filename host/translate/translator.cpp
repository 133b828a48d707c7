#include "host/translate/translator.h"

#include <istream>
#include <new>
#include <utility>

#include <xercesc/util/OutOfMemoryException.hpp>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/text/number_text.h"
#include "host/transform/build_dictionary.h"
#include "host/xml/descendants.h"
#include "host/xml/document.h"
#include "host/xml/elements.h"
#include "host/xml/transcoder.h"

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
  return svmscore::FirstElement(node);
}

DOMElement* BaseTranslator::GetNextSiblingElt(DOMNode* node) {
  return svmscore::NextElement(node);
}

bool BaseTranslator::IsEqual(const XMLCh* text, const std::string& name) {
  return svmscore::IsEqual(text, name);
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
    // Without memory to keep track of it, the model is freed now: nobody else holds it.
  }
}

PMMLTranslator::PMMLTranslator(const std::string& model_element) : model_element_(model_element) {}
PMMLTranslator::~PMMLTranslator() = default;

TransformationDictionary* PMMLTranslator::HandleTransformationDictionary(
    DOMElement* element, const ScoreDictionary* dictionary) {
  if (element == nullptr) return nullptr;
  return svmscore::transform::BuildDictionary(element, dictionary).release();
}

}  // namespace MCZandor_850
