// The checks of a document by itself, one file for each family: those that the intake leaves out
// because they take long, or because what they find is not a fault. [one thread] for each document.
// Lives: arguments for the call. Fails: std::bad_alloc.
#ifndef TOOLS_DOCTOR_CHECKS_H_
#define TOOLS_DOCTOR_CHECKS_H_

#include <vector>

#include "tools/findings/finding_list.h"
#include "tools/findings/inspected.h"
#include "tools/findings/model_numbers.h"

namespace svmscore::tools {

// What the checks look at. The numbers are those in the document, even if its model is refused.
struct Examined {
  const Inspected& document;
  const ModelNumbers& numbers;
};

// verification_check.cpp: the document's own verification records.
void CheckVerification(const LoadedModel& loaded, FindingList& findings);
// unused_vectors.cpp: vectors that no machine uses.
void CheckVectorsUsed(const Examined& examined, FindingList& findings);
// category_checks.cpp: tables whose keys are not the categories of their fields, and categories
// that no machine names.
void CheckCategories(const Examined& examined, FindingList& findings);
// unused_inputs.cpp: inputs and derived fields that no score needs, and fields that are read
// without being inputs.
void CheckNeeds(const Examined& examined, FindingList& findings);
// attribute_checks.cpp: attributes that have no effect, that other programs ignore, or that leave
// cases without scores.
void CheckAttributes(const Examined& examined, FindingList& findings);
// kernel_scale.cpp: vector positions and kernel values.
void CheckScale(const Examined& examined, FindingList& findings);
// coefficient_checks.cpp: the coefficients of each machine, and its absoluteValue.
void CheckTerms(const Examined& examined, FindingList& findings);
// margin_check.cpp: an absoluteValue that does not fit the vectors on the margin.
void CheckMargin(const Examined& examined, FindingList& findings);
// machine_signs.cpp: machines and extensions that contradict each other about the same vectors.
void CheckSigns(const Examined& examined, FindingList& findings);

// All but CheckVerification.
void CheckAll(const Inspected& document, FindingList& findings);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_CHECKS_H_
