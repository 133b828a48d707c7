#include "host/text/similar_name.h"

#include <algorithm>
#include <numeric>

#include "host/text/look_alikes.h"

namespace svmscore {
namespace {

constexpr std::size_t kComparedBytes = 100;
constexpr std::size_t kComparedNames = 10000;

// Two neighbours that are exchanged count as one slip.
std::size_t Distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::vector<std::size_t> before = row;  // of the byte of `a` before the last
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    const std::vector<std::size_t> last = row;
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], before[j - 2] + 1);
      }
    }
    before = last;
  }
  return row[b.size()];
}

}  // namespace

std::string PlainName(std::string_view name) {
  std::string plain;
  if (name.size() > kComparedBytes) return plain;
  for (const char c : ReplaceInvisible(name, "")) {
    if (std::string_view(" \t\r\n_.-").find(c) != std::string_view::npos) continue;
    plain += c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
  }
  return plain;
}

std::size_t BeyondSlip(std::string_view plain) {
  return plain.size() >= 8 ? 3 : plain.size() >= 4 ? 2 : 1;
}

std::size_t NameDistance(std::string_view plain, std::string_view other, std::size_t beyond) {
  if (plain == other) return 0;
  const std::size_t shorter = std::min(plain.size(), other.size());
  const std::size_t longer = std::max(plain.size(), other.size());
  return longer - shorter >= beyond ? beyond : std::min(Distance(plain, other), beyond);
}

std::string SimilarName(const std::string& name, const std::vector<std::string>& candidates) {
  const std::string wanted = PlainName(name);
  if (wanted.empty()) return {};
  std::size_t nearest = BeyondSlip(wanted);
  const std::string* found = nullptr;
  for (std::size_t i = 0; i < std::min(candidates.size(), kComparedNames); ++i) {
    const std::string plain = PlainName(candidates[i]);
    if (plain.empty()) continue;
    const std::size_t distance = NameDistance(plain, wanted, nearest);
    if (distance >= nearest) continue;
    nearest = distance;
    found = &candidates[i];
  }
  return found == nullptr ? std::string() : *found;
}

std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates) {
  const std::string similar = SimilarName(name, candidates);
  return similar.empty() ? similar : "did you mean \"" + similar + "\"?";
}

}  // namespace svmscore
