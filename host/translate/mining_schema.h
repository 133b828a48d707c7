// The treatments that a mining schema declares for the model's fields.
#ifndef HOST_TRANSLATE_MINING_SCHEMA_H_
#define HOST_TRANSLATE_MINING_SCHEMA_H_

#include <xercesc/dom/DOM.hpp>

#include "host/model/score_dictionary.h"
#include "host/text/api.h"

namespace svmscore {

// Applies each MiningField of `schema` (null: nothing happens) to the variable that it names:
// optype, outliers, what happens to invalid values, and the replacement of missing values for those
// types whose replacement a translator does not read (dates, times, booleans). A field that names
// no variable is skipped.
// [one thread] for each document. Lives: arguments for the call. Fails: SSException for values that
// the standard does not define; std::bad_alloc.
SVMSCORE_HOST_API void ApplyMiningSchema(const xercesc::DOMElement* schema,
                                         const MCZandor_850::ScoreDictionary& dictionary);

}  // namespace svmscore

#endif  // HOST_TRANSLATE_MINING_SCHEMA_H_
