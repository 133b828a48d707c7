// A PMML document in memory, parsed safely.
#ifndef HOST_XML_DOCUMENT_H_
#define HOST_XML_DOCUMENT_H_

#include <iosfwd>
#include <memory>
#include <string>

#include <xercesc/dom/DOM.hpp>

#include "host/model/ss_exception.h"
#include "host/text/api.h"
#include "host/xml/array_numbers.h"
#include "host/xml/limits.h"

namespace svmscore {

// Starts Xerces-C on first use and keeps it for the process.
// [any thread] Fails: std::bad_alloc where memory runs out in the first call, and then in every
// later one.
SVMSCORE_HOST_API void StartXerces();

// Parses without validation, DTD loading, external entities or network, and within limits, which
// stay with the document: LimitsOf(Dom()).
// [one thread] for each document. Owns: the document everything that it returns. Lives: that, as
// long as the document or the one it is moved into; arguments for the call. Fails: functions that
// read, by SSException (260301, 260302, 260303, 260304, 260318) whose place names the line where
// there is one; all but moves, Dom and Name by std::bad_alloc.
class SVMSCORE_HOST_API PmmlDocument {
 public:
  static PmmlDocument FromFile(const std::string& path, const Limits& limits = {});
  static PmmlDocument FromStream(std::istream& stream, const std::string& name,
                                 const Limits& limits = {});
  static PmmlDocument FromText(const std::string& text, const std::string& name,
                               const Limits& limits = {});
  // The same, for those who read arrays as ArrayNumbers says: LoadModel, and what it calls.
  static PmmlDocument FromFile(const std::string& path, const Limits& limits, Arrays arrays);
  static PmmlDocument FromStream(std::istream& stream, const std::string& name,
                                 const Limits& limits, Arrays arrays);
  static PmmlDocument FromText(const std::string& text, const std::string& name,
                               const Limits& limits, Arrays arrays);
  ~PmmlDocument();
  PmmlDocument(PmmlDocument&&) noexcept;
  PmmlDocument& operator=(PmmlDocument&&) noexcept;

  xercesc::DOMDocument* Dom() const;
  const std::string& Name() const;

  // Whether no element of the file has a prefix or is an Extension, as far as is known: only of a
  // document with arrays as numbers.
  bool HasOnlyPlainNames() const;

  // The line on which the element's start tag ends, from 1; 0 for an element that is not in the
  // file.
  long LineOf(const xercesc::DOMElement* element) const;
  // Does nothing: the lines are those that the elements had in the file, however the tree changes.
  void FixLines() const;
  // Replaces the exception's element, if any, by its place in words: element NAME, line N.
  void Locate(MCZandor_850::SSException& error) const;

 private:
  struct Parsed;
  explicit PmmlDocument(std::unique_ptr<Parsed> parsed);
  std::unique_ptr<Parsed> parsed_;
};

}  // namespace svmscore

#endif  // HOST_XML_DOCUMENT_H_
