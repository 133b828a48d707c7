// A grammar of documents: mostly correct ones, with something odd in them now and then.
#ifndef FUZZ_GRAMMAR_H_
#define FUZZ_GRAMMAR_H_

#include <string>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/tree.h"

namespace svmscore::fuzz {

using Names = std::vector<std::string>;

// An input of any type, with values and intervals.
Node DataField(const std::string& name, Choices& choices);
// Any expression over `fields`, at most `depth` levels deep. REQUIRES: there are fields.
Node Expression(const Names& fields, std::size_t depth, Choices& choices);
// Functions and derived fields for a TransformationDictionary, or derived fields alone for
// LocalTransformations; the names of the fields are appended to `fields`.
Node Transformations(const std::string& element, const std::string& prefix, Names& fields,
                     Choices& choices);
// A whole document: inputs x0, x1, ..., the target t, and a support vector machine model.
Node Document(Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_GRAMMAR_H_
