// A document may hold no, one or several models; the first support vector machine is scored.
#include "host/pmml/elements.h"
#include "host/pmml/intake/anomaly.h"
#include "host/pmml/intake/edit.h"
#include "host/pmml/intake/steps.h"
#include "host/tags.h"
#include "host/translator.h"

namespace svmscore::intake {
namespace {

namespace tags = MCZandor_850::PMMLModelTags;
using MCZandor_850::BaseTranslator;

constexpr StepKind kSeveral{
    "several-models",
    "the document holds several models; the first SupportVectorMachineModel is scored"};

bool HoldsMachine(DOMElement* model) {
  for (DOMElement* at = NextInTree(model, model, false); at != nullptr;
       at = NextInTree(at, model, NameOf(at) == tags::XML_ELE_EXTENSION)) {
    if (NameOf(at) == tags::XML_ELE_SVMMODEL) return true;
  }
  return false;
}

}  // namespace

bool IsModelName(const std::string& name) {
  return name.ends_with("Model") || name == "NeuralNetwork" || name == "Scorecard";
}

void ChooseModel(Intake& intake) {
  std::vector<DOMElement*> models;
  for (DOMElement* child = BaseTranslator::GetFirstChildElt(intake.Root()); child != nullptr;
       child = BaseTranslator::GetNextSiblingElt(child)) {
    if (IsModelName(NameOf(child))) models.push_back(child);
  }
  intake.SetModel(FindChild(intake.Root(), tags::XML_ELE_SVMMODEL));
  for (std::size_t i = 0; i < models.size() && intake.Model() == nullptr; ++i) {
    DOMElement* inner = FindChild(models[i], tags::XML_ELE_SVMMODEL);
    if (inner != nullptr && NameOf(models[i]) == "AnomalyDetectionModel") {
      if (LiftModel(intake, models[i], inner)) models[i] = inner;
      intake.SetModel(FindChild(intake.Root(), tags::XML_ELE_SVMMODEL));
    } else if (HoldsMachine(models[i])) {
      intake.Refuse(models[i], code::kUnsupported, "a SupportVectorMachineModel inside",
                    NameOf(models[i]));
    }
  }
  // A translator says that there is no model.
  if (intake.Model() == nullptr) return;
  for (const DOMElement* model : models) {
    if (model != intake.Model()) intake.Remark(kSeveral, model);
  }
}

}  // namespace svmscore::intake
