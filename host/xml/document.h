// A PMML document in memory, parsed safely.
#ifndef HOST_XML_DOCUMENT_H_
#define HOST_XML_DOCUMENT_H_

#include <iosfwd>
#include <memory>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/text/api.h"
#include "host/model/ss_exception.h"
#include "host/xml/limits.h"

namespace svmscore {

// Starts Xerces-C on first use and keeps it for the process. Any thread. Where memory runs out in
// the first call, this and every later one throws std::bad_alloc.
SVMSCORE_HOST_API void StartXerces();

// Parses without validation, DTD loading, external entities or network, and within limits, which
// travel with the document: LimitsOf(Dom()). Failures are SSExceptions (260301, 260302, 260303,
// 260304, 260318) whose place names the line where there is one.
class SVMSCORE_HOST_API PmmlDocument {
 public:
  static PmmlDocument FromFile(const std::string& path, const Limits& limits = {});
  static PmmlDocument FromStream(std::istream& stream, const std::string& name,
                                 const Limits& limits = {});
  static PmmlDocument FromText(const std::string& text, const std::string& name,
                               const Limits& limits = {});
  ~PmmlDocument();
  PmmlDocument(PmmlDocument&&) noexcept;
  PmmlDocument& operator=(PmmlDocument&&) noexcept;

  xercesc::DOMDocument* Dom() const;
  const std::string& Name() const;

  // The line on which the element's start tag ends, from 1; 0 for an element that the file does
  // not hold.
  long LineOf(const xercesc::DOMElement* element) const;
  // Fixes the lines of all elements. Call before the tree is changed; later calls do nothing.
  void FixLines() const;
  // Turns the exception's element into words: element NAME, line N.
  void Locate(MCZandor_850::SSException& error) const;

 private:
  struct Parsed;
  explicit PmmlDocument(std::unique_ptr<Parsed> parsed);
  std::unique_ptr<Parsed> parsed_;
};

}  // namespace svmscore

#endif  // HOST_XML_DOCUMENT_H_
