#include "host/intake/intake.h"

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>

#include "host/intake/steps.h"
#include "host/xml/attributes.h"

namespace svmscore {
namespace intake {
namespace {

// Findings of a kind that are told one by one; further ones are only counted.
constexpr std::size_t kDetailed = 5;

}  // namespace

DOMElement* Intake::ModelChild(const std::string& name) const {
  return FindChild(model_, name);
}

bool Intake::IsClassification() const {
  return FindAttribute(model_, "functionName") == "classification";
}

void Intake::Told(KindOfFinding kind, const DOMElement* at, std::vector<std::string> parts) {
  if (mode_ == IntakeMode::kStrict && kind->IsRefusedWhenStrict()) RefuseStrictly(*kind, at, parts);
  Known& known = known_[kind->name];
  const bool standard = kind->of_class == FindingClass::kStandard;
  if (known.findings == (standard ? 1 : kDetailed)) {
    ++findings_[known.last].more;
    return;
  }
  document_.FixLines();
  ++known.findings;
  known.last = findings_.size();
  findings_.push_back({kind, {NameOf(at), document_.LineOf(at)}, DetailOf(*kind, parts)});
}

}  // namespace intake

std::vector<Finding> MakeReadable(PmmlDocument& document, IntakeMode mode) try {
  if (document.Dom() == nullptr || document.Dom()->getDocumentElement() == nullptr) return {};
  intake::Intake intake(document, mode);
  const std::vector<xercesc::DOMElement*> extensions = intake::UsePlainNames(intake);
  const std::string root = NameOf(intake.Root());
  if (root != "PMML") {
    intake.Refuse(intake.Root(), code::kBadContent, "a root other than PMML", root);
  }
  intake::SettleVersion(intake);
  intake::ChooseModel(intake);
  if (intake.Model() == nullptr) return intake.TakeFindings();
  intake::CheckVocabulary(intake);
  intake::UseKnownSpellings(intake);
  intake::CheckMiningSchema(intake);
  intake::CheckNamesUsed(intake);
  intake::CheckTargets(intake);
  intake::CheckCounts(intake);
  intake::CheckCategoriesUsed(intake);
  intake::HideExtensionContent(intake, extensions);
  intake::MergeTransformations(intake);
  // Vectors are measured by the number of vector fields, and the linear form makes a vector of its
  // own, so the three come in this order.
  intake::ExpressVectorFields(intake);
  intake::UseSparseVectors(intake);
  intake::UseSupportVectors(intake);
  intake::TellKernelNumbersFromAbsence(intake);
  // The decision rule of the oldest versions names the second category, which the target may have
  // to learn, so the rule comes before the target, and the target before labels are compared.
  intake::UseOneDecisionRule(intake);
  intake::CompleteTarget(intake);
  intake::MatchLabels(intake);
  intake::OrderPairs(intake);
  intake::CheckLayout(intake);
  intake::CheckMachines(intake);
  intake::CheckFiniteNumbers(intake);
  return intake.TakeFindings();
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
}

}  // namespace svmscore
