// Which category a text may have meant.
#ifndef HOST_REASONS_CATEGORIES_H_
#define HOST_REASONS_CATEGORIES_H_

#include <string>
#include <string_view>

#include "host/model/score_dict_var.h"

namespace svmscore::reasons {

// The category that is the same number as `text`, or differs from it in blanks around it, in upper
// and lower case, or in a few characters; empty without one. Of a variable with very many
// categories only the first thousands are looked at. [any thread] Owns: the caller. Fails:
// std::bad_alloc.
std::string NearestCategory(const MCZandor_850::ScoreDictVar& variable, std::string_view text);

// The categories, quoted and separated by commas; of many the first few.
// [any thread] Owns: the caller. Fails: std::bad_alloc.
std::string SomeCategories(const MCZandor_850::ScoreDictVar& variable);

}  // namespace svmscore::reasons

#endif  // HOST_REASONS_CATEGORIES_H_
