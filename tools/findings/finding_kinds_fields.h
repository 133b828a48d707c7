// Kinds of finding. Of fields: declared, derived, and those that vectors are made of.
#ifndef TOOLS_FINDINGS_FINDING_KINDS_FIELDS_H_
#define TOOLS_FINDINGS_FINDING_KINDS_FIELDS_H_

#include <array>

#include "tools/findings/finding_kind.h"

namespace svmscore::tools {

inline constexpr std::array kFieldsFindings = {
    FindingKind{"unknown-mining-field", Severity::kWarning,
                "the field is not read, with all that is declared for it",
                "declare it in the DataDictionary, or correct its name"},
    FindingKind{"unknown-usage", Severity::kWarning,
                "the field counts as no input, and its replacement for missing values is not used",
                "write active, or one of the other usage types"},
    FindingKind{"second-target", Severity::kWarning, "it is not predicted",
                "export one model for each target"},
    FindingKind{"transformations-off", Severity::kError,
                "vector positions that need these fields have no value",
                "state the version that the document was written for"},
    FindingKind{"local-transformations-hidden", Severity::kError,
                "vector positions that need these fields have no value",
                "move the fields into the TransformationDictionary"},
    FindingKind{"unknown-vector-field", Severity::kError,
                "vectors and inputs are paired one position apart",
                "write the position as FieldRef or CategoricalPredictor"},
    FindingKind{"unlisted-category", Severity::kError,
                "no valid input can have this category: its indicator is 0 for every case, or its "
                "cases are invalid",
                "spell the category as the DataDictionary does, or list it there"},
    FindingKind{"unlisted-table-key", Severity::kNote, "the row of the table is never used",
                "remove it, or list the category in the DataDictionary"},
    FindingKind{"unmapped-category", Severity::kWarning,
                "a case with this category has no value there, and gets no score",
                "add a row to the table, or a defaultValue"},
    FindingKind{"inactive-field", Severity::kWarning, "cases must supply it all the same",
                "make it active in the mining schema, or mend the reference"},
    FindingKind{"unused-field", Severity::kNote, "no score depends on it",
                "leave it out of the mining schema"},
    FindingKind{"unused-derived-field", Severity::kNote, "it is not computed", "remove it"},
    FindingKind{"constant-field", Severity::kNote,
                "inputs differ there, vectors do not: the field tells cases apart less than it "
                "could, or not at all",
                "leave the field out of the training, or check that its values were not lost"},
    FindingKind{"field-dominates", Severity::kWarning,
                "the kernel sees this field and hardly any other",
                "normalise the fields before training, or check that normalisation was exported "
                "with the model"},
    FindingKind{"indicator-not-0-or-1", Severity::kWarning,
                "no case can come near the vectors in this field",
                "export the scaling of the field with the model, or train without it"},
    FindingKind{"vector-outside-interval", Severity::kWarning,
                "no valid case can come near the vectors in this field",
                "export the scaling of the field with the model"},
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_KINDS_FIELDS_H_
