// A document, opened as far as it can be read.
#ifndef TOOLS_DOCTOR_OPENED_DOCUMENT_H_
#define TOOLS_DOCTOR_OPENED_DOCUMENT_H_

#include <optional>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "tools/base/document_source.h"
#include "tools/findings/finding_list.h"

namespace svmscore::tools {

struct OpenedDocument {
  std::optional<LoadedModel> loaded;     // nothing if no model can be made from the document
  std::optional<PmmlDocument> document;  // the document itself, if there is no model
  std::vector<Finding> findings;         // of the intake
  std::optional<Finding> refused;        // why score refuses it
  int refusal_code = 0;                  // of its message; 0 if it does not

  bool IsRead() const { return loaded || document; }
  // REQUIRES: the document is read.
  const PmmlDocument& Document() const { return loaded ? loaded->document : *document; }
};

// For a file that cannot be read or is not XML there is neither model nor document, only the
// refusal. [one thread] for each source. Owns: the caller. Fails: SSException if the file can be
// read once but not again; std::bad_alloc. A refusal is in the result.
OpenedDocument OpenDocument(const Plugin& plugin, DocumentSource& source);

}  // namespace svmscore::tools

#endif  // TOOLS_DOCTOR_OPENED_DOCUMENT_H_
