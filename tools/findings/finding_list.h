// The findings of a check after the other.
#ifndef TOOLS_FINDINGS_FINDING_LIST_H_
#define TOOLS_FINDINGS_FINDING_LIST_H_

#include <string>
#include <utility>
#include <vector>

#include "host/findings/finding.h"
#include "host/xml/attributes.h"
#include "host/xml/document.h"

namespace svmscore::tools {

// Gathers findings in the order in which the checks meet them.
class FindingList {
 public:
  explicit FindingList(const PmmlDocument& document) : document_(document) {}

  // `element` may be null, for findings that no place has.
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
