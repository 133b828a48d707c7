// The file of a model, which some commands read more than once.
#ifndef TOOLS_BASE_DOCUMENT_SOURCE_H_
#define TOOLS_BASE_DOCUMENT_SOURCE_H_

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "host/xml/document.h"

namespace svmscore::tools {

// A pipe gives its content only once, so it is kept, and so is what a compressed file holds; another
// file is read again each time. [one thread] for each object. Lives: what is returned, as long as
// this object; a document is independent of it. Fails: SSException, std::bad_alloc; Path never.
class DocumentSource {
 public:
  DocumentSource(std::string path, const Limits& limits)
      : path_(std::move(path)), limits_(limits) {}

  const std::string& Path() const { return path_; }
  PmmlDocument Parse();
  // The bytes of the document, decompressed; later calls of Parse read exactly these.
  const std::string& Text();

 private:
  // What is left of the file where it is compressed, with what `beginning` has of it.
  std::optional<std::string> Decompress(std::istream& file, std::string_view beginning) const;

  std::string path_;
  Limits limits_;
  std::optional<std::string> text_;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_DOCUMENT_SOURCE_H_
