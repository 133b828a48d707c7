// Exceptions for input that cannot be used. What a translator refuses is an SSException.
#ifndef TOOLS_BASE_BAD_INPUT_H_
#define TOOLS_BASE_BAD_INPUT_H_

#include <stdexcept>
#include <string>
#include <utility>

namespace svmscore::tools {

// Cases or expected values that cannot be read, or do not fit the model or each other.
class BadCases : public std::runtime_error {
 public:
  explicit BadCases(const std::string& sentence, std::string column = {})
      : std::runtime_error(sentence), column_(std::move(column)) {}
  // The name of the column, if it is about one.
  const std::string& Column() const { return column_; }

 private:
  std::string column_;
};

// A document that cannot be used for what is asked.
class BadDocument : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_BAD_INPUT_H_
