#include "host/transform/read_word_rules.h"

#include <memory>
#include <string>

#include "host/model/message_codes.h"
#include "host/model/ss_exception.h"
#include "host/xml/attributes.h"

namespace svmscore::transform {
namespace {

// Blanks between words. Whether it is \s or \s+, on which versions differ, does not matter, because
// empty words are not counted.
constexpr const char* kUsualSeparator = "\\s+";

std::shared_ptr<const Pattern> CompileSeparator(const Element* element, const std::string& text) {
  std::string error;
  std::shared_ptr<const Pattern> pattern = Pattern::Compile(text, false, &error);
  if (pattern == nullptr) {
    RefuseContent(element, "\"" + text + "\" is not a regular expression (" + error + ")");
  }
  return pattern;
}

}  // namespace

WordRules ReadWordRules(const Element* element, const WordRules* inherited) {
  const bool case_sensitive =
      FindFlag(element, "isCaseSensitive", inherited != nullptr && !inherited->IgnoresCase());
  const int most_edits = FindCount(element, "maxLevenshteinDistance",
                                   inherited != nullptr ? inherited->MostEdits() : 0);
  if (!FindFlag(element, "tokenize", true)) {
    ThrowAt(element, code::kUnsupported, "tokenize=\"false\"", NameOf(element));
  }
  const auto separator = FindAttribute(element, "wordSeparatorCharacterRE");
  return {case_sensitive, most_edits,
          separator || inherited == nullptr
              ? CompileSeparator(element, separator.value_or(kUsualSeparator))
              : inherited->Separator()};
}

}  // namespace svmscore::transform
