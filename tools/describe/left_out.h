// What a model's document says and scoring does not use: all that is passed over in silence while
// the document is read, told in words.
#ifndef TOOLS_DESCRIBE_LEFT_OUT_H_
#define TOOLS_DESCRIBE_LEFT_OUT_H_

#include <string>
#include <string_view>
#include <vector>

#include "tools/findings/finding_list.h"
#include "tools/findings/inspected.h"

namespace svmscore::tools {

// One file each: the document and the model's own attributes, its fields, its vectors, its
// machines.
void CheckDocument(const Inspected& inspected, FindingList& findings);
void CheckFields(const Inspected& inspected, FindingList& findings);
void CheckVectors(const Inspected& inspected, FindingList& findings);
void CheckMachines(const Inspected& inspected, FindingList& findings);

// Tells when the element's count attribute is given and is not `actual`.
void CheckCount(const Element* element, const std::string& attribute, std::size_t actual,
                std::string_view what, FindingList& findings);

// All four.
void CheckLeftOut(const Inspected& inspected, FindingList& findings);

}  // namespace svmscore::tools

#endif  // TOOLS_DESCRIBE_LEFT_OUT_H_
