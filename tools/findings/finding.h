// Something about a document that whoever scores with it should know.
#ifndef TOOLS_FINDINGS_FINDING_H_
#define TOOLS_FINDINGS_FINDING_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/xml/attributes.h"
#include "host/xml/document.h"
#include "tools/findings/finding_kind.h"
#include "tools/findings/finding_kinds_document.h"
#include "tools/findings/finding_kinds_fields.h"
#include "tools/findings/finding_kinds_machines.h"
#include "tools/findings/finding_kinds_scores.h"
#include "tools/findings/finding_kinds_vectors.h"

namespace svmscore::tools {

// A kind of finding by its name. A name that no kind has does not compile.
class KindOfFinding {
 public:
  consteval KindOfFinding(const char* name) : kind_(Find(name)) {}  // NOLINT: a name is a kind
  const FindingKind* operator->() const { return kind_; }
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
    look(kFieldsFindings);
    look(kVectorsFindings);
    look(kMachinesFindings);
    look(kScoresFindings);
    if (found == nullptr) throw "no kind of finding has this name";
    return found;
  }

  const FindingKind* kind_;
};

// All kinds, sorted by name.
std::vector<FindingKind> AllFindingKinds();

struct Finding {
  KindOfFinding kind;
  std::string element;  // the name of the element at fault; empty where there is none
  long line = 0;        // of its start tag; 0 where it is not known
  std::string what;     // what is the matter here

  std::string_view Name() const { return kind->name; }
  bool ChangesScores() const { return kind->severity == Severity::kError; }
};

// Gathers findings in the order in which the checks meet them.
class FindingList {
 public:
  explicit FindingList(const PmmlDocument& document) : document_(document) {}

  // `element` may be null, for findings that no place has.
  void Add(KindOfFinding kind, const Element* element, std::string what);
  void Add(Finding finding) { findings_.push_back(std::move(finding)); }

  const std::vector<Finding>& Found() const { return findings_; }
  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  const PmmlDocument& document_;
  std::vector<Finding> findings_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_H_
