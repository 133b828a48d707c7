// What the intake does not look for, for it takes long or is no fault: the checks of a document by
// itself, one file each family.
#ifndef TOOLS_DOCTOR_CHECKS_H_
#define TOOLS_DOCTOR_CHECKS_H_

#include <vector>

#include "tools/doctor/model_numbers.h"
#include "tools/findings/finding_list.h"
#include "tools/findings/inspected.h"

namespace svmscore::tools {

// What the checks look at. The numbers are those that the document spells, also where its model is
// refused.
struct Examined {
  const Inspected& document;
  const ModelNumbers& numbers;
};

// verification_check.cpp: the document's own verification records.
void CheckVerification(const LoadedModel& loaded, FindingList& findings);
// unused_vectors.cpp: vectors that nothing uses.
void CheckVectorsUsed(const Examined& examined, FindingList& findings);
// category_checks.cpp: tables whose keys are not the categories of their fields, and categories
// that no machine names.
void CheckCategories(const Examined& examined, FindingList& findings);
// unused_inputs.cpp: inputs and derived fields that nothing needs, or that are no inputs.
void CheckNeeds(const Examined& examined, FindingList& findings);
// attribute_checks.cpp: attributes that decide nothing, that other readers pass over, or that leave
// cases without scores.
void CheckAttributes(const Examined& examined, FindingList& findings);
// kernel_scale.cpp: vector positions and kernel values.
void CheckScale(const Examined& examined, FindingList& findings);
// coefficient_checks.cpp: the coefficients of each machine, and its absoluteValue.
void CheckTerms(const Examined& examined, FindingList& findings);
// margin_check.cpp: vectors that stand where training never leaves them.
void CheckMargin(const Examined& examined, FindingList& findings);
// machine_signs.cpp: what the machines say of the vectors that they share, and what extensions say
// of them.
void CheckSigns(const Examined& examined, FindingList& findings);

// All but the first.
void CheckAll(const Inspected& document, FindingList& findings);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_CHECKS_H_
