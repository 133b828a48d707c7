// Where in a document something stands.
#ifndef HOST_MODEL_PLACE_H_
#define HOST_MODEL_PLACE_H_

#include <string>

namespace svmscore {

struct Place {
  std::string element;  // its name; empty where no element is meant
  long line = 0;        // of its start tag; 0 where the file does not hold it
  bool operator==(const Place&) const = default;
};

}  // namespace svmscore

#endif  // HOST_MODEL_PLACE_H_
