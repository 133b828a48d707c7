// Kinds of finding. Of scores that differ from expected ones.
#ifndef TOOLS_FINDINGS_FINDING_KINDS_SCORES_H_
#define TOOLS_FINDINGS_FINDING_KINDS_SCORES_H_

#include <array>

#include "tools/findings/finding_kind.h"

namespace svmscore::tools {

inline constexpr std::array kScoresFindings = {
    FindingKind{"mismatch", Severity::kError, "the model does not give what is expected",
                "see the other findings"},
    FindingKind{
        "mismatch-field", Severity::kWarning, "the rows that disagree have this in common",
        "look at how the field is declared and treated, and at its values in the file of cases"},
    FindingKind{"classes-swapped", Severity::kError, "every case gets the other category",
                "swap targetCategory and alternateTargetCategory, or set maxWins to the opposite, "
                "or change the sign of all coefficients and of absoluteValue"},
    FindingKind{
        "classes-permuted", Severity::kError, "cases get the wrong category",
        "put the categories of the machines, or of the target, into the order of the training"},
    FindingKind{"percentages-swapped", Severity::kError,
                "percentages stand in the columns of other categories",
                "swap response and nonResponse, or the value attributes of the output fields"},
    FindingKind{"offset-not-wanted", Severity::kError,
                "every decision value is shifted by absoluteValue",
                "remove absoluteValue, or correct it"},
    FindingKind{"method-mistaken", Severity::kError, "the machines decide by the wrong rule",
                "change classificationMethod"},
    FindingKind{"kernel-default-differs", Severity::kError, "every kernel value differs",
                "state the parameters of the kernel"},
    FindingKind{"values-negated", Severity::kError, "predictions have the wrong sign",
                "change the sign of all coefficients and of absoluteValue"},
    FindingKind{"constant-offset", Severity::kError, "every prediction is shifted",
                "correct absoluteValue, or the rescaleConstant of the target"},
    FindingKind{"values-rescaled", Severity::kError, "predictions are on another scale",
                "give the target its rescaleFactor and rescaleConstant"},
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_KINDS_SCORES_H_
