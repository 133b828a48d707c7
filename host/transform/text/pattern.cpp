#include "host/transform/text/pattern.h"

#include <algorithm>
#include <new>
#include <utility>

#include "host/transform/text/pattern_items.h"

namespace svmscore::transform {
namespace {

// The most steps from one place of the text at which a match may begin.
constexpr std::uint32_t kMostSteps = 1000000;
constexpr std::uint32_t kMostMemory = 20000;  // KiB
// The longest text that a replacement may produce.
constexpr std::size_t kLongestText = std::size_t{1} << 24;
// What a match costs in addition to its items: the library's call, and the replacement.
constexpr std::size_t kMatchCost = 128;
// How many bytes of a pattern without a meter are compared for one unit.
constexpr std::size_t kUnmeteredAtOnce = 8;

PCRE2_SPTR Bytes(std::string_view text) {
  // The library wants an address even for an empty text.
  return reinterpret_cast<PCRE2_SPTR>(text.data() == nullptr ? "" : text.data());
}

pcre2_code* CompileCode(std::string_view text, std::uint32_t options, int& number,
                        PCRE2_SIZE& offset) {
  return pcre2_compile(Bytes(text), text.size(), options | PCRE2_UTF | PCRE2_NEVER_BACKSLASH_C,
                       &number, &offset, nullptr);
}

// True where nothing repeats, refers back or looks around: then a step never covers more of a text
// than the length of the pattern.
bool IsList(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::string_view rest = text.substr(i);
    if (rest[0] == '\\') {
      const char next = rest.size() > 1 ? rest[1] : 'Q';
      if ((next >= '0' && next <= '9') || next == 'g' || next == 'k' || next == 'X' ||
          next == 'Q') {
        return false;
      }
      ++i;
    } else if (rest[0] == '*' || rest[0] == '+' || rest[0] == '{' ||
               (rest.starts_with("(?") && !rest.starts_with("(?:"))) {
      return false;
    }
  }
  return true;
}

}  // namespace

struct Pattern::Code {
  pcre2_code* code = nullptr;
  std::unique_ptr<const PatternItems> items;  // null for a list that is too long to be metered
  std::size_t size = 0;                       // bytes of its text
  std::size_t step = 0;  // units for a step of the library, which copies that many bytes
  ~Code() { pcre2_code_free(code); }
};

// What the library needs to go through one text.
class Pattern::Search {
 public:
  // REQUIRES: the code and the work outlive it.
  Search(const Code& code, WorkBudget& work)
      : code_(code),
        work_(work),
        data_(pcre2_match_data_create(1, nullptr)),
        limits_(pcre2_match_context_create(nullptr)) {
    if (data_ == nullptr || limits_ == nullptr) throw std::bad_alloc();
    pcre2_set_match_limit(limits_.get(), kMostSteps);
    pcre2_set_heap_limit(limits_.get(), kMostMemory);
    if (code.items == nullptr) return;
    meter_.emplace(*code.items, work);
    pcre2_set_callout(limits_.get(), &PatternMeter::Count, &*meter_);
  }

  // Spends the work for a text. Work that is not metered is spent in advance: every place of the
  // text may have to be compared with the whole pattern.
  bool Begin(std::size_t size) {
    if (!work_.Spend(kMatchCost + size)) return false;
    if (meter_) return true;
    if (!work_.Spend(size / kUnmeteredAtOnce * code_.size)) return false;
    const std::size_t steps = work_.Left() / code_.step / (size + 1);
    pcre2_set_match_limit(limits_.get(),
                          static_cast<std::uint32_t>(std::min<std::size_t>(steps, kMostSteps)));
    return true;
  }

  int Match(std::string_view text, std::size_t from, std::uint32_t options) {
    return pcre2_match(code_.code, Bytes(text), text.size(), from, options, data_.get(),
                       limits_.get());
  }
  const PCRE2_SIZE* Places() const { return pcre2_get_ovector_pointer(data_.get()); }
  pcre2_match_context* Limits() const { return limits_.get(); }

 private:
  struct FreeMatch {
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
  };
  struct FreeLimits {
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
  };

  const Code& code_;
  WorkBudget& work_;
  const std::unique_ptr<pcre2_match_data, FreeMatch> data_;
  const std::unique_ptr<pcre2_match_context, FreeLimits> limits_;
  std::optional<PatternMeter> meter_;
};

Pattern::Pattern(std::unique_ptr<Code> code) : code_(std::move(code)) {}
Pattern::~Pattern() = default;

std::unique_ptr<Pattern> Pattern::Compile(std::string_view text, bool ignore_case,
                                          std::string* error) {
  int number = 0;
  PCRE2_SIZE offset = 0;
  const std::uint32_t options = ignore_case ? PCRE2_CASELESS : 0U;
  auto code = std::make_unique<Code>();
  code->size = text.size();
  code->code = CompileCode(text, options | PCRE2_AUTO_CALLOUT, number, offset);
  if (code->code != nullptr) {
    code->items = std::make_unique<const PatternItems>(code->code, text);
  } else if (number == PCRE2_ERROR_PATTERN_TOO_LARGE && IsList(text)) {
    code->code = CompileCode(text, options, number, offset);
  }
  if (code->code == nullptr) {
    if (error != nullptr) {
      char message[256];
      pcre2_get_error_message(number, reinterpret_cast<PCRE2_UCHAR*>(message), sizeof message);
      *error = std::string(message) + " at character " + std::to_string(offset);
    }
    return nullptr;
  }
  pcre2_pattern_info(code->code, PCRE2_INFO_FRAMESIZE, &code->step);
  return std::unique_ptr<Pattern>(new Pattern(std::move(code)));
}

std::optional<bool> Pattern::Matches(std::string_view text, WorkBudget& work) const {
  Search search(*code_, work);
  if (!search.Begin(text.size())) return std::nullopt;
  const int result = search.Match(text, 0, 0);
  if (result == PCRE2_ERROR_NOMATCH) return false;
  if (result < 0) return std::nullopt;
  return true;
}

std::optional<std::vector<Pattern::Match>> Pattern::FindAll(std::string_view text,
                                                            WorkBudget& work) const {
  Search search(*code_, work);
  if (!search.Begin(text.size())) return std::nullopt;
  std::vector<Match> matches;
  std::size_t from = 0;
  // The text is checked for UTF-8 once, not again after every match.
  for (std::uint32_t options = PCRE2_NOTEMPTY;; options = PCRE2_NOTEMPTY | PCRE2_NO_UTF_CHECK) {
    const int result = search.Match(text, from, options);
    if (result == PCRE2_ERROR_NOMATCH) return matches;
    if (result < 0 || !work.Spend(kMatchCost)) return std::nullopt;
    const PCRE2_SIZE* places = search.Places();
    // \K can put the end before the beginning.
    if (places[1] <= places[0] || places[1] <= from) return std::nullopt;
    matches.push_back({places[0], places[1]});
    from = places[1];
  }
}

std::optional<std::string> Pattern::Substitute(std::string_view text, std::string_view replacement,
                                               std::uint32_t options, WorkBudget& work) const {
  Search search(*code_, work);
  std::string result(text.size() + replacement.size() + 64, '\0');
  for (;;) {
    if (!search.Begin(text.size())) return std::nullopt;
    PCRE2_SIZE size = result.size();
    const int count =
        pcre2_substitute(code_->code, Bytes(text), text.size(), 0,
                         options | PCRE2_SUBSTITUTE_GLOBAL | PCRE2_SUBSTITUTE_OVERFLOW_LENGTH,
                         nullptr, search.Limits(), Bytes(replacement), replacement.size(),
                         reinterpret_cast<PCRE2_UCHAR*>(result.data()), &size);
    if (count == PCRE2_ERROR_NOMEMORY && size > result.size() && size <= kLongestText) {
      result.resize(size);
      continue;
    }
    if (count < 0 || !work.Spend(kMatchCost * static_cast<std::size_t>(count))) return std::nullopt;
    result.resize(size);
    return result;
  }
}

std::optional<std::string> Pattern::Replace(std::string_view text, std::string_view replacement,
                                            WorkBudget& work) const {
  return Substitute(text, replacement,
                    PCRE2_SUBSTITUTE_UNSET_EMPTY | PCRE2_SUBSTITUTE_UNKNOWN_UNSET, work);
}

std::optional<std::string> Pattern::ReplaceLiteral(std::string_view text,
                                                   std::string_view replacement,
                                                   WorkBudget& work) const {
  return Substitute(text, replacement, PCRE2_SUBSTITUTE_LITERAL, work);
}

bool Pattern::IsReplacement(std::string_view replacement) {
  for (std::size_t i = 0; i < replacement.size(); ++i) {
    if (replacement[i] != '$') continue;
    const char next = ++i < replacement.size() ? replacement[i] : ' ';
    if (next != '$' && (next < '0' || next > '9')) return false;
  }
  return true;
}

}  // namespace svmscore::transform
