// Kinds of finding. Of the document as a whole, and of how it was read.
#ifndef TOOLS_FINDINGS_FINDING_KINDS_DOCUMENT_H_
#define TOOLS_FINDINGS_FINDING_KINDS_DOCUMENT_H_

#include <array>

#include "tools/findings/finding_kind.h"

namespace svmscore::tools {

inline constexpr std::array kDocumentFindings = {
    FindingKind{"refused", Severity::kError, "score refuses the document: no case gets a score",
                "correct what the message names; the other findings may help"},
    FindingKind{"made-readable", Severity::kNote, "the document means the same after this step",
                "nothing; export anew if another reader cannot take it as it is"},
    FindingKind{"guessed-reading", Severity::kWarning,
                "which category a case gets rests on this reading, and another reader may take the "
                "other one",
                "state in the document what was guessed here, and compare scores with those of the "
                "producer"},
    FindingKind{"reading-remark", Severity::kWarning,
                "the document was read as the remark says, which may not be what was meant",
                "correct the document so that it leaves no choice"},
    FindingKind{"other-model", Severity::kWarning,
                "its scores are not computed; the first SupportVectorMachineModel is the one that "
                "is scored",
                "keep one model in the document"},
    FindingKind{"second-application", Severity::kNote, "no score depends on it",
                "remove all but one Application"},
    FindingKind{"results", Severity::kNote,
                "an output column is empty or differs from what its declaration asks for",
                "remove the output field, or export the model with what it needs"},
    FindingKind{"bad-threshold", Severity::kError,
                "decision values between the two thresholds fall on the other side",
                "write a number"},
    FindingKind{"unknown-method", Severity::kError,
                "the machines are read as one-against-all, and decide other categories if they "
                "were meant as pairs",
                "write OneAgainstOne or OneAgainstAll"},
    FindingKind{"bad-max-wins", Severity::kError,
                "machines decide for the opposite side if true was meant", "write true or false"},
    FindingKind{
        "max-wins-early", Severity::kNote,
        "it is followed; other readers of such a document may ignore it and decide the opposite",
        "raise the version of the document to 4.3 or later"},
    FindingKind{"verification-disagrees", Severity::kError,
                "the document does not give what its producer got from it",
                "compare the other findings with what svmscore verify prints; if there are none, "
                "ask the producer"},
    FindingKind{"verification-unreadable", Severity::kWarning,
                "the document cannot be checked by its own records",
                "correct the records, or write new ones with svmscore verify --write"},
    FindingKind{"count-disagrees", Severity::kWarning,
                "what is there counts; if something was lost on the way, scores are wrong",
                "export the document anew, or correct the count"},
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_KINDS_DOCUMENT_H_
