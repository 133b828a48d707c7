// Where the parts of a document that calibration changes are in its bytes.
#ifndef TOOLS_CALIBRATE_DOCUMENT_PLACES_H_
#define TOOLS_CALIBRATE_DOCUMENT_PLACES_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace svmscore::tools {

// The bytes of an element: [begin, end), its content from `inside` on. An element without content
// is <E/> where inside == end.
struct ElementPlace {
  std::size_t begin = 0;
  std::size_t inside = 0;
  std::size_t end = 0;
  std::string prefix;             // of its name: empty, or a namespace prefix and a colon
  std::vector<ElementPlace> own;  // its children that are Extensions of this system
};

struct DocumentPlaces {
  ElementPlace root;
  std::optional<ElementPlace> header;
  std::vector<ElementPlace> machines;  // of the model that is scored, in document order
};

// `document` are the bytes of a document that a model was loaded from, `name` what messages call
// it. Of the header, `own` are the extensions with the name "calibration". Throws a BadDocument
// where the encoding is one that this program does not write, and where one of the parts comes out
// of an entity. [any thread] Owns: the caller.
DocumentPlaces FindPlaces(const std::string& document, const std::string& name);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_DOCUMENT_PLACES_H_
