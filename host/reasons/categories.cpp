#include "host/reasons/categories.h"

#include <algorithm>
#include <optional>

#include "host/reasons/text_hints.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"
#include "host/text/similar_name.h"

namespace svmscore::reasons {
namespace {

using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreValue;

// Categories that are listed, and that are compared with a text; longer texts are not compared.
constexpr std::size_t kListed = 5;
constexpr std::size_t kCompared = 5000;
constexpr std::size_t kLongestCompared = 64;
constexpr std::size_t kLongestListed = 24;

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Folded(std::string_view text) {
  std::string folded(WithoutBlanks(text));
  std::transform(folded.begin(), folded.end(), folded.begin(), Lower);
  return folded;
}

}  // namespace

std::string NearestCategory(const ScoreDictVar& variable, std::string_view text) {
  if (text.size() > kLongestCompared) return {};
  const std::optional<double> number = ParseNumber(text);
  const std::string wanted = Folded(text);
  std::size_t nearest = wanted.size() / 4 + 1;  // what is further away is another word
  std::string found;
  std::size_t compared = 0;
  for (const ScoreValue* category : variable.GetCategories()) {
    if (++compared > kCompared || nearest == 0) break;
    std::string name = category->GetText();
    if (number && ParseNumber(name) == number) return name;
    const std::size_t distance = NameDistance(wanted, Folded(name), nearest);
    if (distance >= nearest) continue;
    nearest = distance;
    found = name;
  }
  return found;
}

std::string SomeCategories(const ScoreDictVar& variable) {
  const auto& categories = variable.GetCategories();
  std::string list;
  for (std::size_t i = 0; i < std::min(categories.size(), kListed); ++i) {
    list += (i == 0 ? "\"" : ", \"") + Printable(categories[i]->GetText(), kLongestListed) + '"';
  }
  return categories.size() > kListed ? list + ", ..." : list;
}

}  // namespace svmscore::reasons
