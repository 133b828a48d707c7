#include "host/findings/finding.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/text/printable.h"

namespace svmscore {

std::vector<FindingKind> AllFindingKinds() {
  std::vector<FindingKind> all;
  const auto add = [&all](const auto& kinds) {
    for (const FindingKind& kind : kinds) all.push_back(kind);
  };
  add(kDocumentFindings);
  add(kFieldFindings);
  add(kVectorFindings);
  add(kMachineFindings);
  add(kScoreFindings);
  std::sort(all.begin(), all.end(),
            [](const FindingKind& a, const FindingKind& b) { return a.name < b.name; });
  return all;
}

std::string DetailOf(const FindingKind& kind, const std::vector<std::string>& parts,
                     const std::string& remark) {
  if (parts.empty()) return remark;
  const std::string ending = remark.empty() ? "" : "; " + remark;
  if (!kind.IsRefusedWhenStrict()) return parts[0] + ending;
  MCZandor_850::SSException told(MCZandor_850::gErrorFormater);
  told.PutErrorMessage(kind.strict_code, parts);
  return told.what() + ending;
}

void RefuseStrictly(const FindingKind& kind, const XERCES_CPP_NAMESPACE::DOMElement* element,
                    const std::vector<std::string>& parts, const std::string& remark) {
  MCZandor_850::SSException error(MCZandor_850::gErrorFormater);
  if (parts.empty()) {
    error.PutErrorMessage(kind.strict_code, kind.name, kind.sentence);
  } else {
    error.PutErrorMessage(kind.strict_code, parts);
  }
  if (!remark.empty()) error.AddRemark(remark);
  error.SetRemedy(fmt::format("{}, or leave out --strict-document", kind.remedy));
  error.SetElement(element);
  throw error;
}

std::vector<Finding> FirstOfEachKind(const std::vector<Finding>& findings) {
  std::vector<Finding> first;
  for (const Finding& finding : findings) {
    const auto found = std::find_if(first.begin(), first.end(), [&finding](const Finding& other) {
      return other.kind == finding.kind;
    });
    if (found == first.end()) {
      first.push_back(finding);
    } else {
      found->more += finding.more + 1;
    }
  }
  return first;
}

std::string SentenceOf(const Finding& finding) {
  std::string text;
  if (finding.place.line > 0) text += fmt::format("line {}, ", finding.place.line);
  if (!finding.place.element.empty()) {
    text += Shortened(finding.place.element, kLongestInsert) + ": ";
  }
  text += finding.kind->sentence;
  if (!finding.detail.empty()) text += ": " + finding.detail;
  if (finding.more == 0) return text;
  return text + fmt::format(" (the first of {} places)", finding.more + 1);
}

std::string_view ClassName(FindingClass of_class) {
  switch (of_class) {
    case FindingClass::kNote:
      return "note";
    case FindingClass::kStandard:
      return "standard";
    case FindingClass::kSuspicion:
      return "suspicion";
    case FindingClass::kGuessed:
      return "guessed";
    case FindingClass::kLossy:
      return "lossy";
    case FindingClass::kError:
      return "error";
  }
  return {};
}

std::string_view SeverityName(FindingClass of_class) {
  switch (of_class) {
    case FindingClass::kNote:
    case FindingClass::kStandard:
      return "note";
    case FindingClass::kSuspicion:
    case FindingClass::kGuessed:
    case FindingClass::kLossy:
      return "warning";
    case FindingClass::kError:
      return "error";
  }
  return {};
}

}  // namespace svmscore
