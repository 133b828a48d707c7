// How many attributes the tags of a document have, told from its bytes.
#ifndef HOST_PMML_ATTRIBUTE_COUNT_H_
#define HOST_PMML_ATTRIBUTE_COUNT_H_

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace svmscore {

// The parser compares the attributes of a tag with each other before it hands any of them out. This
// counts them before: the equals signs that a quotation mark follows, since the last "<". It holds
// for every encoding in which ASCII characters are their bytes, with or without zeros beside them.
class AttributeCount {
 public:
  // The next bytes of the document.
  void Read(const void* bytes, std::size_t size) {
    const char* at = static_cast<const char*>(bytes);
    const char* const end = at + size;
    while (at != end) {
      if (after_equals_) {
        at = std::find_if(at, end, [](char c) { return std::strchr(" \t\r\n", c) == nullptr; });
        if (at == end) return;
        after_equals_ = false;
        if (*at == '"' || *at == '\'') most_ = std::max(most_, ++count_);
      }
      const auto* equals =
          static_cast<const char*>(std::memchr(at, '=', static_cast<std::size_t>(end - at)));
      const char* const stop = equals == nullptr ? end : equals;
      if (std::find(at, stop, '<') != stop) count_ = 0;
      after_equals_ = equals != nullptr;
      at = after_equals_ ? stop + 1 : stop;
    }
  }
  // Of the tag that has most.
  std::uint64_t Most() const { return most_; }

 private:
  std::uint64_t count_ = 0;
  std::uint64_t most_ = 0;
  bool after_equals_ = false;
};

}  // namespace svmscore

#endif  // HOST_PMML_ATTRIBUTE_COUNT_H_
