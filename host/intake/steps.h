// The steps of the intake, in the order in which they are taken. Each has a source file; each finds
// out whether its document needs it, and does nothing where it does not.
#ifndef HOST_INTAKE_STEPS_H_
#define HOST_INTAKE_STEPS_H_

#include <string>
#include <vector>

#include "host/intake/intake.h"

namespace svmscore::intake {

// plain_names.cpp: elements with a prefix get plain names; contents of Extension and cells of
// tables keep theirs. Returns the document's Extension elements, those inside others left out.
std::vector<DOMElement*> UsePlainNames(Intake& intake);

// document_version.cpp: remarks on a root of another name. Changes nothing.
void CheckRoot(Intake& intake);

// document_version.cpp: the root's version can be told from its first character.
void SettleVersion(Intake& intake);

// document_version.cpp: documents of version 2 have no derived fields; this one gets a version that
// has.
void AllowDerivedFields(Intake& intake);

// model_choice.cpp: the model to score is chosen, and lifted out of an anomaly detection model.
// Leaves the intake without a model where the document has none.
void ChooseModel(Intake& intake);

// Whether the element of that name under the root is a model.
bool IsModelName(const std::string& name);

// Whether the element of that name inside a model is a kernel, known or not.
bool IsKernelName(const std::string& name);

// vocabulary.cpp: remarks on elements and attributes that nobody reads. Changes nothing.
void CheckVocabulary(Intake& intake);

// names_used.cpp: remarks on derived fields and functions whose names mean something else already.
// Changes nothing.
void CheckNamesUsed(Intake& intake);

// target_elements.cpp: remarks on Target elements that are for no field, or for one that has its
// own. Changes nothing.
void CheckTargets(Intake& intake);

// spellings.cpp: attributes in the one spelling that is understood.
void UseKnownSpellings(Intake& intake);

// mining_fields.cpp: remarks on mining fields that are not read, or not as they are written.
// Changes nothing.
void CheckMiningSchema(Intake& intake);

// extensions.cpp: what looks like a part of the model inside an Extension is none.
void HideExtensionContent(Intake& intake, const std::vector<DOMElement*>& extensions);

// transformations.cpp: one list of derived fields.
void MergeTransformations(Intake& intake);

// vector_fields.cpp: vector positions that a plain reference cannot express become derived fields.
void ExpressVectorFields(Intake& intake);

// vectors.cpp: every vector is a sparse array in ascending order.
void UseSparseVectors(Intake& intake);

// coefficient_form.cpp: machines given by one coefficient a field become support vectors.
void UseSupportVectors(Intake& intake);

// kernel_parameters.cpp: kernel parameters that would be taken for absent ones; remarks on other
// kernels and parameters.
void TellKernelNumbersFromAbsence(Intake& intake);

// decision_rule.cpp: the older way to name the second category, and vote layouts without a method.
void UseOneDecisionRule(Intake& intake);

// target_categories.cpp: there is a target, and it lists the categories of a classification.
void CompleteTarget(Intake& intake);

// category_labels.cpp: machines spell categories as the target does, and name both of two.
void MatchLabels(Intake& intake);

// extensions.cpp: this system's Extension of a machine comes before those of others.
void PutOwnExtensionsFirst(Intake& intake);

// pair_probabilities.cpp: where only some machines have probabilities, none is used.
void UseCalibrationOfAll(Intake& intake);

// pair_probabilities.cpp: remarks on machines whose probabilities are taken for others than they
// name. Changes nothing.
void CheckPairs(Intake& intake);

// finite_numbers.cpp: remarks on infinite or NaN numbers of machines, kernels and targets.
// Changes nothing.
void CheckFiniteNumbers(Intake& intake);

// counts.cpp: remarks on counts of fields that are not those of what is there. Changes nothing.
void CheckCounts(Intake& intake);

// categories_used.cpp: remarks on categories that are compared with fields which cannot have them.
// Changes nothing.
void CheckCategoriesUsed(Intake& intake);

// machine_layout.cpp: remarks on machines that leave categories out, or decide twice. Changes
// nothing.
void CheckLayout(Intake& intake);

// checks.cpp: remarks on what machines lose in silence, and on counts of vectors and terms that are
// not those of what is there. Changes nothing.
void CheckMachines(Intake& intake);

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_STEPS_H_
