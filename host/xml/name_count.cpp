#include "host/xml/name_count.h"

namespace svmscore {
namespace {

bool IsDeclaration(std::u16string_view name) {
  return name == u"xmlns" || name.starts_with(u"xmlns:");
}

}  // namespace

void NameCount::Open(const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t count) {
  ++depth_;
  std::uint64_t declarations = 0;
  for (XMLSize_t i = 0; i < count; ++i) {
    const xercesc::XMLAttr& attribute = *attributes.elementAt(i);
    const std::u16string_view name = attribute.getQName();
    if (!names_.contains(name)) names_.emplace(name);
    if (!IsDeclaration(name)) continue;
    ++declarations;
    const std::u16string_view uri = attribute.getValue();
    if (!namespaces_.contains(uri)) namespaces_.emplace(uri);
  }
  if (declarations == 0) return;
  declaring_.push_back({depth_, declarations});
  in_force_ += declarations;
}

void NameCount::Close() {
  if (!declaring_.empty() && declaring_.back().depth == depth_) {
    in_force_ -= declaring_.back().declarations;
    declaring_.pop_back();
  }
  --depth_;
}

}  // namespace svmscore
