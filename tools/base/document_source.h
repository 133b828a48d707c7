// The file of a model, which some commands read more than once.
#ifndef TOOLS_BASE_DOCUMENT_SOURCE_H_
#define TOOLS_BASE_DOCUMENT_SOURCE_H_

#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "host/model/ss_exception.h"
#include "host/xml/document.h"

namespace svmscore::tools {

// A pipe gives its content only once, so it is kept, and so is what a compressed file holds;
// another file is read again each time. [one thread] for each object. Lives: what is returned, as
// long as this object; a document is independent of it. Fails: SSException, std::bad_alloc; Path
// never.
class DocumentSource {
 public:
  DocumentSource(std::string path, const Limits& limits)
      : path_(std::move(path)), limits_(limits) {}
  // A document from memory; `name` is how messages call it.
  DocumentSource(std::string name, std::string text, const Limits& limits)
      : path_(std::move(name)), limits_(limits), text_(std::move(text)) {}

  const std::string& Path() const { return path_; }
  PmmlDocument Parse(Arrays arrays = Arrays::kAsTexts);
  // The bytes of the document, decompressed; later calls of Parse read exactly these.
  const std::string& Text();
  // The first bytes, decompressed; none where they cannot be read, or not a second time.
  std::string Beginning() const;

 private:
  void RefuseFolder() const;
  // What is left of the file where it is compressed, with what `beginning` has of it.
  std::optional<std::string> Decompress(std::istream& file, std::string_view beginning) const;

  std::string path_;
  Limits limits_;
  std::optional<std::string> text_;
};

// What error_text.h says of the error, and what the file is where it is no PMML at all.
std::string Explain(const MCZandor_850::SSException& error, const DocumentSource& source);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_DOCUMENT_SOURCE_H_
