#include "host/xml/limits.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <mutex>
#include <new>

#include "host/model/message_codes.h"

namespace svmscore {
namespace {

constexpr Limits kUsual;

// The documents with other limits than the usual ones. Kept apart from the documents because their
// library allocates when it frees a document that has something attached. Never destroyed:
// documents may still be freed while the process ends.
std::mutex unusual_mutex;
std::map<const xercesc::DOMDocument*, const Limits*>& Unusual() {
  using Map = std::map<const xercesc::DOMDocument*, const Limits*>;
  alignas(Map) static std::byte storage[sizeof(Map)];
  static Map& map = *new (storage) Map;
  return map;
}

constexpr std::array kNames = {
    LimitName{"document-size", "the size of the document in bytes", &Limits::document_size},
    LimitName{"element-depth", "the depth of elements", &Limits::element_depth},
    LimitName{"attributes", "the number of attributes of an element, or of a DOCTYPE,",
              &Limits::attributes},
    LimitName{"declarations",
              "the number of declarations of a DOCTYPE, with a tenth of the names that they list,",
              &Limits::declarations},
    LimitName{"element-names", "the number of different names of elements", &Limits::element_names},
    LimitName{"attribute-names", "the number of different names of attributes",
              &Limits::attribute_names},
    LimitName{"namespaces", "the number of namespaces", &Limits::namespaces},
    LimitName{"attribute-length", "the length of an attribute", &Limits::attribute_length},
    LimitName{"entity-expansion", "the length of the text that entities and declared defaults add",
              &Limits::entity_expansion},
    LimitName{"vectors", "the number of vectors", &Limits::vectors},
    LimitName{"entries", "the number of entries in all vectors", &Limits::entries},
    LimitName{"implied-entries", "the number of entries that vectors have without listing them",
              &Limits::implied_entries},
    LimitName{"table-rows", "the number of rows of an inline table", &Limits::table_rows},
    LimitName{"columns", "the number of cells in a row", &Limits::columns},
    LimitName{"cell-length", "the length of a cell in bytes", &Limits::cell_length},
    LimitName{"row-length", "the length of a row in bytes", &Limits::row_length},
    LimitName{"table-size", "the size in bytes of a table that is held in memory",
              &Limits::table_size},
};

}  // namespace

std::span<const LimitName> LimitNames() {
  return kNames;
}

const LimitName& LimitNameOf(Limit limit) {
  return *std::find_if(kNames.begin(), kNames.end(),
                       [limit](const LimitName& name) { return name.limit == limit; });
}

MCZandor_850::SSException BeyondLimit(const Limits& limits, Limit limit) {
  const LimitName& name = LimitNameOf(limit);
  MCZandor_850::SSException error(MCZandor_850::gErrorFormater);
  error.PutErrorMessage(code::kBeyondLimit, name.about, std::to_string(limits.*limit), name.name);
  return error;
}

void AttachLimits(const xercesc::DOMDocument* document, const Limits& limits) {
  if (limits == kUsual) return;
  const std::lock_guard<std::mutex> lock(unusual_mutex);
  Unusual()[document] = &limits;
}

void DetachLimits(const xercesc::DOMDocument* document) noexcept {
  const std::lock_guard<std::mutex> lock(unusual_mutex);
  Unusual().erase(document);
}

const Limits& LimitsOf(const xercesc::DOMDocument* document) {
  const std::lock_guard<std::mutex> lock(unusual_mutex);
  const auto found = Unusual().find(document);
  return found == Unusual().end() ? kUsual : *found->second;
}

void CheckLimit(const xercesc::DOMElement* element, Limit limit, std::uint64_t count) {
  const Limits& limits = LimitsOf(element->getOwnerDocument());
  if (count <= limits.*limit) return;
  MCZandor_850::SSException error = BeyondLimit(limits, limit);
  error.SetElement(element);
  throw error;
}

}  // namespace svmscore
