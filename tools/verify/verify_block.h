// Making verification records from scored cases, and putting them into a document.
#ifndef TOOLS_VERIFY_VERIFY_BLOCK_H_
#define TOOLS_VERIFY_VERIFY_BLOCK_H_

#include <string>

#include "host/load/loader.h"
#include "tools/base/text_table.h"
#include "tools/verify/verify_files.h"

namespace svmscore::tools {

// A ModelVerification element, in ASCII: the inputs of the cases, and what the model makes of them.
// `prefix` stands before the names of its elements: empty, or a namespace prefix and a colon.
// Throws a BadCases for a text that XML cannot hold, for cases none of which gets a
// score, and as RequireInputs does.
std::string VerificationBlock(const LoadedModel& loaded, const TextTable& cases,
                              const CellRules& rules, const std::string& prefix);

// Where a document takes the block: these bytes are replaced by it.
struct BlockPlace {
  std::size_t begin = 0;
  std::size_t end = 0;  // the same as `begin` where the document has no such block yet
  std::string prefix;   // of the element names around
};
// `document` are the bytes of a document that holds a model. Throws a BadDocument where
// the encoding is one that this program does not write, and where the place is within an entity.
BlockPlace FindBlockPlace(const std::string& document, const std::string& name);

// The document with the block; every other byte stays as it is.
std::string PutBlock(const std::string& document, const BlockPlace& place,
                     const std::string& block);

}  // namespace svmscore::tools

#endif  // TOOLS_VERIFY_VERIFY_BLOCK_H_
