// Something about a document that its user should know. [any thread] Lives: texts of a kind, as
// long as the process; arguments for the call. Fails: std::bad_alloc, or as stated.
#ifndef HOST_FINDINGS_FINDING_H_
#define HOST_FINDINGS_FINDING_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/findings/finding_kind.h"
#include "host/findings/kinds_document.h"
#include "host/findings/kinds_fields.h"
#include "host/findings/kinds_machines.h"
#include "host/findings/kinds_scores.h"
#include "host/findings/kinds_vectors.h"
#include "host/model/place.h"
#include "host/model/ss_exception.h"
#include "host/text/api.h"

namespace svmscore {

// A kind of finding by its name. A name that no kind has does not compile.
class KindOfFinding {
 public:
  consteval KindOfFinding(const char* name) : kind_(Find(name)) {}  // NOLINT: a name is a kind
  const FindingKind* operator->() const { return kind_; }
  const FindingKind& operator*() const { return *kind_; }
  bool operator==(const KindOfFinding&) const = default;

 private:
  static consteval const FindingKind* Find(std::string_view name) {
    const FindingKind* found = nullptr;
    const auto look = [&found, name](const auto& kinds) {
      for (const FindingKind& kind : kinds) {
        if (kind.name == name) found = &kind;
      }
    };
    look(kDocumentFindings);
    look(kFieldFindings);
    look(kVectorFindings);
    look(kMachineFindings);
    look(kScoreFindings);
    if (found == nullptr) throw "no kind of finding has this name";
    return found;
  }

  const FindingKind* kind_;
};

// All kinds, sorted by name.
SVMSCORE_HOST_API std::vector<FindingKind> AllFindingKinds();

struct SVMSCORE_HOST_API Finding {
  KindOfFinding kind;
  Place place;
  std::string detail;    // what is concerned here: a name, a value, an index; may be empty
  std::size_t more = 0;  // further places of the kind without a separate finding

  std::string_view Name() const { return kind->name; }
  bool IsError() const { return kind->of_class == FindingClass::kError; }
  // What is wrong here: the detail, or else the sentence of the kind.
  std::string_view What() const { return detail.empty() ? kind->sentence : detail; }
};

// The detail of a finding: the sentence of the message that refuses the kind, with these parts; for
// a kind that is never refused, the first part. Empty without parts. With a remark, which may be
// empty, at its end.
SVMSCORE_HOST_API std::string DetailOf(const FindingKind& kind,
                                       const std::vector<std::string>& parts,
                                       const std::string& remark = {});

// Throws that message, an SSException, at `element` (null if there is no place).
[[noreturn]] SVMSCORE_HOST_API void RefuseStrictly(const FindingKind& kind,
                                                   const XERCES_CPP_NAMESPACE::DOMElement* element,
                                                   const std::vector<std::string>& parts,
                                                   const std::string& remark = {});

// The first finding of each kind, with all others counted as further places.
SVMSCORE_HOST_API std::vector<Finding> FirstOfEachKind(const std::vector<Finding>& findings);

// One line: place, sentence, detail, further places.
SVMSCORE_HOST_API std::string SentenceOf(const Finding& finding);

// The name of the class, and how severe it is: note, warning or error.
SVMSCORE_HOST_API std::string_view ClassName(FindingClass of_class);
SVMSCORE_HOST_API std::string_view SeverityName(FindingClass of_class);

}  // namespace svmscore

#endif  // HOST_FINDINGS_FINDING_H_
