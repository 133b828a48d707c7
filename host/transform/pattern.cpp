#include "host/transform/pattern.h"

#include <utility>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace svmscore::transform {
namespace {

// Steps of one match: some tenths of a second at the most.
constexpr std::uint32_t kMostSteps = 1000000;
constexpr std::uint32_t kMostMemory = 20000;  // KiB
// A replacement that grows a text beyond this has gone wrong.
constexpr std::size_t kLongestText = std::size_t{1} << 24;

struct FreeMatch {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

using MatchData = std::unique_ptr<pcre2_match_data, FreeMatch>;

PCRE2_SPTR Bytes(std::string_view text) {
  // The library wants an address also for no bytes.
  return reinterpret_cast<PCRE2_SPTR>(text.data() == nullptr ? "" : text.data());
}

}  // namespace

struct Pattern::Code {
  pcre2_code* code = nullptr;
  pcre2_match_context* limits = nullptr;
  ~Code() {
    pcre2_match_context_free(limits);
    pcre2_code_free(code);
  }
};

Pattern::Pattern(std::unique_ptr<Code> code) : code_(std::move(code)) {}
Pattern::~Pattern() = default;

std::unique_ptr<Pattern> Pattern::Compile(std::string_view text, bool ignore_case,
                                          std::string* error) {
  int number = 0;
  PCRE2_SIZE offset = 0;
  const std::uint32_t options =
      PCRE2_UTF | PCRE2_NEVER_BACKSLASH_C | (ignore_case ? PCRE2_CASELESS : 0U);
  auto code = std::make_unique<Code>();
  code->code = pcre2_compile(Bytes(text), text.size(), options, &number, &offset, nullptr);
  if (code->code == nullptr) {
    if (error != nullptr) {
      char message[256];
      pcre2_get_error_message(number, reinterpret_cast<PCRE2_UCHAR*>(message), sizeof message);
      *error = std::string(message) + " at character " + std::to_string(offset);
    }
    return nullptr;
  }
  code->limits = pcre2_match_context_create(nullptr);
  if (code->limits == nullptr) throw std::bad_alloc();
  pcre2_set_match_limit(code->limits, kMostSteps);
  pcre2_set_heap_limit(code->limits, kMostMemory);
  return std::unique_ptr<Pattern>(new Pattern(std::move(code)));
}

std::optional<bool> Pattern::Matches(std::string_view text) const {
  const MatchData data(pcre2_match_data_create(1, nullptr));
  if (data == nullptr) throw std::bad_alloc();
  const int result =
      pcre2_match(code_->code, Bytes(text), text.size(), 0, 0, data.get(), code_->limits);
  if (result == PCRE2_ERROR_NOMATCH) return false;
  if (result < 0) return std::nullopt;
  return true;
}

std::optional<std::vector<Pattern::Match>> Pattern::FindAll(std::string_view text) const {
  const MatchData data(pcre2_match_data_create(1, nullptr));
  if (data == nullptr) throw std::bad_alloc();
  std::vector<Match> matches;
  std::size_t from = 0;
  // That the text is UTF-8 is checked once, not from every match on.
  for (std::uint32_t options = PCRE2_NOTEMPTY;; options = PCRE2_NOTEMPTY | PCRE2_NO_UTF_CHECK) {
    const int result = pcre2_match(code_->code, Bytes(text), text.size(), from, options, data.get(),
                                   code_->limits);
    if (result == PCRE2_ERROR_NOMATCH) return matches;
    if (result < 0) return std::nullopt;
    const PCRE2_SIZE* places = pcre2_get_ovector_pointer(data.get());
    // \K can put the end before the beginning.
    if (places[1] <= places[0] || places[1] <= from) return std::nullopt;
    matches.push_back({places[0], places[1]});
    from = places[1];
  }
}

std::optional<std::string> Pattern::Substitute(std::string_view text, std::string_view replacement,
                                               std::uint32_t options) const {
  std::string result(text.size() + replacement.size() + 64, '\0');
  for (;;) {
    PCRE2_SIZE size = result.size();
    const int count =
        pcre2_substitute(code_->code, Bytes(text), text.size(), 0,
                         options | PCRE2_SUBSTITUTE_GLOBAL | PCRE2_SUBSTITUTE_OVERFLOW_LENGTH,
                         nullptr, code_->limits, Bytes(replacement), replacement.size(),
                         reinterpret_cast<PCRE2_UCHAR*>(result.data()), &size);
    if (count == PCRE2_ERROR_NOMEMORY && size > result.size() && size <= kLongestText) {
      result.resize(size);
      continue;
    }
    if (count < 0) return std::nullopt;
    result.resize(size);
    return result;
  }
}

std::optional<std::string> Pattern::Replace(std::string_view text,
                                            std::string_view replacement) const {
  return Substitute(text, replacement,
                    PCRE2_SUBSTITUTE_UNSET_EMPTY | PCRE2_SUBSTITUTE_UNKNOWN_UNSET);
}

std::optional<std::string> Pattern::ReplaceLiteral(std::string_view text,
                                                   std::string_view replacement) const {
  return Substitute(text, replacement, PCRE2_SUBSTITUTE_LITERAL);
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
