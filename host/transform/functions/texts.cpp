// Functions of texts. Positions and lengths count characters, not bytes.
#include <array>
#include <string>
#include <utility>

#include "host/transform/functions/functions.h"
#include "host/transform/text/pattern.h"
#include "host/transform/text/unicode.h"

namespace svmscore::transform {
namespace {

Value Kept(const std::string& text, Arena& arena) {
  return arena.HasRoomFor(text.size()) ? Value::Text(arena.Copy(text)) : Value::Invalid();
}

Value UpperCaseOf(const Arguments& in) {
  return Kept(UpperCase(TextOf(in[0], in.arena)), in.arena);
}

Value LowerCaseOf(const Arguments& in) {
  return Kept(LowerCase(TextOf(in[0], in.arena)), in.arena);
}

Value StringLength(const Arguments& in) {
  return Value::Integer(static_cast<std::int64_t>(CharacterCount(TextOf(in[0], in.arena))));
}

// The first position is 1. A length that goes beyond the end means up to the end.
Value Substring(const Arguments& in) {
  const auto start = IntegerOf(in[1]);
  const auto length = IntegerOf(in[2]);
  if (!start || !length || *start < 1 || *length < 0) return Value::Invalid();
  return Value::Text(Characters(TextOf(in[0], in.arena), static_cast<std::size_t>(*start - 1),
                                static_cast<std::size_t>(*length)));
}

Value TrimBlanks(const Arguments& in) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::string_view text = TextOf(in[0], in.arena);
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return Value::Text("");
  return Value::Text(text.substr(first, text.find_last_not_of(kBlanks) - first + 1));
}

Value Concatenate(const Arguments& in) {
  auto* parts =
      reinterpret_cast<std::string_view*>(in.arena.Allocate(in.size() * sizeof(std::string_view)));
  std::size_t size = 0;
  for (std::size_t i = 0; i < in.size(); ++i) {
    parts[i] = TextOf(in[i], in.arena);
    size += parts[i].size();
  }
  if (!in.arena.HasRoomFor(size)) return Value::Invalid();
  char* joined = in.arena.Allocate(size);
  char* end = joined;
  for (std::size_t i = 0; i < in.size(); ++i) end += parts[i].copy(end, parts[i].size());
  return Value::Text({joined, size});
}

class PreparedPattern : public Prepared {
 public:
  explicit PreparedPattern(std::unique_ptr<Pattern> pattern) : pattern_(std::move(pattern)) {}
  const Pattern& Get() const { return *pattern_; }

 private:
  std::unique_ptr<Pattern> pattern_;
};

// Compiles the pattern that is the second argument, where it never changes.
std::unique_ptr<Prepared> PreparePattern(const Element* element,
                                         std::span<const Value* const> fixed) {
  Arena pool;
  if (fixed.size() > 2 && fixed[2] != nullptr && fixed[2]->IsPresent()) {
    const std::string_view replacement = TextOf(*fixed[2], pool);
    if (!Pattern::IsReplacement(replacement)) {
      RefuseContent(element, "the replacement \"" + std::string(replacement) +
                                 "\" has a dollar sign that is neither doubled nor before a digit");
    }
  }
  if (fixed[1] == nullptr || !fixed[1]->IsPresent()) return nullptr;
  const std::string_view text = TextOf(*fixed[1], pool);
  std::string error;
  std::unique_ptr<Pattern> pattern = Pattern::Compile(text, false, &error);
  if (pattern == nullptr) {
    RefuseContent(element,
                  "\"" + std::string(text) + "\" is not a regular expression (" + error + ")");
  }
  return std::make_unique<PreparedPattern>(std::move(pattern));
}

// The pattern of a call; `made` keeps one that had to be made for it. Null where the argument is
// not a pattern.
const Pattern* PatternOf(const Arguments& in, std::unique_ptr<Pattern>& made) {
  if (in.prepared != nullptr) return &static_cast<const PreparedPattern*>(in.prepared)->Get();
  made = Pattern::Compile(TextOf(in[1], in.arena), false, nullptr);
  return made.get();
}

Value Matches(const Arguments& in) {
  std::unique_ptr<Pattern> made;
  const Pattern* pattern = PatternOf(in, made);
  if (pattern == nullptr) return Value::Invalid();
  WorkBudget work;
  const auto answer = pattern->Matches(TextOf(in[0], in.arena), work);
  return answer ? Value::Boolean(*answer) : Value::Invalid();
}

Value Replace(const Arguments& in) {
  std::unique_ptr<Pattern> made;
  const Pattern* pattern = PatternOf(in, made);
  if (pattern == nullptr) return Value::Invalid();
  WorkBudget work;
  const auto text = pattern->Replace(TextOf(in[0], in.arena), TextOf(in[2], in.arena), work);
  return text ? Kept(*text, in.arena) : Value::Invalid();
}

constexpr std::array kTextsFunctions = {
    Function{"uppercase", 1, 1, Returns::kString, Accepts::kPresent, UpperCaseOf},
    Function{"lowercase", 1, 1, Returns::kString, Accepts::kPresent, LowerCaseOf},
    Function{"stringLength", 1, 1, Returns::kNumber, Accepts::kPresent, StringLength},
    Function{"substring", 3, 3, Returns::kString, Accepts::kPresent, Substring},
    Function{"trimBlanks", 1, 1, Returns::kString, Accepts::kPresent, TrimBlanks},
    Function{"concat", 2, kManyArguments, Returns::kString, Accepts::kPresent, Concatenate},
    Function{"replace", 3, 3, Returns::kString, Accepts::kPresent, Replace, PreparePattern},
    Function{"matches", 2, 2, Returns::kBoolean, Accepts::kPresent, Matches, PreparePattern},
};

}  // namespace

std::span<const Function> TextFunctions() {
  return kTextsFunctions;
}

}  // namespace svmscore::transform
