// The checks of a document by itself, one file each family.
#ifndef TOOLS_DOCTOR_CHECKS_H_
#define TOOLS_DOCTOR_CHECKS_H_

#include <vector>

#include "host/intake/make_readable.h"
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

// reading.cpp: how the document was made readable. A step about a place that another finding names
// already is left out.
void CheckIntake(const std::vector<Finding>& intake, FindingList& findings);
// verification.cpp: the document's own verification records.
void CheckVerification(const LoadedModel& loaded, FindingList& findings);
// counts.cpp: lengths of vectors, counts, and vectors that nothing uses.
void CheckCounts(const Examined& examined, FindingList& findings);
// categories.cpp: categories that fields and targets lack.
void CheckCategories(const Examined& examined, FindingList& findings);
// needs.cpp: inputs and derived fields that nothing needs, or that are no inputs.
void CheckNeeds(const Examined& examined, FindingList& findings);
// kernel.cpp: the kernel element and its parameters.
void CheckKernel(const Examined& examined, FindingList& findings);
// layout.cpp: how the machines divide the categories among them.
void CheckLayout(const Examined& examined, FindingList& findings);
// scale.cpp: vector positions and kernel values.
void CheckScale(const Examined& examined, FindingList& findings);
// terms.cpp: the coefficients of each machine, and its absoluteValue.
void CheckTerms(const Examined& examined, FindingList& findings);
// margin.cpp: vectors that stand where training never leaves them.
void CheckMargin(const Examined& examined, FindingList& findings);
// signs.cpp: what the machines say of the vectors that they share, and what extensions say of them.
void CheckSigns(const Examined& examined, FindingList& findings);

// All but the first two.
void CheckAll(const Inspected& document, FindingList& findings);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_CHECKS_H_
