// What the steps of the intake share: the document that they edit, and what they find in it.
#ifndef HOST_INTAKE_INTAKE_H_
#define HOST_INTAKE_INTAKE_H_

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/findings/finding.h"
#include "host/intake/make_readable.h"
#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"

namespace svmscore::intake {

using xercesc::DOMDocument;
using xercesc::DOMElement;
using xercesc::DOMNode;
using Kind = KindOfFinding;

class Intake {
 public:
  Intake(PmmlDocument& document, IntakeMode mode) : document_(document), mode_(mode) {}

  DOMDocument* Dom() const { return document_.Dom(); }
  const PmmlDocument& Document() const { return document_; }
  DOMElement* Root() const { return document_.Dom()->getDocumentElement(); }
  // The model that will be scored; null until one is chosen.
  DOMElement* Model() const { return model_; }
  void SetModel(DOMElement* model) { model_ = model; }
  // Children of the model that nearly every step asks for; null where the model has none.
  DOMElement* ModelChild(const std::string& name) const;
  bool IsClassification() const;

  // Call before each change, and for whatever is lost, guessed or wrong. The parts are those of the
  // message with which the kind is refused; a kind that needs the intake has none. In strict mode
  // throws that message where the kind has one.
  template <typename... Parts>
  void Tell(KindOfFinding kind, const DOMElement* at, const Parts&... parts) {
    AddFinding(kind, at, {std::string(parts)...});
  }

  // The same, and which of the candidates the author may have meant by `name`.
  template <typename... Parts>
  void TellNearName(const std::string& name, const std::vector<std::string>& candidates,
                    KindOfFinding kind, const DOMElement* at, const Parts&... parts) {
    AddFinding(kind, at, {std::string(parts)...}, {&name, &candidates});
  }

  // Reports an error that cannot be what the author meant, and refuses the document with the
  // message of the kind.
  template <typename... Parts>
  void Error(KindOfFinding kind, const DOMElement* at, const Parts&... parts) {
    Tell(kind, at, parts...);
    Refuse(at, kind->strict_code, parts...);
  }

  // Notes that the document is to be refused, unless a translator does so; the caller leaves the
  // element as it is. In strict mode throws. Only for content that the author cannot have meant.
  template <typename... Parts>
  void Refuse(const DOMElement* element, int code, const Parts&... parts) {
    if (mode_ == IntakeMode::kStrict) ThrowAt(element, code, parts...);
    if (refused_) return;
    refused_.emplace(MCZandor_850::gErrorFormater);
    refused_->PutErrorMessage(code, parts...);
    refused_->SetElement(element);
  }

  std::vector<Finding> TakeFindings() { return std::move(findings_); }
  const std::optional<MCZandor_850::SSException>& Refused() const { return refused_; }

 private:
  // The findings of one kind.
  struct Known {
    std::size_t findings = 0;
    std::size_t last = 0;  // the position of the last one among all findings
  };

  // A name that is not known, and those that may be meant; null for none.
  struct NearName {
    const std::string* name;
    const std::vector<std::string>* candidates;
    std::string Meant() const;
  };

  void AddFinding(KindOfFinding kind, const DOMElement* at, const std::vector<std::string>& parts,
                  const NearName& near = {nullptr, nullptr});

  PmmlDocument& document_;
  IntakeMode mode_;
  DOMElement* model_ = nullptr;
  std::vector<Finding> findings_;
  std::optional<MCZandor_850::SSException> refused_;
  std::unordered_map<std::string_view, Known> known_;  // by the name of the kind
};

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_INTAKE_H_
