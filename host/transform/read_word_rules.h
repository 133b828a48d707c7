// The attributes that TextIndex and its normalisation steps share.
#ifndef HOST_TRANSFORM_READ_WORD_RULES_H_
#define HOST_TRANSFORM_READ_WORD_RULES_H_

#include "host/transform/text/word_matching.h"
#include "host/xml/elements.h"

namespace svmscore::transform {

// Attributes that `element` lacks are as in `inherited`, or have their defaults where that is null.
// Throws an SSException at the element for a value that is not allowed.
WordRules ReadWordRules(const Element* element, const WordRules* inherited = nullptr);

}  // namespace svmscore::transform

#endif  // HOST_TRANSFORM_READ_WORD_RULES_H_
