#include "host/intake/intake.h"

#include <new>

#include <xercesc/util/OutOfMemoryException.hpp>

#include "host/intake/steps.h"
#include "host/xml/attributes.h"

namespace svmscore {
namespace intake {

DOMElement* Intake::ModelChild(const std::string& name) const {
  return FindChild(model_, name);
}

bool Intake::IsClassification() const {
  return FindAttribute(model_, "functionName") == "classification";
}

IntakeStep& Intake::Count(const StepKind& kind, const DOMElement* at, bool changes) {
  const auto [found, is_new] = step_of_.try_emplace(kind.name, steps_.size());
  if (is_new) {
    document_.FixLines();
    steps_.push_back(
        {kind.name, kind.consequence, {}, NameOf(at), document_.LineOf(at), 0, changes});
  }
  IntakeStep& step = steps_[found->second];
  ++step.count;
  return step;
}

void Intake::Change(const StepKind& kind, const DOMElement* at) {
  if (mode_ == IntakeMode::kStrict) {
    ThrowAt(at, code::kNeedsIntake, kind.name, kind.consequence);
  }
  Count(kind, at, true);
}

}  // namespace intake

std::vector<IntakeStep> MakeReadable(PmmlDocument& document, IntakeMode mode) try {
  if (document.Dom() == nullptr || document.Dom()->getDocumentElement() == nullptr) return {};
  intake::Intake intake(document, mode);
  const std::vector<xercesc::DOMElement*> extensions = intake::UsePlainNames(intake);
  const std::string root = NameOf(intake.Root());
  if (root != "PMML") {
    intake.Refuse(intake.Root(), code::kBadContent, "a root other than PMML", root);
  }
  intake::SettleVersion(intake);
  intake::ChooseModel(intake);
  if (intake.Model() == nullptr) return intake.TakeSteps();
  intake::CheckVocabulary(intake);
  intake::UseKnownSpellings(intake);
  intake::CheckMiningSchema(intake);
  intake::CheckNamesUsed(intake);
  intake::CheckTargets(intake);
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
  intake::CheckMachines(intake);
  intake::CheckFiniteNumbers(intake);
  return intake.TakeSteps();
} catch (const xercesc::OutOfMemoryException&) {
  throw std::bad_alloc();
}

}  // namespace svmscore
