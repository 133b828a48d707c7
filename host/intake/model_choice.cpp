// A document may hold no, one or several models; the first support vector machine is scored.
#include "host/intake/anomaly_detection.h"
#include "host/intake/steps.h"
#include "host/xml/edit.h"
#include "host/xml/elements.h"

namespace svmscore::intake {
namespace {

// The first one names the producer.
void CheckApplications(Intake& intake) {
  bool first = true;
  for (const DOMElement* header : Children(intake.Root(), "Header")) {
    for (const DOMElement* application : Children(header, "Application")) {
      if (!first) intake.Tell("second-application", application);
      first = false;
    }
  }
}

}  // namespace

bool IsModelName(const std::string& name) {
  return name.ends_with("Model") || name == "NeuralNetwork" || name == "Scorecard";
}

void ChooseModel(Intake& intake) {
  CheckApplications(intake);
  std::vector<DOMElement*> models;
  for (DOMElement* child = FirstElement(intake.Root()); child != nullptr;
       child = NextElement(child)) {
    if (IsModelName(NameOf(child))) models.push_back(child);
  }
  intake.SetModel(FindChild(intake.Root(), "SupportVectorMachineModel"));
  for (std::size_t i = 0; i < models.size() && intake.Model() == nullptr; ++i) {
    DOMElement* inner = FindChild(models[i], "SupportVectorMachineModel");
    if (inner != nullptr && NameOf(models[i]) == "AnomalyDetectionModel") {
      if (LiftModel(intake, models[i], inner)) models[i] = inner;
      intake.SetModel(FindChild(intake.Root(), "SupportVectorMachineModel"));
    }
  }
  // A translator says that there is no model, or only one inside another.
  if (intake.Model() == nullptr) return;
  for (const DOMElement* model : models) {
    if (model != intake.Model())
      intake.Tell("other-model", model, NameOf(model) + " beside the model that is scored",
                  NameOf(intake.Root()));
  }
}

}  // namespace svmscore::intake
