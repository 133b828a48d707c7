// A place in a document.
#ifndef HOST_MODEL_PLACE_H_
#define HOST_MODEL_PLACE_H_

#include <string>

namespace svmscore {

struct Place {
  std::string element;  // its name; empty where no element is meant
  long line = 0;        // of its start tag; 0 if it is not in the file
  bool operator==(const Place&) const = default;
};

}  // namespace svmscore

#endif  // HOST_MODEL_PLACE_H_
