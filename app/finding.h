// Something about a document that whoever scores with it should know.
#ifndef APP_FINDING_H_
#define APP_FINDING_H_

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "app/elements.h"
#include "host/pmml/document.h"

namespace svmscore::app {

enum class Severity {
  kNote,     // no score depends on it
  kWarning,  // the document is scored by its letter, which may not be what its author meant
  kError,    // scores differ from those that the author meant, or there are none
};
std::string_view SeverityName(Severity severity);

// What all findings of a name have in common. The texts live as long as the program.
struct FindingKind {
  std::string_view name;  // stable, in small letters with hyphens; docs/findings has a page of it
  Severity severity;
  std::string_view consequence;  // what it means for scores, a sentence
  std::string_view remedy;       // what to do, a sentence
};
// All kinds, sorted by name.
std::span<const FindingKind> FindingKinds();
// REQUIRES: there is a kind of that name.
const FindingKind& FindingKindOf(std::string_view name);

struct Finding {
  const FindingKind* kind;
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
  void Add(std::string_view name, const Element* element, std::string what);
  void Add(Finding finding) { findings_.push_back(std::move(finding)); }

  const std::vector<Finding>& Found() const { return findings_; }
  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  const PmmlDocument& document_;
  std::vector<Finding> findings_;
};

}  // namespace svmscore::app

#endif  // APP_FINDING_H_
