// Why a model of another program cannot be converted.
#ifndef TOOLS_CONVERT_CONVERSION_ERROR_H_
#define TOOLS_CONVERT_CONVERSION_ERROR_H_

#include <cstddef>
#include <string>
#include <utility>

#include "tools/base/bad_input.h"

namespace svmscore::tools {

// What the conversion reads.
enum class ConversionInput { kModel, kRanges, kNames, kLabels };

// what() is the line, what is wrong, and what to do, without the name of the file.
class ConversionError : public BadDocument {
 public:
  // `line` is 0 where it is none in particular.
  ConversionError(ConversionInput input, std::size_t line, const std::string& sentence,
                  const std::string& remedy)
      : BadDocument((line == 0 ? "" : "line " + std::to_string(line) + ": ") + sentence + "; " +
                    remedy),
        input_(input),
        line_(line),
        sentence_(sentence),
        remedy_(remedy) {}

  ConversionInput Input() const { return input_; }
  std::size_t Line() const { return line_; }
  const std::string& Sentence() const { return sentence_; }
  const std::string& Remedy() const { return remedy_; }

 private:
  ConversionInput input_;
  std::size_t line_;
  std::string sentence_;
  std::string remedy_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_CONVERSION_ERROR_H_
