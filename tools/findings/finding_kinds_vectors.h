// Kinds of finding. Of vectors and kernels.
#ifndef TOOLS_FINDINGS_FINDING_KINDS_VECTORS_H_
#define TOOLS_FINDINGS_FINDING_KINDS_VECTORS_H_

#include <array>

#include "tools/findings/finding_kind.h"

namespace svmscore::tools {

inline constexpr std::array kVectorsFindings = {
    FindingKind{"vector-dropped", Severity::kWarning, "terms that name it are lost",
                "give every VectorInstance an id of its own and a sparse array"},
    FindingKind{"vector-length", Severity::kError, "the vector is refused or not read",
                "export the vectors anew, each with one number for each vector field"},
    FindingKind{"vectors-unexamined", Severity::kNote,
                "what only the numbers of vectors and machines would tell is not looked for",
                "give doctor a higher --limit entries=NUMBER, and the memory: 8 bytes for each"},
    FindingKind{"unused-vector", Severity::kNote, "no score depends on it", "remove it"},
    FindingKind{"bad-number", Severity::kError, "the vector stands elsewhere than it was meant to",
                "write numbers with a decimal point and without a unit"},
    FindingKind{"index-out-of-range", Severity::kError,
                "the value counts as a distance to every case", "number the positions from 1"},
    FindingKind{"indices-unordered", Severity::kError, "values are compared with the wrong inputs",
                "write each index once, in ascending order"},
    FindingKind{"no-indices", Severity::kError, "the vector is all zeros",
                "write the indices of the entries"},
    FindingKind{
        "second-kernel", Severity::kError,
        "vectors are compared by the one kernel, and were trained with the other if that was meant",
        "keep the kernel that the model was trained with"},
    FindingKind{"unknown-kernel", Severity::kError,
                "it is not computed: another kernel is used, or the document is refused",
                "train with a linear, polynomial, radial basis or sigmoid kernel"},
    FindingKind{"kernel-parameter-misnamed", Severity::kError,
                "the parameter has its default value, 1, and every kernel value differs",
                "name it gamma, coef0 or degree, and convert its value"},
    FindingKind{"unknown-kernel-attribute", Severity::kWarning, "it is not read",
                "remove it, or correct its name"},
    FindingKind{"kernel-parameter-absent", Severity::kNote,
                "it is 1, as the standard says; producers mean other values at times",
                "state the parameter"},
    FindingKind{"negative-gamma", Severity::kError,
                "vectors count the more the farther they are from the case",
                "correct the sign of gamma"},
    FindingKind{"fractional-degree", Severity::kWarning,
                "a case for which the base is negative gets no score", "use a whole number"},
    FindingKind{"kernel-vanishes", Severity::kWarning, "nearly every case gets the same score",
                "check gamma, and whether the scaling of the fields was exported with the model"},
    FindingKind{"kernel-constant", Severity::kWarning, "nearly every case gets the same score",
                "check gamma, and whether the scaling of the fields was exported with the model"},
    FindingKind{
        "kernel-saturates", Severity::kWarning, "scores jump where they should change smoothly",
        "check gamma and coef0, and whether the scaling of the fields was exported with the model"},
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_KINDS_VECTORS_H_
