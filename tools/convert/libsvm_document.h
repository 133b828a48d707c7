// From a model of LIBSVM to a PMML document.
#ifndef TOOLS_CONVERT_LIBSVM_DOCUMENT_H_
#define TOOLS_CONVERT_LIBSVM_DOCUMENT_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/convert/conversion_error.h"

namespace svmscore::tools {

struct LibsvmOptions {
  // The text of the file with which svm-scale scaled the data of the training.
  std::optional<std::string_view> ranges;
  // Of the features 1, 2, ...; empty: x1, x2, ...
  std::vector<std::string> names;
  // In the order of the model's line `label`; of a one-class model, for 1 and -1; empty: the
  // model's own.
  std::vector<std::string> labels;
};

// The document that scores as svm-predict does with the model, whose text this is; docs/convert.md
// says how. [any thread] Fails: ConversionError, std::bad_alloc.
std::string LibsvmToPmml(std::string_view model, const LibsvmOptions& options);

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_LIBSVM_DOCUMENT_H_
