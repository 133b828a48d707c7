#include "host/pmml/raw_scan.h"

#include <algorithm>
#include <cstring>

namespace svmscore {
namespace {

constexpr std::string_view kComment = "!--";
constexpr std::string_view kCdata = "![CDATA[";
constexpr std::string_view kElement = "!ELEMENT";
constexpr std::string_view kAttributes = "!ATTLIST";

// In EBCDIC, whose code pages all have the Latin letters, the digits and some signs in one place.
constexpr std::string_view kEbcdicDoctype = "\xC4\xD6\xC3\xE3\xE8\xD7\xC5";

// Whether a name may end at the character: a parenthesis opens, a comma, or what differs between
// the code pages, as the bar does.
bool MaySeparateInEbcdic(unsigned char c) {
  constexpr std::string_view kSigns =
      "\x40\x4B\x4C\x4E\x50\x5C\x5D\x5E\x60\x61\x6C\x6D\x6E\x6F\x7A\x7D\x7E\x7F";
  if (c < 0x40 || kSigns.find(static_cast<char>(c)) != std::string_view::npos) return false;
  const unsigned row = c >> 4U;
  const unsigned first = row == 0xF ? 0 : row == 0xA || row == 0xE ? 2 : 1;
  const unsigned column = c & 0xFU;
  const bool letter_or_digit = row >= 8 && row != 0xB && column >= first && column <= 9;
  return !letter_or_digit;
}

}  // namespace

void RawScan::DetectUnits(const unsigned char* bytes, std::size_t size) {
  unit_ = 1;
  if (size < 4) return;
  const unsigned char* b = bytes;
  if (b[0] == 0x4C && b[1] == 0x6F) {  // "<?" in EBCDIC
    ebcdic_ = true;
    return;
  }
  const bool zero_first = b[0] == 0;
  if ((zero_first && b[1] == 0) || (b[0] != 0 && b[1] == 0 && b[2] == 0) ||
      (b[0] == 0xFF && b[1] == 0xFE && b[2] == 0 && b[3] == 0)) {
    unit_ = 4;
    big_endian_ = zero_first;
  } else if (zero_first || b[1] == 0 || (b[0] == 0xFE && b[1] == 0xFF) ||
             (b[0] == 0xFF && b[1] == 0xFE)) {
    unit_ = 2;
    big_endian_ = zero_first || b[0] == 0xFE;
  }
}

void RawScan::Read(const void* bytes, std::size_t size) {
  const auto* at = static_cast<const unsigned char*>(bytes);
  const auto* const end = at + size;
  if (unit_ == 0 && size > 0) DetectUnits(at, size);
  const auto* zero = unit_ == 1 && size > 0 ? std::memchr(bytes, 0, size) : nullptr;
  const auto* const stop = zero == nullptr ? end : static_cast<const unsigned char*>(zero) + 1;
  while (at != stop && problem_ == Problem::kNone) {
    if (unit_ == 1 && state_ == State::kText && !ebcdic_) {
      // Most of a document is text.
      const auto* tag = static_cast<const unsigned char*>(
          std::memchr(at, '<', static_cast<std::size_t>(stop - at)));
      if (tag == nullptr) tag = zero == nullptr ? stop : stop - 1;
      line_ += static_cast<std::uint64_t>(std::count(at, tag, '\n'));
      at = tag;
      if (at == stop) return;
    }
    const char32_t byte = *at++;
    if (ebcdic_) {
      TakeEbcdic(static_cast<unsigned char>(byte));
      continue;
    }
    const std::size_t shift = 8 * (big_endian_ ? unit_ - 1 - taken_ : taken_);
    partial_ |= byte << shift;
    if (++taken_ < unit_) continue;
    Take(partial_);
    taken_ = 0;
    partial_ = 0;
  }
}

void RawScan::Read(const XMLCh* text, std::size_t size) {
  for (std::size_t i = 0; i < size && problem_ == Problem::kNone; ++i) Take(text[i]);
}

void RawScan::Take(char32_t c) {
  if (c == U'\n') ++line_;
  if (c == 0) problem_ = Problem::kNul;
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
      // Of the ends only their first character repeats, as in "--->".
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

void RawScan::TakeEbcdic(unsigned char c) {
  constexpr unsigned char kLess = 0x4C;
  constexpr unsigned char kEquals = 0x7E;
  constexpr unsigned char kQuote = 0x7F;
  constexpr unsigned char kApostrophe = 0x7D;
  constexpr unsigned char kNewLine = 0x15;
  constexpr unsigned char kLineFeed = 0x25;
  constexpr unsigned char kReturn = 0x0D;
  constexpr unsigned char kTab = 0x05;
  constexpr unsigned char kBlank = 0x40;
  if (lists_) {
    if (MaySeparateInEbcdic(c) && ++listed_ > most_listed_) problem_ = Problem::kDeclarations;
  } else if (static_cast<char>(c) == kEbcdicDoctype[matched_]) {
    lists_ = ++matched_ == kEbcdicDoctype.size();
  } else {
    matched_ = static_cast<char>(c) == kEbcdicDoctype[0] ? 1 : 0;
  }
  switch (c) {
    case 0:
      problem_ = Problem::kNul;
      return;
    case kLess:
      attributes_ = 0;
      break;
    case kEquals:
      after_equals_ = true;
      return;
    case kNewLine:
    case kLineFeed:
      ++line_;
      return;
    case kReturn:
    case kTab:
    case kBlank:
      return;
    case kQuote:
    case kApostrophe:
      if (after_equals_) CountAttribute();
      break;
    default:
      break;
  }
  after_equals_ = false;
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
  // Another declaration: what its quotation marks hold is no markup yet.
  state_ = State::kDeclaration;
  TakeMarkup(c);
}

}  // namespace svmscore
