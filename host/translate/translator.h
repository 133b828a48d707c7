// The bases of translators, which turn a document into a model.
#ifndef HOST_TRANSLATE_TRANSLATOR_H_
#define HOST_TRANSLATE_TRANSLATOR_H_

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/model/score_model.h"
#include "host/text/api.h"
#include "host/transform/transformation_dictionary.h"
#include "host/xml/transcoder.h"

namespace MCZandor_850 {

// A translator translates one document at a time, and may translate several in turn. The order of
// the virtual operations is part of the interface.
// [one thread] for each translator and document. Owns: a document its elements and lists of them.
// Lives: elements, as long as the document; arguments for the call. Fails: SSException,
// std::bad_alloc.
class SVMSCORE_HOST_API BaseTranslator {
 public:
  BaseTranslator();
  virtual ~BaseTranslator();
  BaseTranslator(const BaseTranslator&) = delete;
  BaseTranslator& operator=(const BaseTranslator&) = delete;

  // Each returns a new model.
  // Owns: the caller the model; document, element and dictionaries stay the caller's. Lives: a
  // model, until deleted, even without its document and translator. Fails: as above; a model whose
  // translation fails goes with its translator.
  virtual ScoreModel* ParseFromTree(xercesc::DOMDocument* document, const std::string& encoding);
  // Reads the stream as XML, safely, then translates the document.
  virtual ScoreModel* ParseFromTree(std::istream& stream, const std::string& encoding);
  // The same for the file of that name.
  virtual ScoreModel* ParseFromTree(const std::string& file, const std::string& encoding);
  // For models nested in other models. Here: SSException (260304).
  virtual ScoreModel* ParseFromTree(xercesc::DOMElement* element, ScoreDictionary* dictionary,
                                    ScoreDictionary* result_dictionary,
                                    const std::string& encoding);
  virtual ScoreModel* ParseFromTree(xercesc::DOMElement* element, ScoreModel* parent,
                                    const std::string& encoding);
  // The same as the form without a name; `name` takes the place of a file name in messages.
  virtual ScoreModel* ParseFromTree(std::istream& stream, const std::string& name,
                                    const std::string& encoding);
  // Translates the document and hands the model its result dictionary.
  // Owns: the model the dictionary, as ScoreDictionary says.
  virtual ScoreModel* ParseFromTree(xercesc::DOMDocument* document,
                                    ScoreDictionary* result_dictionary,
                                    const std::string& encoding);

  // Creates the transcoder that texts are read with.
  void CreateTranscoder(const std::string& encoding);

  // All descendant elements of that name, in document order; null for a null element.
  // Owns: the document. Lives: as long as the tree does not change.
  static xercesc::DOMNodeList* GetElementsByTagName(const xercesc::DOMElement* element,
                                                    const std::string& name);
  // Null at the end, and for a null node. Fails: never.
  static xercesc::DOMElement* GetFirstChildElt(xercesc::DOMNode* node);
  static xercesc::DOMElement* GetNextSiblingElt(xercesc::DOMNode* node);
  static bool IsEqual(const XMLCh* text, const std::string& name);
  // The text as a number. Fails: SSException (260153) for any other text.
  static double VerifyDouble(const XMLCh* text);

  // The element that was read last, as the place of a failure; null at the start. Fails: never.
  void NoteElement(const xercesc::DOMElement* element) { last_element_ = element; }
  const xercesc::DOMElement* GetLastElement() const { return last_element_; }

  // Takes a model whose translation failed. Owns: the translator. Fails: never.
  void KeepAbandonedModel(ScoreModel* model) noexcept;

 protected:
  ZandorTranscoder* transcoder_ = nullptr;  // owned; null until created

 private:
  const xercesc::DOMElement* last_element_ = nullptr;
  std::vector<std::unique_ptr<ScoreModel>> abandoned_;
};

// Rules as for BaseTranslator.
class SVMSCORE_HOST_API PMMLTranslator : public BaseTranslator {
 public:
  // `model_element` is the name of the model element that the translator handles.
  explicit PMMLTranslator(const std::string& model_element);
  ~PMMLTranslator() override;

  // Builds the dictionary of a DataDictionary element; null for a null node. With
  // `with_mining_schema` the treatments that the document's model declares in its mining schema
  // are applied to the variables.
  // Owns: the translator, until the next call, shared with the model that it is handed to.
  ScoreDictionary* ParseDictionary(xercesc::DOMNode* data_dictionary, bool with_mining_schema);
  // Applies a Targets element to the variables that it names.
  void HandleTargets(xercesc::DOMElement* targets, ScoreDictionary* dictionary);
  // Builds the derived fields of a TransformationDictionary or LocalTransformations element over
  // the inputs of `dictionary`; null for a null element. Finds the order of evaluation and refuses
  // cycles and references to nothing.
  // Owns: the caller. Lives: `dictionary`, longer than the result.
  TransformationDictionary* HandleTransformationDictionary(xercesc::DOMElement* element,
                                                           const ScoreDictionary* dictionary);

 private:
  std::string model_element_;
  std::shared_ptr<ScoreDictionary> dictionary_;
};

// The function through which a plug-in hands out its translator, under the name GiveMyTranslator.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
using GiveMyTranslatorFunction = BaseTranslator* (*)();

}  // namespace MCZandor_850

#endif  // HOST_TRANSLATE_TRANSLATOR_H_
