#include "tools/doctor/opened_document.h"

#include <utility>

#include "host/model/message_codes.h"
#include "tools/base/error_text.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::SSException;

void Refuse(const SSException& error, const DocumentSource& source, OpenedDocument& opened) {
  opened.refused = {"refused", error.Where(), Explain(error, source)};
  opened.refusal_code = error.GetErrorCode();
}

// Makes the document readable without its model. A document of an unknown version is read as the
// newest.
void ReadAlone(DocumentSource& source, OpenedDocument& opened) {
  for (const char* version : {"", "4.4"}) {
    opened.document = source.Parse();
    opened.document->FixLines();
    auto* root = opened.document->Dom()->getDocumentElement();
    if (*version != '\0' && root != nullptr) root->setAttribute(u"version", u"4.4");
    try {
      opened.findings = MakeReadable(*opened.document, IntakeMode::kTolerate);
      return;
    } catch (const SSException& error) {
      if (error.GetErrorCode() != code::kUnknownVersion) return;
    }
  }
}

}  // namespace

OpenedDocument OpenDocument(const Plugin& plugin, DocumentSource& source) {
  OpenedDocument opened;
  try {
    opened.document = source.Parse();
  } catch (const SSException& error) {
    Refuse(error, source, opened);
    return opened;
  }
  try {
    // As score does, which reads a document a second time if the first reading fails.
    opened.loaded = LoadModel(plugin, [&] {
      return opened.document ? *std::exchange(opened.document, std::nullopt) : source.Parse();
    });
  } catch (const SSException& error) {
    Refuse(error, source, opened);
  }
  if (opened.refused) {
    try {
      opened.loaded = LoadModel(plugin, source.Parse(), LoadChecks::kTolerate);
    } catch (const SSException&) {
      ReadAlone(source, opened);
    }
  }
  if (opened.loaded) opened.findings = opened.loaded->findings;
  return opened;
}

}  // namespace svmscore::tools
