// The records by which a document lets its users check their installation.
// [one thread] for each document; Judge [any thread].
#ifndef HOST_OUTPUT_VERIFICATION_RECORDS_H_
#define HOST_OUTPUT_VERIFICATION_RECORDS_H_

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/output/note.h"
#include "host/text/api.h"
#include "host/text/field_types.h"
#include "host/transform/table/inline_table.h"
#include "host/transform/value/value.h"

namespace svmscore::output {

// How far a number may be from the expected one.
struct Allowance {
  double precision = 1e-6;        // relative to the expected number; the bound itself agrees
  double zero_threshold = 1e-16;  // two numbers of at most this size agree
};

struct VerificationColumn {
  const xercesc::DOMElement* element = nullptr;
  std::string field;   // of the mining schema, an output field, or a derived field
  std::string column;  // the name of its cells
  Allowance allowance;
};

struct Verification {
  const xercesc::DOMElement* element = nullptr;
  const xercesc::DOMElement* table = nullptr;
  std::vector<VerificationColumn> columns;
  std::vector<Note> notes;  // on counts that differ from the content
};

// The ModelVerification of the document's model; nothing where it has none.
// Owns: the caller. Lives: its elements, as long as the document. Fails: SSException where it
// cannot be read; std::bad_alloc.
SVMSCORE_HOST_API std::optional<Verification> ReadVerification(
    const xercesc::DOMDocument* document);

// Calls `visit` for every record in document order, with the cells that it has. Their columns are
// positions among those of `verification`.
// Lives: cells, for the call of `visit`. Fails: SSException for a record that cannot be read; what
// `visit` throws; std::bad_alloc.
SVMSCORE_HOST_API void ForEachRecord(const Verification& verification,
                                     const std::function<void(transform::Cells)>& visit);

// How an actual value compares with an expected one.
struct Judgement {
  bool agrees = false;
  std::optional<double> deviation;  // of two numbers, relative to the expected one; may be infinite
  bool near_zero = false;  // the expected number counts as zero, and the actual one does not
};

// `expected` is a text of a document or file, read as the type of the actual value. Numbers agree
// where both are within the zero threshold, or where |actual - expected| <= precision * |expected|.
// Other values agree where they are equal, and NaN agrees with NaN. A missing or invalid value
// agrees with nothing. Fails: std::bad_alloc.
SVMSCORE_HOST_API Judgement Judge(std::string_view expected, const transform::Value& actual,
                                  const Allowance& allowance);

}  // namespace svmscore::output

#endif  // HOST_OUTPUT_VERIFICATION_RECORDS_H_
