// What the steps of the intake share: the document that they edit, and the report they write.
#ifndef HOST_INTAKE_INTAKE_H_
#define HOST_INTAKE_INTAKE_H_

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/intake/make_readable.h"
#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"

namespace svmscore::intake {

using xercesc::DOMDocument;
using xercesc::DOMElement;
using xercesc::DOMNode;

// A kind of step. The texts live as long as the program.
struct StepKind {
  const char* name;
  const char* consequence;
};

class Intake {
 public:
  Intake(PmmlDocument& document, IntakeMode mode) : document_(document), mode_(mode) {}

  DOMDocument* Dom() const { return document_.Dom(); }
  DOMElement* Root() const { return document_.Dom()->getDocumentElement(); }
  // The model that will be scored; null until one is chosen.
  DOMElement* Model() const { return model_; }
  void SetModel(DOMElement* model) { model_ = model; }
  // Children of the model that nearly every step asks for; null where the model has none.
  DOMElement* ModelChild(const std::string& name) const;
  bool IsClassification() const;

  // Call before each change: counts it, and throws in strict mode.
  void Change(const StepKind& kind, const DOMElement* at);
  // Counts a remark, in every mode.
  void Remark(const StepKind& kind, const DOMElement* at) { Count(kind, at, false); }
  // Counts a remark on what a translator drops, or reads as something else than is written; in
  // strict mode throws the code instead.
  template <typename... Parts>
  void Doubt(const StepKind& kind, const DOMElement* at, int code, const Parts&... parts) {
    if (mode_ == IntakeMode::kStrict) ThrowAt(at, code, parts...);
    IntakeStep& step = Count(kind, at, false);
    if (step.count > 1) return;
    MCZandor_850::SSException told(MCZandor_850::gErrorFormater);
    told.PutErrorMessage(code, parts...);
    step.detail = told.what();
  }

  // Throws, except in tolerant mode, where the caller leaves the element as it is. For what is not
  // supported; what a translator refuses itself is left to it.
  template <typename... Parts>
  void Refuse(const DOMElement* element, int code, const Parts&... parts) const {
    if (mode_ != IntakeMode::kTolerate) ThrowAt(element, code, parts...);
  }

  std::vector<IntakeStep> TakeSteps() { return std::move(steps_); }

 private:
  IntakeStep& Count(const StepKind& kind, const DOMElement* at, bool changes);

  PmmlDocument& document_;
  IntakeMode mode_;
  DOMElement* model_ = nullptr;
  std::vector<IntakeStep> steps_;
  std::unordered_map<std::string_view, std::size_t> step_of_;  // by name
};

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_INTAKE_H_
