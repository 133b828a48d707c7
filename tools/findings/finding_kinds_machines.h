// Kinds of finding. Of machines, and of how they decide together.
#ifndef TOOLS_FINDINGS_FINDING_KINDS_MACHINES_H_
#define TOOLS_FINDINGS_FINDING_KINDS_MACHINES_H_

#include <array>

#include "tools/findings/finding_kind.h"

namespace svmscore::tools {

inline constexpr std::array kMachinesFindings = {
    FindingKind{"unknown-vector", Severity::kError, "the decision value lacks the term",
                "add the vector, or correct its id"},
    FindingKind{"surplus-vectors", Severity::kError,
                "the decision value lacks their terms, and all others may be paired wrongly",
                "give every support vector a coefficient"},
    FindingKind{"surplus-coefficients", Severity::kError,
                "the decision value lacks their terms, and all others may be paired wrongly",
                "give every coefficient a support vector"},
    FindingKind{"bad-coefficient", Severity::kError, "the decision value lacks the term",
                "write a number"},
    FindingKind{"no-coefficient-value", Severity::kWarning,
                "the term counts for nothing, as the standard says", "write the value"},
    FindingKind{"bad-absolute-value", Severity::kError,
                "every decision value of the machine is shifted", "write a number"},
    FindingKind{"no-absolute-value", Severity::kNote, "it is 0, as the standard says", "state it"},
    FindingKind{"second-list", Severity::kError, "its terms are not part of the decision value",
                "put all terms of a machine into one list"},
    FindingKind{"empty-machine", Severity::kError, "the machine says the same of every case",
                "export the machine anew with its terms"},
    FindingKind{"zero-machine", Severity::kError, "the machine says the same of every case",
                "export the machine anew with its coefficients"},
    FindingKind{"one-signed-machine", Severity::kWarning,
                "the machine knows one side only, and may decide for it throughout",
                "check the signs of the coefficients against the producer"},
    FindingKind{"coefficients-unbalanced", Severity::kWarning,
                "a term may be lost or changed, and decision values shifted",
                "check the coefficients against the producer"},
    FindingKind{"constant-side", Severity::kWarning,
                "the machine decides the same way for every case",
                "check absoluteValue and threshold against the producer"},
    FindingKind{"offset-sign", Severity::kError,
                "every decision value is shifted by twice the absoluteValue",
                "change the sign of absoluteValue, or of all coefficients"},
    FindingKind{"offset-off", Severity::kWarning, "every decision value may be shifted",
                "check absoluteValue against the producer, and that all terms were exported"},
    FindingKind{"machine-sign", Severity::kError,
                "the machine votes for the wrong one of its two categories",
                "swap the two categories of the machine, or change the sign of its coefficients "
                "and absoluteValue"},
    FindingKind{"max-wins-inverted", Severity::kError,
                "every machine votes for the wrong one of its two categories",
                "set maxWins to the opposite"},
    FindingKind{
        "extension-contradicts-votes", Severity::kWarning,
        "a reader that knows the extension and one that does not predict opposite categories",
        "swap response and nonResponse, or set maxWins to the opposite"},
    FindingKind{"percentages-exchanged", Severity::kWarning,
                "the model's own results hold the two percentages in the other order; score, "
                "verify and output fields put them under their categories, and another program "
                "that embeds the plug-in may not",
                "make the first category of the target the response: swap response and "
                "nonResponse, and change the signs of A and B"},
    FindingKind{"pair-out-of-order", Severity::kError,
                "its probability is given to other categories than it names",
                "put the machines into the order of the pairs of categories as the target lists "
                "them, the first one as response"},
    FindingKind{"unknown-category", Severity::kError, "votes for it count for nothing",
                "spell the category as the target does, or list it there"},
    FindingKind{"category-never-predicted", Severity::kWarning, "it is never predicted",
                "add its machines, or take it off the target"},
    FindingKind{"same-category-twice", Severity::kError, "the machine decides nothing",
                "name both categories of the machine"},
    FindingKind{"pair-repeated", Severity::kError,
                "one pair counts twice, and another one not at all",
                "export one machine for each pair of categories"},
    FindingKind{"target-repeated", Severity::kError,
                "one of the two decides for the category, and another category has no machine",
                "export one machine for each category"},
    FindingKind{"method-contradicts-machines", Severity::kError,
                "the machine with the most extreme value wins, which pairs do not make comparable",
                "write classificationMethod=\"OneAgainstOne\""},
    FindingKind{"machine-count", Severity::kError,
                "some categories cannot win, or probabilities are not those of their machines",
                "export one machine for each category, or for each pair of categories"},
    FindingKind{"method-not-used", Severity::kWarning, "the model decides one-against-one",
                "write classificationMethod=\"OneAgainstOne\", or remove the extension"},
    FindingKind{"threshold-not-used", Severity::kNote, "it decides nothing there", "remove it"},
    FindingKind{"extension-not-first", Severity::kError, "no probabilities are computed",
                "make it the first Extension of its machine"},
    FindingKind{"extension-incomplete", Severity::kError,
                "no probabilities or no interval are computed", "complete it"},
    FindingKind{"extension-on-some", Severity::kError,
                "probabilities are left out or lack some machines",
                "give every machine an extension"},
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_KINDS_MACHINES_H_
