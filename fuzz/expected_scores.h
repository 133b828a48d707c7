// What cases should score, made from what they do score.
#ifndef FUZZ_EXPECTED_SCORES_H_
#define FUZZ_EXPECTED_SCORES_H_

#include "app/doctor/comparison.h"
#include "fuzz/choices.h"
#include "host/pmml/loader.h"

namespace svmscore::fuzz {

// A few cases and their scores, some of them spoilt in the ways that doctor tells apart: columns
// that have changed places, signs, offsets and scales, single cells.
app::CaseFiles MakeCaseFiles(const LoadedModel& loaded, Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_EXPECTED_SCORES_H_
