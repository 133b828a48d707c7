// The file of a model, which some commands read more than once.
#ifndef TOOLS_BASE_DOCUMENT_SOURCE_H_
#define TOOLS_BASE_DOCUMENT_SOURCE_H_

#include <optional>
#include <string>

#include "host/xml/document.h"

namespace svmscore::tools {

// A pipe gives its content once only, so that is kept; a file is read anew each time. Everything
// that fails is an SSException.
class DocumentSource {
 public:
  DocumentSource(std::string path, const Limits& limits)
      : path_(std::move(path)), limits_(limits) {}

  const std::string& Path() const { return path_; }
  PmmlDocument Parse();
  // The bytes of the document; what is parsed afterwards is exactly these.
  const std::string& Text();

 private:
  std::string path_;
  Limits limits_;
  std::optional<std::string> text_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_DOCUMENT_SOURCE_H_
