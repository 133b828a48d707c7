// What all findings of a name have in common.
#ifndef HOST_FINDINGS_FINDING_KIND_H_
#define HOST_FINDINGS_FINDING_KIND_H_

#include <string_view>

#include "host/model/message_codes.h"

namespace svmscore {

// What follows from a finding of the kind. Score reports the last three, and its strict reading
// refuses them; describe and doctor show all.
enum class FindingClass {
  kNote,       // no score depends on it
  kStandard,   // a form that PMML defines, or a spelling of it, which is only rewritten
  kSuspicion,  // it breaks no rule, but training hardly produces it: only doctor reports it
  kGuessed,  // the document leaves something open that scores depend on; the usual reading was used
  kLossy,    // part of the document is not used, or not used as written
  kError,    // scores differ from those that the author meant, or there are no scores
};

// The texts live as long as the program.
struct FindingKind {
  std::string_view name;  // stable, in small letters with hyphens; docs/findings has a page of it
  FindingClass of_class;
  int strict_code;            // of the message with which the strict reading refuses; 0 for kinds
                              // that it never refuses: those that only doctor can find
  std::string_view sentence;  // what is wrong
  std::string_view consequence;  // what it means for scores
  std::string_view remedy;       // what to do

  bool IsRefusedWhenStrict() const { return strict_code != 0; }
};

}  // namespace svmscore

#endif  // HOST_FINDINGS_FINDING_KIND_H_
