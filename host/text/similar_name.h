// Names that somebody may have meant by another.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
#ifndef HOST_TEXT_SIMILAR_NAME_H_
#define HOST_TEXT_SIMILAR_NAME_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/text/api.h"

namespace svmscore {

// In lower case, without blanks, what is written for them, and what is not seen; empty for a name
// that is too long to be compared.
SVMSCORE_HOST_API std::string PlainName(std::string_view name);

// How far a plain name may be from another to be taken for a slip in it, plus 1.
SVMSCORE_HOST_API std::size_t BeyondSlip(std::string_view plain);

// Bytes to insert, remove, replace or exchange with the next between two plain names; `beyond`
// where that is as many or more.
SVMSCORE_HOST_API std::size_t NameDistance(std::string_view plain, std::string_view other,
                                           std::size_t beyond);

// The candidate that `name` differs least from, the first of several; empty where none is near.
std::string SimilarName(const std::string& name, const std::vector<std::string>& candidates);

// "did you mean "NAME"?", or nothing.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace svmscore

#endif  // HOST_TEXT_SIMILAR_NAME_H_
