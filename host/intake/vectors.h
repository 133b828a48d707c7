// Rewrites each vector as a sparse array in ascending order.
#ifndef HOST_INTAKE_VECTORS_H_
#define HOST_INTAKE_VECTORS_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/intake/intake.h"
#include "host/xml/array_numbers.h"
#include "host/xml/edit.h"

namespace svmscore::intake {

// The positions of VectorFields, without those of unknown kind.
std::size_t CountVectorFields(const Intake& intake);

class VectorReader {
 public:
  // REQUIRES: fields > 0.
  VectorReader(Intake& intake, std::size_t fields);

  // `instance` is a VectorInstance.
  void Read(DOMElement* instance);
  // The text of Indices that lists every position.
  const WideText& AllIndices() const { return all_indices_; }

 private:
  void ReadDense(DOMElement* array);
  void ReadSparse(DOMElement* array);
  void ReadPairs(DOMElement* array, DOMElement* indices, DOMElement* entries,
                 std::optional<WideView> default_value);
  // A sparse array without Indices is understood by its length.
  void ReadZeros(DOMElement* array, bool has_entries);
  void Rewrite(DOMElement* indices, DOMElement* entries, std::optional<WideView> default_value);

  // Whether the text is the number of vector fields.
  bool IsFieldCount(WideView length);
  // For an array whose length is ignored.
  void CheckLength(const DOMElement* array);
  std::size_t CountEntries(const DOMElement* list);
  void ReadIndices(const DOMElement* list);
  void ReadPositions(const DOMElement* list, const NumberList& numbers);
  void TellOutside(const DOMElement* list, const std::string& index) const;
  // The numbers that are kept for the list in place of its text, or null.
  const NumberList* FindNumbers(const DOMElement* list) const;
  const std::shared_ptr<const std::vector<int>>& AllPositions();
  // The next index of the text, as a translator reads it.
  int NextIndex(const DOMElement* list, WideView& text) const;
  bool IsOutside(int index) const;
  void CheckRepeated(const DOMElement* list) const;
  // How many positions the indices leave out.
  std::size_t CountGaps() const;
  // The text of the default value, if it is a number other than 0.
  std::optional<WideView> ReadDefault(const DOMElement* array) const;

  Intake& intake_;
  std::size_t fields_;
  ArrayNumbers* numbers_;  // null where all lists are texts
  WideText all_indices_;
  std::shared_ptr<const std::vector<int>> all_positions_;  // null until it is needed
  std::uint64_t implied_entries_ = 0;
  WideText fitting_length_;  // a text of attribute n that was found to fit
  // Of the current array.
  WideText joined_;
  std::vector<int> indices_;                                // from 1
  std::shared_ptr<const std::vector<int>> last_positions_;  // what they are, if none is outside
  bool ascending_ = true;
};

}  // namespace svmscore::intake

#endif  // HOST_INTAKE_VECTORS_H_
