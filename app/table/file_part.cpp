#include "app/table/file_part.h"

#include <charconv>

namespace svmscore::app {

std::optional<FilePart> FilePartIn(std::string_view text) {
  FilePart part;
  const char* end = text.data() + text.size();
  const auto number = std::from_chars(text.data(), end, part.number);
  if (number.ec != std::errc() || number.ptr == end || *number.ptr != '/') return std::nullopt;
  const auto count = std::from_chars(number.ptr + 1, end, part.count);
  if (count.ec != std::errc() || count.ptr != end) return std::nullopt;
  const bool is_part =
      part.number > 0 && part.number <= part.count && part.count <= FilePart::kMost;
  if (!is_part) return std::nullopt;
  return part;
}

}  // namespace svmscore::app
