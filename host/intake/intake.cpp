#include "host/intake/intake.h"

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>

#include "host/intake/steps.h"
#include "host/text/similar_name.h"
#include "host/xml/attributes.h"

namespace svmscore {
namespace intake {
namespace {

// So many findings of a kind are listed one by one; further ones are only counted.
constexpr std::size_t kDetailed = 5;

}  // namespace

DOMElement* Intake::ModelChild(const std::string& name) const {
  return FindChild(model_, name);
}

bool Intake::IsClassification() const {
  return FindAttribute(model_, "functionName") == "classification";
}

std::string Intake::NearName::Meant() const {
  return name == nullptr ? std::string() : DidYouMean(*name, *candidates);
}

void Intake::AddFinding(KindOfFinding kind, const DOMElement* at,
                        const std::vector<std::string>& parts, const NearName& near) {
  if (mode_ == IntakeMode::kStrict && kind->IsRefusedWhenStrict()) {
    RefuseStrictly(*kind, at, parts, near.Meant());
  }
  Known& known = known_[kind->name];
  const bool standard = kind->of_class == FindingClass::kStandard;
  if (known.findings == (standard ? 1 : kDetailed)) {
    ++findings_[known.last].more;
    return;
  }
  document_.FixLines();
  ++known.findings;
  known.last = findings_.size();
  findings_.push_back(
      {kind, {NameOf(at), document_.LineOf(at)}, DetailOf(*kind, parts, near.Meant())});
}

}  // namespace intake

namespace intake {
namespace {

void TakeSteps(Intake& intake) {
  const std::vector<DOMElement*> extensions = UsePlainNames(intake);
  CheckRoot(intake);
  SettleVersion(intake);
  ChooseModel(intake);
  if (intake.Model() == nullptr) return;
  CheckVocabulary(intake);
  UseKnownSpellings(intake);
  CheckMiningSchema(intake);
  CheckNamesUsed(intake);
  CheckTargets(intake);
  CheckCounts(intake);
  CheckCategoriesUsed(intake);
  HideExtensionContent(intake, extensions);
  PutOwnExtensionsFirst(intake);
  MergeTransformations(intake);
  // Vectors are checked against the number of vector fields, and the linear form adds a vector, so
  // the three come in this order.
  ExpressVectorFields(intake);
  UseSparseVectors(intake);
  UseSupportVectors(intake);
  TellKernelNumbersFromAbsence(intake);
  // The decision rule of the oldest versions names the second category, which may have to be added
  // to the target, so the rule comes before the target, and the target before labels are compared.
  UseOneDecisionRule(intake);
  CompleteTarget(intake);
  MatchLabels(intake);
  UseCalibrationOfAll(intake);
  CheckPairs(intake);
  CheckLayout(intake);
  CheckMachines(intake);
  CheckFiniteNumbers(intake);
}

}  // namespace
}  // namespace intake

std::vector<Finding> MakeReadable(PmmlDocument& document, IntakeMode mode,
                                  std::optional<MCZandor_850::SSException>* refused) try {
  if (document.Dom() == nullptr || document.Dom()->getDocumentElement() == nullptr) return {};
  intake::Intake intake(document, mode);
  intake::TakeSteps(intake);
  if (refused != nullptr) *refused = intake.Refused();
  return intake.TakeFindings();
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
}

}  // namespace svmscore
