#include "host/transform/text_normalisation.h"

#include <utility>

#include "host/text/field_text.h"
#include "host/transform/read_word_rules.h"
#include "host/transform/table/inline_table.h"

namespace svmscore::transform {
namespace {

// A recursive step that has not settled after this many rounds is given up.
constexpr int kMostRounds = 100;
// No reasonable table makes a text longer than four times its length plus this.
constexpr std::size_t kMostGrowth = std::size_t{1} << 16;
// All rounds together may go through as many bytes for each row as kMostRounds rounds over the
// original text and this many bytes more. A text that grows in every round is thus given up long
// before the last.
constexpr std::size_t kShortText = std::size_t{1} << 9;

// A pattern that matches exactly this text.
std::string Quote(const std::string& text) {
  std::string quoted;
  for (const char c : text) {
    const bool plain = static_cast<unsigned char>(c) >= 0x80 || (c >= 'a' && c <= 'z') ||
                       (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    if (!plain) quoted += '\\';
    quoted += c;
  }
  return quoted;
}

bool IsTrue(const std::optional<std::string_view>& cell) {
  return cell && ParseBoolean(*cell).value_or(false);
}

}  // namespace

TextNormalisation::TextNormalisation(const Element* element, const WordRules& inherited)
    : rules_(ReadWordRules(element, &inherited)),
      recursive_(FindFlag(element, "recursive", false)) {
  const Element* table = InlineTableOf(element);
  if (table == nullptr) RefuseContent(element, "there is no InlineTable");
  const std::vector<std::string> columns = {FindAttribute(element, "inField").value_or("string"),
                                            FindAttribute(element, "outField").value_or("stem"),
                                            FindAttribute(element, "regexField").value_or("regex")};
  ForEachRow(table, columns, 2, [this](const Element* row, Cells cells) {
    const auto in = TextOf(cells, 0);
    if (!in || in->empty()) RefuseContent(row, "there is no text to replace");
    AddRow(row, std::string(*in), std::string(TextOf(cells, 1).value_or("")),
           IsTrue(TextOf(cells, 2)));
  });
}

void TextNormalisation::AddRow(const Element* row, const std::string& in, const std::string& out,
                               bool regex) {
  Row made;
  made.regex = regex;
  made.replacement = out;
  if (regex && !Pattern::IsReplacement(out)) {
    RefuseContent(row, "the replacement \"" + out +
                           "\" has a dollar sign that is neither doubled nor before a digit");
  }
  if (!regex && rules_.MostEdits() > 0) {
    WorkBudget work;
    made.words = rules_.Split(in, work).value_or(Words());
  }
  std::string error;
  made.pattern = Pattern::Compile(regex ? in : Quote(in), rules_.IgnoresCase(), &error);
  if (made.pattern == nullptr) {
    RefuseContent(row, "\"" + in + "\" is not a regular expression (" + error + ")");
  }
  rows_.push_back(std::move(made));
}

bool TextNormalisation::ReplaceWords(const Row& row, std::string& text, WorkBudget& work) const {
  const auto words = rules_.Split(text, work);
  if (!words) return false;
  std::string result;
  std::size_t copied = 0;
  for (std::size_t at = 0; at + row.words.size() <= words->size();) {
    const auto edits = EditsAt(*words, at, row.words, rules_.MostEdits(), work);
    if (!edits) return false;
    if (*edits > rules_.MostEdits()) {
      ++at;
      continue;
    }
    result.append(text, copied, (*words)[at].begin - copied);
    result += row.replacement;
    at += row.words.size();
    copied = (*words)[at - 1].end;
  }
  result.append(text, copied);
  text = std::move(result);
  return true;
}

bool TextNormalisation::RunRow(const Row& row, std::string& text, WorkBudget& work) const {
  if (!row.words.empty()) return ReplaceWords(row, text, work);
  auto replaced = row.regex ? row.pattern->Replace(text, row.replacement, work)
                            : row.pattern->ReplaceLiteral(text, row.replacement, work);
  if (!replaced) return false;
  text = *std::move(replaced);
  return true;
}

bool TextNormalisation::Run(std::string& text, WorkBudget& work) const {
  const std::size_t longest = 4 * text.size() + kMostGrowth;
  const std::size_t most_bytes = kMostRounds * rows_.size() * (text.size() + kShortText);
  std::size_t bytes = 0;
  for (int round = 0; round < (recursive_ ? kMostRounds : 1); ++round) {
    const std::string before = text;
    for (const Row& row : rows_) {
      if (!RunRow(row, text, work) || text.size() > longest) return false;
      bytes += text.size();
      if (bytes > most_bytes) return false;
    }
    if (text == before) return true;
  }
  return !recursive_;
}

}  // namespace svmscore::transform
