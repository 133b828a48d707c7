// Documents with derived fields, and the cases that they are computed for.
#ifndef TESTS_TRANSFORM_FIXTURE_H_
#define TESTS_TRANSFORM_FIXTURE_H_

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/model/score_case_record.h"
#include "host/transform/transformation_dictionary.h"
#include "host/translate/translator.h"
#include "host/xml/document.h"

namespace svmscore::transform {

// A case: texts by field name; a field that is not named is missing.
using Case = std::map<std::string, std::string>;

// <DataField name= optype= dataType=/>
std::string DataField(const std::string& name, const std::string& data_type,
                      const std::string& op_type = "", const std::string& content = "");
std::string DerivedField(const std::string& name, const std::string& data_type,
                         const std::string& expression);

// A document without a model: every derived field is needed.
std::string Document(const std::string& data_fields, const std::string& transformations);
// A document with a model whose vector fields are `fields` (elements). Transformations are an
// element of either kind.
std::string ModelDocument(const std::string& data_fields, const std::string& mining_fields,
                          const std::string& transformations, const std::string& fields);
// An InlineTable. Its columns, and the cells of a row, are separated by ; and a row may have too
// few.
std::string Table(const std::string& columns, const std::vector<std::string>& rows);

// A document that is loaded, with its dictionaries.
class Loaded {
 public:
  // Reads the element LocalTransformations or, if absent, TransformationDictionary.
  explicit Loaded(const std::string& document);

  // A derived field's value in a case: "missing", "invalid", or its text.
  std::string Derive(const std::string& name, const Case& values) const;
  // The derived field d for each of the texts of the field x, separated by blanks. The text - means
  // a missing value. The results are separated by blanks, too.
  std::string DeriveEach(const std::string& texts) const;

  MCZandor_850::ScoreDictionary* Inputs() const { return inputs_; }
  const MCZandor_850::TransformationDictionary& Dictionary() const { return *dictionary_; }
  std::unique_ptr<MCZandor_850::InputCaseRecord> Record(const Case& values,
                                                        bool by_position = true) const;

 private:
  PmmlDocument document_;
  MCZandor_850::PMMLTranslator translator_{"SupportVectorMachineModel"};
  MCZandor_850::ScoreDictionary* inputs_ = nullptr;
  std::unique_ptr<MCZandor_850::TransformationDictionary> dictionary_;
};

// Loads the document and returns how that fails: "CODE at ELEMENT, line N: SENTENCE"; empty where
// it does not.
std::string Refusal(const std::string& document);

std::string Show(const MCZandor_850::ScoreValue* value);

}  // namespace svmscore::transform

#endif  // TESTS_TRANSFORM_FIXTURE_H_
