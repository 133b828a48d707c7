// Reading a whole container of derived fields.
#ifndef HOST_TRANSFORM_BUILD_DICTIONARY_H_
#define HOST_TRANSFORM_BUILD_DICTIONARY_H_

#include <memory>
#include <string>
#include <unordered_set>

#include "host/model/score_dictionary.h"
#include "host/transform/transformation_dictionary.h"
#include "host/xml/attributes.h"

namespace svmscore::transform {

// What the document's support vector machine model needs of the transformations.
struct NeededByModel {
  const Element* model = nullptr;  // null: the document has none, and everything is needed
  // The names that vector fields and output expressions use.
  std::unordered_set<std::string> names;
  // Names and values of categorical predictors, in document order.
  std::vector<std::pair<std::string, std::string>> categories;
  // The fields of the mining schema; without one the model may use every field of the dictionary.
  bool has_schema = false;
  std::unordered_set<std::string> schema;
};
NeededByModel FindNeededByModel(const xercesc::DOMDocument* document);

// Derived fields with the name of an input take its place when they are local to the model:
// children of LocalTransformations, or moved out of it and marked by the attribute x-scope="local".
bool IsLocal(const Element* derived_field);

// Builds the dictionary of a TransformationDictionary or LocalTransformations element. What cannot
// be computed is refused where the model needs it, or the document has no model; else it is a
// remark of the dictionary.
std::unique_ptr<MCZandor_850::TransformationDictionary> BuildDictionary(
    const Element* container, const MCZandor_850::ScoreDictionary* inputs);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_BUILD_DICTIONARY_H_
