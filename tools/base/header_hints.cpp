#include "tools/base/header_hints.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <unordered_set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/text/look_alikes.h"
#include "host/text/number_text.h"
#include "host/text/printable.h"
#include "host/text/similar_name.h"
#include "host/text/utf8.h"

namespace svmscore::tools {
namespace {

// Of a header: what is listed of it, and what is looked at.
constexpr std::size_t kListedColumns = 10;
constexpr std::size_t kListedBytes = 60;
constexpr std::size_t kComparedNames = 10000;

// The letters and digits of a name, in lower case, without a unit in brackets at its end.
std::string LettersOf(std::string_view name) {
  const std::size_t unit = name.find_last_of("([");
  const bool has_unit =
      unit != std::string_view::npos && unit > 0 && (name.ends_with(')') || name.ends_with(']'));
  std::string letters = PlainName(has_unit ? name.substr(0, unit) : name);
  std::erase_if(letters, [](char c) {
    return static_cast<unsigned char>(c) < 0x80 && std::isalnum(static_cast<unsigned char>(c)) == 0;
  });
  return letters;
}

// Whether names of these letters may be one name, before and after a program with its own idea of
// names: R writes an X before a digit, and a point for all that is no letter.
bool AreRespelled(const std::string& a, const std::string& b) {
  const auto has_prefix = [](const std::string& longer, const std::string& name) {
    return name[0] >= '0' && name[0] <= '9' && longer == "x" + name;
  };
  return !a.empty() && !b.empty() && (a == b || has_prefix(a, b) || has_prefix(b, a));
}

// "did you mean" for the first names that are nearly there: what is missing is meant, or, where the
// user has named it, the column of the header. A column that is wanted itself is not meant by
// another name.
std::string NearNames(const std::vector<std::string_view>& header,
                      const std::vector<std::string>& wanted_names,
                      const std::vector<std::string>& missing, NamedBy named_by) {
  const std::unordered_set<std::string_view> taken(wanted_names.begin(), wanted_names.end());
  std::vector<std::string> plain;
  std::vector<std::string> letters;
  for (std::size_t i = 0; i < std::min(header.size(), kComparedNames); ++i) {
    const bool free = !taken.contains(header[i]);
    plain.push_back(free ? PlainName(header[i]) : "");
    letters.push_back(free ? LettersOf(header[i]) : "");
  }
  std::string pairs;
  for (std::size_t m = 0; m < std::min(missing.size(), kListedColumns); ++m) {
    const std::string wanted = PlainName(missing[m]);
    if (wanted.empty()) continue;
    std::size_t nearest = BeyondSlip(wanted);
    const std::string_view* found = nullptr;
    for (std::size_t i = 0; i < plain.size(); ++i) {
      if (plain[i].empty()) continue;
      const std::size_t distance = AreComposedDifferently(header[i], missing[m])
                                       ? 0
                                       : NameDistance(plain[i], wanted, nearest);
      if (distance >= nearest) continue;
      nearest = distance;
      found = &header[i];
    }
    const std::string wanted_letters = LettersOf(missing[m]);
    for (std::size_t i = 0; nearest > 0 && i < letters.size(); ++i) {
      if (!AreRespelled(letters[i], wanted_letters)) continue;
      nearest = 0;
      found = &header[i];
    }
    if (found == nullptr) continue;
    const std::string theirs = SpellInvisible(*found);
    pairs += fmt::format("{}\"{}\" by \"{}\"", pairs.empty() ? "" : ", ",
                         named_by == NamedBy::kModel ? missing[m] : theirs,
                         named_by == NamedBy::kModel ? theirs : missing[m]);
    if (AreComposedDifferently(missing[m], *found)) {
      pairs += " (the same letters, composed differently: Unicode normal forms C and D)";
    }
  }
  return pairs.empty() ? "" : fmt::format("did you mean {}?", pairs);
}

// A line above the header, or values, in place of the header.
std::string NoHeader(const std::vector<std::string_view>& header,
                     const std::vector<std::string>& wanted, std::size_t missing) {
  constexpr std::string_view kMust =
      "the first line must hold the names of the columns, and seems ";
  const auto numbers = static_cast<std::size_t>(
      std::count_if(header.begin(), header.end(),
                    [](std::string_view name) { return ParseNumber(name).has_value(); }));
  const bool named = std::find(wanted.begin(), wanted.end(), header[0]) != wanted.end();
  if (named && header.size() > 2 && numbers + 1 == header.size()) {
    return fmt::format("{}to be the name and the values of one; is the table transposed?", kMust);
  }
  if (2 * numbers > header.size()) return fmt::format("{}to be a row of values", kMust);
  const auto is_filled = [](std::string_view name) { return !name.empty(); };
  const auto filled =
      static_cast<std::size_t>(std::count_if(header.begin(), header.end(), is_filled));
  if (filled > 1 && 2 * filled <= header.size()) {
    return fmt::format("{}to be a line of merged cells above them", kMust);
  }
  // Of one cell, which another delimiter may separate.
  const bool is_whole = header[0].find_first_of(";\t|,") == std::string_view::npos;
  const bool is_title = filled == 1 && (header.size() > 2 || (missing > 1 && is_whole));
  return is_title ? fmt::format("{}to be a title", kMust) : "";
}

std::vector<std::string> Pieces(std::string_view name, char delimiter) {
  std::vector<std::string> pieces;
  for (;;) {
    const std::size_t end = std::min(name.find(delimiter), name.size());
    std::string_view piece = name.substr(0, end);
    if (piece.size() > 1 && piece.front() == '"' && piece.back() == '"') {
      piece = piece.substr(1, piece.size() - 2);
    }
    while (piece.starts_with(' ')) piece.remove_prefix(1);
    while (piece.ends_with(' ')) piece.remove_suffix(1);
    pieces.emplace_back(piece);
    if (end == name.size()) return pieces;
    name.remove_prefix(end + 1);
  }
}

std::string ListOf(const std::vector<std::string_view>& header) {
  std::string list;
  for (std::size_t i = 0; i < std::min(header.size(), kListedColumns); ++i) {
    list += fmt::format("{}\"{}\"", i == 0 ? "" : ", ",
                        SpellInvisible(Shortened(header[i], kListedBytes)));
  }
  if (header.size() > kListedColumns) {
    list += fmt::format(" and {} more", header.size() - kListedColumns);
  }
  return list;
}

// Why the header may not be what it should; empty where it looks as others do.
std::string Suspicion(const std::vector<std::string_view>& header,
                      const std::vector<std::string>& names,
                      const std::vector<std::string>& missing, NamedBy named_by) {
  if (header.empty()) return "";
  if (header.size() <= 2 && header[0].starts_with("sep=")) {
    return "the line \"sep=\" is of no table: remove it, and name its character with --delimiter";
  }
  const std::set<std::string> wanted(missing.begin(), missing.end());
  std::string delimiter =
      DelimiterHint(header, [&wanted](const std::string& name) { return wanted.contains(name); });
  if (!delimiter.empty()) return delimiter;
  if (!std::all_of(header.begin(), header.end(), IsUtf8)) {
    return "the header is not in UTF-8 but, it seems, in Latin-1 or Windows-1252; save the table "
           "in "
           "UTF-8, or convert it: iconv -f WINDOWS-1252 -t UTF-8";
  }
  const std::string near = NearNames(header, names, missing, named_by);
  return near.empty() ? NoHeader(header, names, missing.size()) : near;
}

}  // namespace

std::string DelimiterHint(const std::vector<std::string_view>& header,
                          const std::function<bool(const std::string&)>& is_known) {
  char best = '\0';
  std::size_t most = 0;
  for (const char delimiter : {';', '\t', '|', ',', ' '}) {
    if (delimiter == ' ' && header.size() > 1) continue;  // names hold blanks
    std::size_t count = 0;
    for (std::size_t i = 0; i < std::min(header.size(), kComparedNames); ++i) {
      if (header[i].find(delimiter) == std::string_view::npos) continue;
      const std::vector<std::string> pieces = Pieces(header[i], delimiter);
      count += static_cast<std::size_t>(std::count_if(pieces.begin(), pieces.end(), is_known));
    }
    if (count <= most) continue;
    most = count;
    best = delimiter;
  }
  if (best == '\0') return {};
  if (best == ' ' && header[0].find("  ") != std::string_view::npos) {
    return "its cells seem to be aligned with blanks: write one comma between them";
  }
  const std::string name = best == '\t' ? "tab" : std::string(1, best);
  return fmt::format("it seems to be separated by {}: give --delimiter {}",
                     best == '\t' ? "tabs" : "'" + name + "'",
                     best == '\t' ? name : "'" + name + "'");
}

std::string LackOf(const std::vector<std::string>& names, const std::vector<std::string>& missing,
                   NamedBy named_by, const std::vector<std::string_view>& header,
                   const std::string& subject) {
  const std::size_t shown = std::min(missing.size(), kListedColumns);
  std::string list = fmt::format(
      "\"{}\"",
      fmt::join(missing.begin(), missing.begin() + static_cast<std::ptrdiff_t>(shown), "\", \""));
  if (shown < missing.size()) list += fmt::format(" and {} more", missing.size() - shown);
  const std::string suspicion = Suspicion(header, names, missing, named_by);
  // First what may be wrong: the lists that follow may be long.
  const std::string_view begin = suspicion.empty()          ? "the"
                                 : suspicion.ends_with('?') ? " The"
                                                            : "; the";
  return fmt::format("{}{} {} lacks {}, which {}; it has {}", suspicion, begin, subject, list,
                     named_by == NamedBy::kModel ? "the model needs" : "--passthrough names",
                     ListOf(header));
}

}  // namespace svmscore::tools
