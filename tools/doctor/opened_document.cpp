#include "tools/doctor/opened_document.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "host/model/message_codes.h"
#include "tools/base/error_text.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::SSException;

constexpr std::string_view kElement = "element ";
constexpr std::string_view kComma = ", ";
constexpr std::string_view kLine = "line ";

Finding Refusal(const SSException& error) {
  Finding finding{"refused", {}, 0, Explain(error)};
  const std::string& whole = error.GetPlace();
  std::string_view place = whole;
  if (place.starts_with(kElement)) {
    place.remove_prefix(kElement.size());
    const std::size_t comma = std::min(place.find(kComma), place.size());
    finding.element = place.substr(0, comma);
    place.remove_prefix(std::min(comma + kComma.size(), place.size()));
  }
  if (place.starts_with(kLine)) {
    place.remove_prefix(kLine.size());
    std::from_chars(place.data(), place.data() + place.size(), finding.line);
  }
  return finding;
}

// Makes the document readable without its model. One of an unknown version is read as the newest.
void ReadAlone(DocumentSource& source, OpenedDocument& opened) {
  for (const char* version : {"", "4.4"}) {
    opened.document = source.Parse();
    opened.document->FixLines();
    auto* root = opened.document->Dom()->getDocumentElement();
    if (*version != '\0' && root != nullptr) root->setAttribute(u"version", u"4.4");
    try {
      opened.intake = MakeReadable(*opened.document, IntakeMode::kTolerate);
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
    opened.refused = Refusal(error);
    return opened;
  }
  try {
    opened.loaded = LoadModel(plugin, *std::exchange(opened.document, std::nullopt));
  } catch (const SSException& error) {
    opened.refused = Refusal(error);
  }
  if (opened.refused) {
    try {
      opened.loaded = LoadModel(plugin, source.Parse(), LoadChecks::kTolerate);
    } catch (const SSException&) {
      ReadAlone(source, opened);
    }
  }
  if (opened.loaded) opened.intake = opened.loaded->intake;
  return opened;
}

}  // namespace svmscore::tools
