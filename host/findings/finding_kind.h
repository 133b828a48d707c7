// What all findings of a name have in common.
#ifndef HOST_FINDINGS_FINDING_KIND_H_
#define HOST_FINDINGS_FINDING_KIND_H_

#include <string_view>

#include "host/model/message_codes.h"

namespace svmscore {

// What follows from a finding of the kind. Score tells of the last three, and its strict reading
// refuses them; describe and doctor show all.
enum class FindingClass {
  kNote,       // no score depends on it
  kStandard,   // a form that PMML defines, or a spelling of it, and that is only rewritten
  kSuspicion,  // it breaks no rule, but hardly comes out of training: for doctor alone
  kGuessed,    // the document leaves open what decides scores, and the usual reading was taken
  kLossy,      // something of the document is not used, or used as something else than is written
  kError,      // scores differ from those that the author meant, or there are none
};

// The texts live as long as the program.
struct FindingKind {
  std::string_view name;  // stable, in small letters with hyphens; docs/findings has a page of it
  FindingClass of_class;
  int strict_code;            // of the message with which the strict reading refuses; 0 for kinds
                              // that it never refuses: those that only doctor can find
  std::string_view sentence;  // what is the matter
  std::string_view consequence;  // what it means for scores
  std::string_view remedy;       // what to do

  bool IsRefusedWhenStrict() const { return strict_code != 0; }
};

}  // namespace svmscore

#endif  // HOST_FINDINGS_FINDING_KIND_H_
