// The numbers of a document's arrays, kept in place of their texts.
#ifndef HOST_XML_ARRAY_NUMBERS_H_
#define HOST_XML_ARRAY_NUMBERS_H_

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/text/api.h"
#include "host/xml/elements.h"

namespace svmscore {

// How a document holds the arrays of vectors.
enum class Arrays {
  kAsTexts,    // as text nodes, as any reader of its tree expects
  kAsNumbers,  // as ArrayNumbers where they can be, without text nodes: faster and smaller
};

// Of one element. A list of entries has entries, a list of indices has positions; a sparse array
// that has both needs no lists inside it.
struct NumberList {
  std::vector<double> entries;                        // empty once they were taken
  std::shared_ptr<const std::vector<int>> positions;  // from 1, ascending
  std::size_t size = 0;
};

// The lists of one document. An element that has one here has no children. Only texts that every
// reader understands alike are kept so: plain decimal numbers that are finite, and plain ascending
// positions. ElementText and TextView spell such a list anew, with the same values.
// [one thread] for each document. Owns: the document, all. Lives: what is found, until the list is
// taken, moved or put back. Fails: std::bad_alloc.
class SVMSCORE_HOST_API ArrayNumbers {
 public:
  // Those of the element's document; null where it holds texts. Null has none.
  static ArrayNumbers* Of(const Element* element);

  const NumberList* Find(const Element* element) const;
  // How many words the text of the element has, however it is held.
  static std::size_t CountWords(const Element* element);

  // The entries, for the last reader of the document if LetGo was called: they are not here any
  // more. REQUIRES: the element has a list with entries.
  std::vector<double> TakeEntries(const Element* element);
  void LetGo() { lets_go_ = true; }

  // In the order of the document.
  void Add(const Element* element, NumberList list);
  // Makes a sparse array of a list of entries.
  void SetPositions(const Element* element, std::shared_ptr<const std::vector<int>> positions);
  // Makes text nodes of the list of an element, if it has one, or of all.
  void PutBack(Element* element);
  void PutBackAll();

 private:
  using Known = std::pair<const Element*, NumberList>;
  // The place of the element among the lists, or their number.
  std::size_t PlaceOf(const Element* element) const;

  std::vector<Known> lists_;  // null instead of an element that has none any more
  // Where the next one looked for is likely to be.
  mutable std::size_t likely_ = 0;
  mutable std::unordered_map<const Element*, std::size_t> places_;  // once they are needed
  bool lets_go_ = false;
};

// The words of a text as a list: as positions where `as_positions`, else as entries. False for a
// text that has no words, or any that ArrayNumbers does not keep. `list` keeps its room.
bool ReadPositions(std::string_view text, std::vector<int>& list);
bool ReadEntries(std::string_view text, std::vector<double>& list);

// The list as a text; empty for an element without one.
std::string NumberText(const Element* element);

// Makes ArrayNumbers::Of find `numbers`, until they are detached, which must happen before either
// of the two goes.
// [any thread] Fails: std::bad_alloc; DetachNumbers never.
void AttachNumbers(const xercesc::DOMDocument* document, ArrayNumbers& numbers);
void DetachNumbers(const xercesc::DOMDocument* document) noexcept;

// A translator that finds the numbers of its documents here. From others they are put back first.
class SVMSCORE_HOST_API ReadsArrayNumbers {
 public:
  virtual ~ReadsArrayNumbers();
};

}  // namespace svmscore

#endif  // HOST_XML_ARRAY_NUMBERS_H_
