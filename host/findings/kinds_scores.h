// Kinds of finding about scores that differ from expected ones, or from what cases really are.
#ifndef HOST_FINDINGS_KINDS_SCORES_H_
#define HOST_FINDINGS_KINDS_SCORES_H_

#include <array>

#include "host/findings/finding_kind.h"

namespace svmscore {

inline constexpr std::array kScoreFindings = {
    FindingKind{
        "mismatch", FindingClass::kError, 0, "scores differ from the expected ones",
        "the model does not give the expected scores",
        "mend what other findings name; without any, compare the document with the model that "
        "the scores are of"},
    FindingKind{
        "mismatch-field", FindingClass::kSuspicion, 0,
        "a field distinguishes the rows that disagree from the others",
        "the rows that disagree have this in common",
        "look at how the field is declared and treated, and at its values in the file of cases"},
    FindingKind{"classes-swapped", FindingClass::kError, 0,
                "the two categories are expected the other way round",
                "every case gets the other category",
                "swap targetCategory and alternateTargetCategory, or set maxWins to the opposite, "
                "or change the sign of all coefficients and of absoluteValue"},
    FindingKind{
        "classes-permuted", FindingClass::kError, 0, "the categories are expected in another order",
        "cases get the wrong category",
        "put the categories of the machines, or of the target, into the order of the training"},
    FindingKind{"categories-renamed", FindingClass::kSuspicion, 0,
                "the categories are expected under other names",
                "the predictions agree but for the names of the categories",
                "write the categories in the expected values as the target lists them"},
    FindingKind{"rows-reordered", FindingClass::kSuspicion, 0,
                "the expected values come out in other rows",
                "rows are compared that do not belong together",
                "give the cases and the expected values the same order"},
    FindingKind{"cases-beyond-vectors", FindingClass::kSuspicion, 0,
                "the field of all cases is outside the range of the vectors",
                "the cases are on another scale than those of the training",
                "check whether a transformation of the field was lost, and the units of the cases"},
    FindingKind{"percentages-swapped", FindingClass::kError, 0,
                "the expected percentages belong to other categories",
                "percentages are in the columns of other categories",
                "swap response and nonResponse, or the value attributes of the output fields"},
    FindingKind{"offset-not-wanted", FindingClass::kError, 0,
                "the expected values come out without the absoluteValue",
                "every decision value is shifted by absoluteValue",
                "remove absoluteValue, or correct it"},
    FindingKind{"method-mistaken", FindingClass::kError, 0,
                "the expected values come out with the other classificationMethod",
                "the machines decide by the wrong rule", "change classificationMethod"},
    FindingKind{"kernel-default-differs", FindingClass::kError, 0,
                "the expected values come out with another value of a parameter that the document "
                "leaves out",
                "every kernel value differs", "state the parameters of the kernel"},
    FindingKind{"values-negated", FindingClass::kError, 0,
                "the expected values have the opposite sign", "predictions have the wrong sign",
                "change the sign of all coefficients and of absoluteValue"},
    FindingKind{"constant-offset", FindingClass::kError, 0,
                "the expected values differ by one number in all rows",
                "every prediction is shifted",
                "correct absoluteValue, or the rescaleConstant of the target"},
    FindingKind{"values-rescaled", FindingClass::kError, 0,
                "the expected values are on another scale", "predictions are on another scale",
                "give the target its rescaleFactor and rescaleConstant"},
    FindingKind{"probabilities-off", FindingClass::kSuspicion, 0,
                "the probabilities are not those with which the categories occur",
                "of the cases with a probability of 0.9, another share than 90 in 100 is right",
                "fit A and B anew with svmscore calibrate and cases that the model was not "
                "trained on"},
    FindingKind{"probabilities-reversed", FindingClass::kError, 0,
                "a category gets the larger probability, the less likely it is",
                "the less likely of two categories gets the larger probability",
                "change the signs of A and B, or let svmscore calibrate fit them anew"},
    FindingKind{"intervals-off", FindingClass::kSuspicion, 0,
                "the intervals cover another share of cases than they should",
                "intervals promise more, or less, than they keep",
                "let svmscore calibrate measure their width with cases that the model was not "
                "trained on"},
    FindingKind{"cases-of-training", FindingClass::kNote, 0,
                "every support vector is among the cases, as in the data of the training",
                "probabilities and intervals are not compared with the cases",
                "give cases that the model was not trained on"},
};

}  // namespace svmscore

#endif  // HOST_FINDINGS_KINDS_SCORES_H_
