// Kinds of finding about machines, and how they decide together.
#ifndef HOST_FINDINGS_KINDS_MACHINES_H_
#define HOST_FINDINGS_KINDS_MACHINES_H_

#include <array>

#include "host/findings/finding_kind.h"

namespace svmscore {

inline constexpr std::array kMachineFindings = {
    FindingKind{
        "coefficient-form", FindingClass::kStandard, 0,
        "a linear machine given by one coefficient for each field is read as one support vector",
        "the document means the same in this form",
        "nothing; export it again if another program cannot read it as it is"},
    FindingKind{"coefficient-form-mistaken", FindingClass::kLossy, code::kBadContent,
                "a machine that has support vectors is scored with them, although "
                "svmRepresentation says Coefficients",
                "decision values are those of the support vectors",
                "write svmRepresentation=\"SupportVectors\", or remove the support vectors"},
    FindingKind{
        "category-spelling", FindingClass::kStandard, 0,
        "a machine spells a category differently from the target; the target's equal value is used",
        "the document means the same in this form",
        "nothing; export it again if another program cannot read it as it is"},
    FindingKind{"second-category", FindingClass::kGuessed, code::kNeedsIntake,
                "a machine that names only one of the target's two categories decides between both",
                "cases on the other side of the threshold get the category that is not named",
                "name both categories of the machine"},
    FindingKind{"unknown-vector", FindingClass::kError, code::kBadContent,
                "a support vector that names no vector is left out, together with its coefficient",
                "the decision value lacks the term", "add the vector, or correct its id"},
    FindingKind{"surplus-vectors", FindingClass::kError, code::kLengthsDiffer,
                "support vectors without a coefficient are left out",
                "the decision value lacks their terms, and all others may be paired wrongly",
                "give every support vector a coefficient"},
    FindingKind{"surplus-coefficients", FindingClass::kError, code::kLengthsDiffer,
                "coefficients without a support vector are left out",
                "the decision value lacks their terms, and all others may be paired wrongly",
                "give every coefficient a support vector"},
    FindingKind{"bad-coefficient", FindingClass::kError, code::kBadValue,
                "a coefficient that is not a number counts as 0",
                "the decision value lacks the term", "write a number"},
    FindingKind{"no-coefficient-value", FindingClass::kNote, 0, "a coefficient has no value",
                "the term is 0, as the standard says", "write the value"},
    FindingKind{"bad-absolute-value", FindingClass::kError, code::kBadValue,
                "an absoluteValue that is not a number counts as 0",
                "every decision value of the machine is shifted", "write a number"},
    FindingKind{"no-absolute-value", FindingClass::kNote, 0, "a machine states no absoluteValue",
                "it is 0, as the standard says", "state it"},
    FindingKind{
        "second-list", FindingClass::kError, code::kBadContent,
        "a machine has a second list of support vectors or of coefficients, which is not read",
        "its terms are not part of the decision value", "put all terms of a machine into one list"},
    FindingKind{"empty-machine", FindingClass::kError, code::kBadContent,
                "a machine has no usable terms", "the machine gives every case the same value",
                "export the machine again with its terms"},
    FindingKind{"zero-machine", FindingClass::kError, code::kBadContent,
                "all coefficients of a machine are 0",
                "the machine gives every case the same value",
                "export the machine again with its coefficients"},
    FindingKind{"one-signed-machine", FindingClass::kSuspicion, 0,
                "all coefficients of a machine have the same sign",
                "the machine may choose the same category for every case",
                "check the signs of the coefficients against the producer"},
    FindingKind{"coefficients-unbalanced", FindingClass::kSuspicion, 0,
                "the coefficients of a machine do not add up to 0, as training leaves them",
                "a term may be lost or changed, and decision values shifted",
                "check the coefficients against the producer"},
    FindingKind{"constant-side", FindingClass::kSuspicion, 0,
                "no decision value of a machine can cross its threshold",
                "the machine decides the same way for every case",
                "check absoluteValue and threshold against the producer"},
    FindingKind{"offset-sign", FindingClass::kError, 0,
                "the absoluteValue of a machine has the wrong sign",
                "every decision value is shifted by twice the absoluteValue",
                "change the sign of absoluteValue, or of all coefficients"},
    FindingKind{"offset-off", FindingClass::kSuspicion, 0,
                "the absoluteValue of a machine does not fit its vectors",
                "every decision value may be shifted",
                "check absoluteValue against the producer, and that all terms were exported"},
    FindingKind{"machine-sign", FindingClass::kError, 0,
                "a machine decides for the wrong one of its two categories",
                "the machine votes for the wrong one of its two categories",
                "swap the two categories of the machine, or change the sign of its coefficients "
                "and absoluteValue"},
    FindingKind{"max-wins-inverted", FindingClass::kError, 0,
                "all machines decide for the wrong one of their two categories",
                "every machine votes for the wrong one of its two categories",
                "set maxWins to the opposite"},
    FindingKind{"extension-contradicts-votes", FindingClass::kSuspicion, 0,
                "the extension of a machine names the opposite category to its votes",
                "programs that know the extension predict the opposite of those that do not",
                "set maxWins to the opposite; only where labelled cases agree with the votes, swap "
                "response and nonResponse instead"},
    FindingKind{"percentages-exchanged", FindingClass::kNote, 0,
                "the response category is the second one of the target",
                "the model's own results hold the two percentages in the other order; score, "
                "verify and output fields put them under their categories, and another program "
                "that embeds the plug-in may not",
                "make the first category of the target the response: swap response and "
                "nonResponse, and change the signs of A and B"},
    FindingKind{"response-later", FindingClass::kLossy, code::kBadContent,
                "with three or more categories, the probability of a machine belongs to the "
                "earlier category of its pair, even where its response names the later one",
                "if it was meant for the response, it is given to the other category of the pair",
                "make the earlier category the response: swap response and nonResponse, and change "
                "the signs of A and B if the probability is that of the later one"},
    FindingKind{"pair-out-of-order", FindingClass::kError, code::kBadContent,
                "the probability of a machine is used for another pair of categories than the "
                "machine names",
                "categories get probabilities that belong to others",
                "put the machines into the order of the pairs of categories as the target lists "
                "them, the first category as response"},
    FindingKind{"unknown-category", FindingClass::kError, code::kBadValue,
                "a machine names a category that the target does not have",
                "votes for it are ignored",
                "spell the category as the target does, or list it there"},
    FindingKind{"category-never-predicted", FindingClass::kSuspicion, 0,
                "a category of the target is not named by any machine", "it is never predicted",
                "add its machines, or remove it from the target"},
    FindingKind{"same-category-twice", FindingClass::kError, code::kBadContent,
                "both categories of a machine are the same", "the machine decides nothing",
                "name both categories of the machine"},
    FindingKind{"pair-repeated", FindingClass::kError, code::kBadContent,
                "two machines decide between the same two categories",
                "one pair counts twice, and another one not at all",
                "export one machine for each pair of categories"},
    FindingKind{"target-repeated", FindingClass::kError, code::kBadContent,
                "two machines decide for the same category",
                "one of the two decides for the category, and another category has no machine",
                "export one machine for each category"},
    FindingKind{
        "method-contradicts-machines", FindingClass::kError, code::kBadContent,
        "the model is one-against-all, and its machines pair every category with every other",
        "the machine with the most extreme value wins, although values of different pairs are not "
        "comparable",
        "write classificationMethod=\"OneAgainstOne\""},
    FindingKind{"machine-count", FindingClass::kError, code::kBadContent,
                "the number of machines does not fit the number of categories",
                "some categories cannot win, or probabilities are not those of their machines",
                "export one machine for each category, or for each pair of categories"},
    FindingKind{"method-not-used", FindingClass::kGuessed, code::kBadContent,
                "the classification method is one-against-all, and the extension of the machines "
                "makes it one-against-one",
                "the model decides one-against-one",
                "write classificationMethod=\"OneAgainstOne\", or remove the extension"},
    FindingKind{"threshold-not-used", FindingClass::kNote, 0,
                "a threshold is given where none is used", "the threshold has no effect",
                "remove it"},
    FindingKind{
        "extension-incomplete", FindingClass::kError, code::kLacksChildren,
        "an Extension that lacks what its machine needs gives it no probabilities, or no interval",
        "no probabilities or no interval are computed", "complete it"},
    FindingKind{"extension-on-some", FindingClass::kError, code::kBadContent,
                "some machines have a usable Extension and others do not, so all decide by votes",
                "the columns of probabilities hold shares of votes, or are not there",
                "give every machine an extension"},
    FindingKind{
        "probabilities-missing", FindingClass::kError, code::kBadContent,
        "some machines have a usable Extension and others have none, and not every machine "
        "names the categories that it could vote for",
        "there are neither probabilities nor votes of all machines: cases fail, or lack votes",
        "give every machine an extension, or name the categories of every machine"},
    FindingKind{"deviation-negative", FindingClass::kError, code::kBadContent,
                "a negative StandardDeviation reverses the interval; -1 omits it",
                "the interval is empty or missing", "write a number that is not negative"},
};

}  // namespace svmscore

#endif  // HOST_FINDINGS_KINDS_MACHINES_H_
