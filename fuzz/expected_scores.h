// What cases should score, made from what they do score.
#ifndef FUZZ_EXPECTED_SCORES_H_
#define FUZZ_EXPECTED_SCORES_H_

#include "fuzz/choices.h"
#include "host/load/loader.h"
#include "tools/doctor/comparison.h"

namespace svmscore::fuzz {

// A few cases and their scores, some of them spoilt in the ways that doctor tells apart: columns
// that have changed places, signs, offsets and scales, single cells.
tools::CaseFiles MakeCaseFiles(const LoadedModel& loaded, Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_EXPECTED_SCORES_H_
