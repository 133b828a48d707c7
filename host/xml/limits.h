// How much a document or a table of cases may ask for before it is refused.
#ifndef HOST_XML_LIMITS_H_
#define HOST_XML_LIMITS_H_

#include <cstdint>
#include <span>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/model/ss_exception.h"
#include "host/text/api.h"

namespace svmscore {

// Each is the largest number that is accepted. docs/reliability.md says what they are for.
struct Limits {
  std::uint64_t document_size = std::uint64_t{1} << 30;  // bytes
  std::uint64_t element_depth = 2000;                    // the root has depth 1
  std::uint64_t attributes = 1000;                       // of one element, or declared by a DOCTYPE
  std::uint64_t declarations = 2000;                     // of a DOCTYPE, and a tenth of their names
  std::uint64_t element_names = 50000;                   // different ones
  std::uint64_t attribute_names = 10000;                 // different ones
  std::uint64_t namespaces = 1000;  // different ones, and declarations in force at once
  std::uint64_t attribute_length = std::uint64_t{1} << 20;  // UTF-16 units
  std::uint64_t entity_expansion = 2000000;                 // UTF-16 units, of a document
  std::uint64_t vectors = 10000000;                         // VectorInstance elements
  std::uint64_t entries = 250000000;                        // of all vectors together
  std::uint64_t implied_entries = 10000000;                 // those that no text spells out
  std::uint64_t table_rows = 10000000;                      // of one InlineTable
  std::uint64_t columns = 1000000;                          // cells of one row of a CSV file
  std::uint64_t cell_length = std::uint64_t{8} << 20;       // bytes
  std::uint64_t row_length = std::uint64_t{16} << 20;       // bytes
  std::uint64_t table_size = std::uint64_t{1} << 30;        // bytes, of a table held in memory

  bool operator==(const Limits&) const = default;
};

using Limit = std::uint64_t Limits::*;

struct LimitName {
  const char* name;   // what the program's users call it
  const char* about;  // what is limited, as the beginning of a sentence
  Limit limit;
};
// [any thread] Lives: as long as the process. Fails: never.
SVMSCORE_HOST_API std::span<const LimitName> LimitNames();
SVMSCORE_HOST_API const LimitName& LimitNameOf(Limit limit);

// The exception for a document that exceeds a limit (260318).
// [any thread] Fails: std::bad_alloc.
SVMSCORE_HOST_API MCZandor_850::SSException BeyondLimit(const Limits& limits, Limit limit);

// Makes LimitsOf return `limits` for the document until they are detached, which must happen before
// either of the two goes.
// [any thread] Lives: both, until detached. Fails: std::bad_alloc; DetachLimits never.
void AttachLimits(const xercesc::DOMDocument* document, const Limits& limits);
void DetachLimits(const xercesc::DOMDocument* document) noexcept;
// The limits with which the document was parsed; the usual ones for a document from elsewhere.
// [any thread] Lives: as long as the document. Fails: never.
SVMSCORE_HOST_API const Limits& LimitsOf(const xercesc::DOMDocument* document);

// Throws BeyondLimit at `element` where `count` exceeds the limit of its document.
// [any thread] Fails: SSException (260318), std::bad_alloc.
SVMSCORE_HOST_API void CheckLimit(const xercesc::DOMElement* element, Limit limit,
                                  std::uint64_t count);

}  // namespace svmscore

#endif  // HOST_XML_LIMITS_H_
