// The findings of one check after another.
#ifndef TOOLS_FINDINGS_FINDING_LIST_H_
#define TOOLS_FINDINGS_FINDING_LIST_H_

#include <string>
#include <utility>
#include <vector>

#include "host/findings/finding.h"
#include "host/xml/attributes.h"
#include "host/xml/document.h"

namespace svmscore::tools {

// Collects findings in the order in which the checks find them. [one thread] for each object.
// Lives: the document, longer than this object; what Found returns, until the next Add. Fails: Add
// by std::bad_alloc; the rest never.
class FindingList {
 public:
  explicit FindingList(const PmmlDocument& document) : document_(document) {}

  // `element` may be null, for findings without a place.
  void Add(KindOfFinding kind, const Element* element, std::string detail);
  void Add(Finding finding) { findings_.push_back(std::move(finding)); }

  const std::vector<Finding>& Found() const { return findings_; }
  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  const PmmlDocument& document_;
  std::vector<Finding> findings_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_FINDING_LIST_H_
