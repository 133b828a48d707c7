// Does with a document everything that the system can do with one.
#ifndef FUZZ_PUT_THROUGH_H_
#define FUZZ_PUT_THROUGH_H_

#include <string>

#include "fuzz/choices.h"

namespace svmscore::fuzz {

// Opens the document as doctor does, examines it with its verification, describes it, and scores a
// few cases unless it is refused. Checks that a refusal says why, and that no other exception is
// thrown.
void PutThrough(const std::string& document, Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_PUT_THROUGH_H_
