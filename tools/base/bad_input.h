// Exceptions for input that cannot be used. What a translator refuses is an SSException.
#ifndef TOOLS_BASE_BAD_INPUT_H_
#define TOOLS_BASE_BAD_INPUT_H_

#include <stdexcept>

namespace svmscore::tools {

// Cases or expected values that cannot be read, or do not fit the model or each other.
class BadCases : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A document that cannot be used for what is asked.
class BadDocument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_BAD_INPUT_H_
