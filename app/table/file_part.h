// A part of a table that several runs share.
#ifndef APP_TABLE_FILE_PART_H_
#define APP_TABLE_FILE_PART_H_

#include <cstdint>
#include <optional>
#include <string_view>

namespace svmscore::app {

// The part `number`, from 1, of `count`. A part has the rows that begin in its share of the bytes.
struct FilePart {
  static constexpr std::uint64_t kMost = 1'000'000;

  std::uint64_t number = 1;
  std::uint64_t count = 1;

  bool IsFirst() const { return number == 1; }
  bool IsLast() const { return number == count; }
  // Where of `bytes` bytes the share of this part begins.
  std::uint64_t Begin(std::uint64_t bytes) const { return Share(number - 1, bytes); }
  // Where that of the next part begins.
  std::uint64_t End(std::uint64_t bytes) const { return Share(number, bytes); }

 private:
  // floor(bytes * parts / count), which may be too long to multiply.
  std::uint64_t Share(std::uint64_t parts, std::uint64_t bytes) const {
    return bytes / count * parts + bytes % count * parts / count;
  }
};

// The part that a text such as "2/8" names; nothing for any other text.
std::optional<FilePart> FilePartIn(std::string_view text);

}  // namespace svmscore::app

#endif  // APP_TABLE_FILE_PART_H_
