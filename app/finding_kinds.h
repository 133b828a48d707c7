// The kinds of finding, family by family; each has a page in docs/findings.
#ifndef APP_FINDING_KINDS_H_
#define APP_FINDING_KINDS_H_

#include <span>

#include "app/finding.h"

namespace svmscore::app {

std::span<const FindingKind> KindsOfDocument();
std::span<const FindingKind> KindsOfFields();
std::span<const FindingKind> KindsOfVectors();
std::span<const FindingKind> KindsOfMachines();
std::span<const FindingKind> KindsOfScores();

}  // namespace svmscore::app

#endif  // APP_FINDING_KINDS_H_
