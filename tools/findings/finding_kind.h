// What all findings of a name have in common.
#ifndef TOOLS_FINDINGS_FINDING_KIND_H_
#define TOOLS_FINDINGS_FINDING_KIND_H_

#include <string_view>

namespace svmscore::tools {

enum class Severity {
  kNote,     // no score depends on it
  kWarning,  // the document is scored by its letter, which may not be what its author meant
  kError,    // scores differ from those that the author meant, or there are none
};
std::string_view SeverityName(Severity severity);

// The texts live as long as the program.
struct FindingKind {
  std::string_view name;  // stable, in small letters with hyphens; docs/findings has a page of it
  Severity severity;
  std::string_view consequence;  // what it means for scores, a sentence
  std::string_view remedy;       // what to do, a sentence
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_KIND_H_
