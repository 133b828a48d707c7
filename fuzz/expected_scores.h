// Expected scores of cases, made from their actual scores.
#ifndef FUZZ_EXPECTED_SCORES_H_
#define FUZZ_EXPECTED_SCORES_H_

#include "fuzz/choices.h"
#include "host/load/loader.h"
#include "tools/doctor/comparison.h"

namespace svmscore::fuzz {

// A few cases and their scores, some of them spoilt in the ways that doctor distinguishes: columns
// swapped, signs, offsets and scales changed, single cells altered.
tools::CaseFiles MakeCaseFiles(const LoadedModel& loaded, Choices& choices);

}  // namespace svmscore::fuzz

#endif  // FUZZ_EXPECTED_SCORES_H_
