#include "host/xml/raw_scan.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "host/text/utf8.h"

namespace svmscore {
namespace {

constexpr std::string_view kComment = "!--";
constexpr std::string_view kCdata = "![CDATA[";
constexpr std::string_view kElement = "!ELEMENT";
constexpr std::string_view kAttributes = "!ATTLIST";

// The codes of markup characters where the encoding is not exact.
struct Signs {
  unsigned char less, equals, quote, apostrophe;
  unsigned char line_ends[2];
  std::string_view blanks;  // except line ends
  std::string_view doctype;
};

constexpr Signs kAscii = {'<', '=', '"', '\'', {'\n', '\n'}, "\t\r ", "DOCTYPE"};
constexpr Signs kEbcdic = {
    0x4C, 0x7E, 0x7F, 0x7D, {0x15, 0x25}, "\x05\x0D\x40", "\xC4\xD6\xC3\xE3\xE8\xD7\xC5"};

// Whether a name may end at the character: an opening parenthesis, a comma, a bar; in EBCDIC
// any character whose code differs between code pages, as the bar's does.
bool MaySeparate(unsigned char c, bool ebcdic) {
  if (!ebcdic) return c == '(' || c == ',' || c == '|';
  return c == 0x4D || c == 0x6B || (c >= 0x40 && !IsSharedInEbcdic(static_cast<char>(c)));
}

// Whether the characters after this one may have another meaning until a shift back.
bool MayShift(unsigned char c, bool ebcdic) {
  if (ebcdic) return c == 0x0E || c == 0x0F || c == 0;
  return c < 0x20 && c != '\t' && c != '\r' && c != '\n';
}

std::uint64_t CountNewlines(const unsigned char* at, const unsigned char* end) {
  constexpr std::ptrdiff_t kMost = 192;  // fewer than a byte counts
  std::uint64_t count = 0;
  while (at != end) {
    const auto size = static_cast<std::size_t>(std::min(end - at, kMost));
    unsigned char some = 0;
    for (std::size_t i = 0; i < size; ++i)
      some = static_cast<unsigned char>(some + (at[i] == '\n'));
    count += some;
    at += size;
  }
  return count;
}

bool IsAscii(std::string_view bytes) {
  unsigned char seen = 0;
  for (const char c : bytes) seen |= static_cast<unsigned char>(c);
  return seen < 0x80;
}

}  // namespace

void RawScan::Read(const void* bytes, std::size_t size) {
  if (decided_) return ReadDecided(bytes, size);
  waiting_.append(static_cast<const char*>(bytes), size);
  if (!IsBeginning(waiting_)) return;
  decided_ = true;
  encoding_ = EncodingOf(waiting_);
  if (!encoding_.problem.empty()) {
    problem_ = Problem::kEncoding;
    return;
  }
  ReadDecided(waiting_.data(), waiting_.size());
  waiting_ = {};
}

bool RawScan::EndsInsideCharacter() const {
  for (std::size_t length = 1; length <= tail_.size(); ++length) {
    const auto c = static_cast<unsigned char>(tail_[tail_.size() - length]);
    if (c < 0x80) break;
    if (c >= 0xC0) return length < (c >= 0xF0 ? 4U : c >= 0xE0 ? 3U : 2U);
  }
  return taken_ != 0;
}

void RawScan::ReadDecided(const void* bytes, std::size_t size) {
  if (encoding_.utf8) {
    CheckUtf8({static_cast<const char*>(bytes), size});
    tail_.append(static_cast<const char*>(bytes) + size - std::min<std::size_t>(size, 3),
                 std::min<std::size_t>(size, 3));
    tail_.erase(0, tail_.size() - std::min<std::size_t>(tail_.size(), 3));
  }
  const auto* at = static_cast<const unsigned char*>(bytes);
  const auto* const end = at + size;
  if (!encoding_.exact) {
    while (at != end && problem_ == Problem::kNone) TakeCoarsely(*at++);
    return;
  }
  const std::size_t unit = encoding_.unit;
  const auto* zero = unit == 1 && size > 0 ? std::memchr(bytes, 0, size) : nullptr;
  const auto* const stop = zero == nullptr ? end : static_cast<const unsigned char*>(zero) + 1;
  while (at != stop && problem_ == Problem::kNone) {
    if (unit == 1 && state_ == State::kText) {
      // Most of a document is text, which is skipped quickly.
      const auto* tag = static_cast<const unsigned char*>(
          std::memchr(at, '<', static_cast<std::size_t>(stop - at)));
      if (tag == nullptr) tag = zero == nullptr ? stop : stop - 1;
      line_ += CountNewlines(at, tag);
      at = tag;
      if (at == stop) return;
    }
    if (unit == 1 && (state_ == State::kTag || state_ == State::kValue)) {
      at = SkipInTag(at, zero == nullptr ? stop : stop - 1);
      if (at == stop) return;
    }
    const char32_t byte = *at++;
    const std::size_t shift = 8 * (encoding_.big_endian ? unit - 1 - taken_ : taken_);
    partial_ |= byte << shift;
    if (++taken_ < unit) continue;
    Take(partial_);
    taken_ = 0;
    partial_ = 0;
  }
}

// Within a tag, most characters are only passed over.
const unsigned char* RawScan::SkipInTag(const unsigned char* at, const unsigned char* end) {
  const bool in_value = state_ == State::kValue;
  for (; at != end; ++at) {
    if (*at == '\n') ++line_;
    if (in_value ? *at == quote_ : *at == '>' || *at == '"' || *at == '\'') break;
  }
  return at;
}

void RawScan::CheckUtf8(std::string_view bytes) {
  if (bad_byte_line_ != 0) return;
  if (open_.empty() && IsAscii(bytes)) {
    ascii_before_ = true;
    return;
  }
  // Everything before these bytes has been scanned, and its lines counted.
  if (std::exchange(ascii_before_, false)) checked_lines_ = line_;
  std::string joined;
  if (!open_.empty()) bytes = joined = std::exchange(open_, {}).append(bytes);
  std::size_t at = 0;
  const auto newlines = [&bytes, &at] {
    return static_cast<std::uint64_t>(
        std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(at), '\n'));
  };
  while (at < bytes.size()) {
    std::uint64_t eight = 0;
    if (bytes.size() - at >= sizeof eight) {
      std::memcpy(&eight, bytes.data() + at, sizeof eight);
      if ((eight & 0x8080808080808080) == 0) {
        at += sizeof eight;
        continue;
      }
    }
    const std::size_t size = Utf8SequenceSize(bytes.substr(at));
    if (size == 0) {
      if (bytes.size() - at < 4) break;
      bad_byte_line_ = checked_lines_ + newlines();
      return;
    }
    at += size;
  }
  checked_lines_ += newlines();
  open_ = bytes.substr(at);
}

void RawScan::Read(const XMLCh* text, std::size_t size) {
  for (std::size_t i = 0; i < size && problem_ == Problem::kNone; ++i) Take(text[i]);
}

void RawScan::Take(char32_t c) {
  if (c == U'\n') ++line_;
  if (c == 0) problem_ = Problem::kControl;
  switch (state_) {
    case State::kText:
      if (c != U'<') return;
      state_ = State::kOpened;
      matched_ = 0;
      attributes_ = 0;
      return;
    case State::kOpened:
      return TakeOpened(c);
    case State::kTag:
    case State::kDeclaration:
      return TakeMarkup(c);
    case State::kValue:
      if (c == quote_) state_ = around_;
      return;
    case State::kSection:
      // Only the first character of an end can repeat, as in "--->".
      if (c == static_cast<unsigned char>(section_end_[matched_])) {
        ++matched_;
      } else if (!(matched_ == 2 && c == static_cast<unsigned char>(section_end_[1]))) {
        matched_ = c == static_cast<unsigned char>(section_end_[0]) ? 1 : 0;
      }
      if (matched_ == section_end_.size()) state_ = State::kText;
      return;
  }
}

// In a tag or a declaration, outside of quotation marks.
void RawScan::TakeMarkup(char32_t c) {
  const bool declares = state_ == State::kDeclaration;
  if (c == U'>' || (declares && c == U'[')) {
    state_ = State::kText;
  } else if (c == U'"' || c == U'\'') {
    around_ = state_;
    state_ = State::kValue;
    quote_ = c;
    if (!declares) CountAttribute();
  } else if (declares && lists_ && (c == U'|' || c == U',' || c == U'(') &&
             ++listed_ > most_listed_) {
    problem_ = Problem::kDeclarations;
  }
}

void RawScan::CountAttribute() {
  if (++attributes_ > most_attributes_) problem_ = Problem::kAttributes;
}

void RawScan::TakeCoarsely(unsigned char c) {
  const bool ebcdic = encoding_.ebcdic;
  const Signs& signs = ebcdic ? kEbcdic : kAscii;
  if (MayShift(c, ebcdic)) problem_ = Problem::kControl;
  if (lists_) {
    if (MaySeparate(c, ebcdic) && ++listed_ > most_listed_) problem_ = Problem::kDeclarations;
  } else if (static_cast<char>(c) == signs.doctype[matched_]) {
    lists_ = ++matched_ == signs.doctype.size();
  } else {
    matched_ = static_cast<char>(c) == signs.doctype[0] ? 1 : 0;
  }
  if (c == signs.line_ends[0] || c == signs.line_ends[1]) {
    ++line_;
  } else if (c == signs.less) {
    attributes_ = 0;
    after_equals_ = false;
  } else if (c == signs.equals) {
    after_equals_ = true;
  } else if (signs.blanks.find(static_cast<char>(c)) == std::string_view::npos) {
    if (after_equals_ && (c == signs.quote || c == signs.apostrophe)) CountAttribute();
    after_equals_ = false;
  }
}

// What follows a "<".
void RawScan::TakeOpened(char32_t c) {
  if (matched_ == 0 && c == U'?') {
    state_ = State::kSection;
    section_end_ = "?>";
    return;
  }
  if (matched_ == 0 && c != U'!') {
    state_ = c == U'/' ? State::kText : State::kTag;
    return;
  }
  beginning_[matched_++] = c < 0x80 ? static_cast<char>(c) : '?';
  const std::string_view seen(beginning_, matched_);
  lists_ = seen == kElement || seen == kAttributes;
  if (lists_) {
    state_ = State::kDeclaration;
    return;
  }
  if (kElement.starts_with(seen) || kAttributes.starts_with(seen)) return;
  if (kComment.starts_with(seen) || kCdata.starts_with(seen)) {
    if (seen != kComment && seen != kCdata) return;
    section_end_ = seen == kComment ? "-->" : "]]>";
    state_ = State::kSection;
    matched_ = 0;
    return;
  }
  // Another declaration: what is inside its quotation marks is not markup yet.
  state_ = State::kDeclaration;
  TakeMarkup(c);
}

}  // namespace svmscore
