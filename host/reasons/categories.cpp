#include "host/reasons/categories.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "host/reasons/text_hints.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"

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

// The number of bytes to insert, remove or replace; `limit` + 1 for whatever is beyond.
std::size_t EditDistance(std::string_view a, std::string_view b, std::size_t limit) {
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > limit) return limit + 1;
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
    }
  }
  return std::min(row[b.size()], limit + 1);
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
    const std::size_t distance = EditDistance(wanted, Folded(name), nearest - 1);
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
