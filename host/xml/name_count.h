// How many different names the attributes of a document have, and how many namespaces it uses.
#ifndef HOST_XML_NAME_COUNT_H_
#define HOST_XML_NAME_COUNT_H_

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <xercesc/framework/XMLAttr.hpp>
#include <xercesc/util/RefVectorOf.hpp>

namespace svmscore {

// The parser keeps both in tables that it searches from end to end, so its time grows with the
// square of their number.
class NameCount {
 public:
  // Tell of a start tag with the first `count` of these attributes, and of the end of its element.
  void Open(const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count);
  void Close();

  // Different ones so far, including prefixes.
  std::uint64_t AttributeNames() const { return names_.size(); }
  // Different ones so far, or the declarations of all open elements if there are more of those.
  std::uint64_t Namespaces() const {
    return std::max<std::uint64_t>(namespaces_.size(), in_force_);
  }

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::u16string_view text) const {
      return std::hash<std::u16string_view>()(text);
    }
  };
  using Texts = std::unordered_set<std::u16string, Hash, std::equal_to<>>;
  struct Declaring {
    std::uint64_t depth;
    std::uint64_t declarations;
  };

  Texts names_;
  Texts namespaces_;
  std::uint64_t depth_ = 0;
  std::uint64_t in_force_ = 0;
  std::vector<Declaring> declaring_;  // the open elements that declare namespaces
};

}  // namespace svmscore

#endif  // HOST_XML_NAME_COUNT_H_
