// What a document calls the features, the target and its categories.
#ifndef TOOLS_CONVERT_DOCUMENT_NAMES_H_
#define TOOLS_CONVERT_DOCUMENT_NAMES_H_

#include <optional>
#include <string>
#include <vector>

#include "tools/convert/libsvm_document.h"
#include "tools/convert/libsvm_model.h"
#include "tools/convert/scale_ranges.h"

namespace svmscore::tools {

struct DocumentNames {
  std::vector<std::string> features;
  std::vector<std::string> scaled;  // of the features too; empty without ranges
  std::string target;
  std::vector<std::string> labels;  // empty for a regression
};

// No two fields have one name. [any thread] Fails: ConversionError of the names or the labels,
// std::bad_alloc.
DocumentNames NamesOf(const LibsvmModel& model, const std::optional<ScaleRanges>& ranges,
                      const LibsvmOptions& options);

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_DOCUMENT_NAMES_H_
