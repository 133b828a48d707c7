#include "host/pmml/attribute_count.h"

#include <algorithm>
#include <cstring>

namespace svmscore {
namespace {

constexpr std::string_view kComment = "!--";
constexpr std::string_view kCdata = "![CDATA[";

}  // namespace

void AttributeCount::DetectUnits(const unsigned char* bytes, std::size_t size) {
  unit_ = 1;
  if (size < 4) return;
  const unsigned char* b = bytes;
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

void AttributeCount::Read(const void* bytes, std::size_t size) {
  const auto* at = static_cast<const unsigned char*>(bytes);
  const auto* const end = at + size;
  if (unit_ == 0 && size > 0) DetectUnits(at, size);
  while (at != end && !beyond_) {
    if (unit_ == 1 && state_ == State::kText) {
      // Most of a document is text.
      const auto* stop = static_cast<const unsigned char*>(
          std::memchr(at, '<', static_cast<std::size_t>(end - at)));
      if (stop == nullptr) stop = end;
      line_ += static_cast<std::uint64_t>(std::count(at, stop, '\n'));
      at = stop;
      if (at == end) return;
    }
    const char32_t byte = *at++;
    const std::size_t shift = 8 * (big_endian_ ? unit_ - 1 - taken_ : taken_);
    partial_ |= byte << shift;
    if (++taken_ < unit_) continue;
    Take(partial_);
    taken_ = 0;
    partial_ = 0;
  }
}

void AttributeCount::Read(const XMLCh* text, std::size_t size) {
  for (std::size_t i = 0; i < size && !beyond_; ++i) Take(text[i]);
}

void AttributeCount::Take(char32_t c) {
  if (c == U'\n') ++line_;
  switch (state_) {
    case State::kText:
      if (c != U'<') return;
      state_ = State::kOpened;
      matched_ = 0;
      count_ = 0;
      return;
    case State::kOpened:
      return TakeOpened(c);
    case State::kTag:
      if (c == U'>') state_ = State::kText;
      if (c != U'"' && c != U'\'') return;
      state_ = State::kValue;
      quote_ = c;
      beyond_ = ++count_ > most_;
      return;
    case State::kValue:
      if (c == quote_) state_ = State::kTag;
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

// What follows a "<".
void AttributeCount::TakeOpened(char32_t c) {
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
  if (kComment.starts_with(seen) || kCdata.starts_with(seen)) {
    if (seen != kComment && seen != kCdata) return;
    section_end_ = seen == kComment ? "-->" : "]]>";
    state_ = State::kSection;
    matched_ = 0;
    return;
  }
  state_ = State::kText;  // a declaration: it may hold tags in quotation marks, which are none yet
}

}  // namespace svmscore
