// Conversion between the parser's UTF-16 texts and UTF-8.
// [any thread], ElementText [one thread] for each document. Owns: the caller. Lives: arguments for
// the call. Fails: std::bad_alloc.
#ifndef HOST_XML_TRANSCODER_H_
#define HOST_XML_TRANSCODER_H_

#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/text/api.h"

namespace svmscore {

// UTF-8 of a NUL-terminated UTF-16 text; empty for null.
SVMSCORE_HOST_API std::string ToUtf8(const XMLCh* text);
SVMSCORE_HOST_API std::string ToUtf8(const XMLCh* text, std::size_t size);
SVMSCORE_HOST_API std::basic_string<XMLCh> ToUtf16(const std::string& text);
// The text content of an element as UTF-8: its texts and CDATA sections and those of the elements
// and entity references inside it, without comments. Unlike the DOM's own getTextContent it uses
// none of the document's memory.
SVMSCORE_HOST_API std::string ElementText(const xercesc::DOMNode* element);

}  // namespace svmscore

namespace MCZandor_850 {

class SVMSCORE_HOST_API ZandorTranscoder {
 public:
  // The local encoding is UTF-8, whatever encoding the document had: the parser has already
  // converted it.
  explicit ZandorTranscoder(const std::string& encoding);
  std::string transcodeTo(const XMLCh* text) const { return svmscore::ToUtf8(text); }
  const std::string& GetEncoding() const { return encoding_; }

 private:
  std::string encoding_;
};

}  // namespace MCZandor_850

#endif  // HOST_XML_TRANSCODER_H_
