// A translator reads only sparse arrays, ignores their length and default value, relies on
// ascending indices, and reads from a text that is not a number as much as it can.
#include "host/intake/vectors.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include <fmt/format.h>

#include "host/intake/finite_numbers.h"
#include "host/intake/steps.h"
#include "host/text/number_text.h"
#include "host/xml/array_numbers.h"
#include "host/xml/elements.h"
#include "host/xml/limits.h"
#include "host/xml/transcoder.h"

namespace svmscore::intake {
namespace {

bool IsSparse(WideView name) {
  return name == u"REAL-SparseArray" || name == u"INT-SparseArray";
}

bool IsDense(WideView name) {
  return name == u"Array" || name == u"REAL-ARRAY" || name == u"NUM-ARRAY" ||
         name == u"INT-ARRAY" || name == u"REAL-Array" || name == u"INT-Array";
}

void ReplaceText(DOMElement* element, const WideText& text) {
  while (DOMNode* child = element->getFirstChild()) element->removeChild(child);
  AddText(element, text);
}

std::string VectorOf(const std::string& length, std::size_t fields) {
  return fmt::format("a vector of length {} for {} vector fields", length, fields);
}

std::size_t CountWords(WideView text) {
  std::size_t count = 0;
  while (!NextWord(text).empty()) ++count;
  return count;
}

}  // namespace

std::size_t CountVectorFields(const Intake& intake) {
  std::size_t count = 0;
  DOMElement* list = FindChild(intake.ModelChild("VectorDictionary"), "VectorFields");
  for (DOMElement* position = FirstElement(list); position != nullptr;
       position = NextElement(position)) {
    const std::string kind = NameOf(position);
    if (kind == "FieldRef" || kind == "CategoricalPredictor") ++count;
  }
  return count;
}

VectorReader::VectorReader(Intake& intake, std::size_t fields)
    : intake_(intake), fields_(fields), numbers_(ArrayNumbers::Of(intake.Root())) {
  std::string text;
  for (std::size_t i = 1; i <= fields; ++i) text += std::to_string(i) + ' ';
  all_indices_ = ToUtf16(text);
}

void VectorReader::Read(DOMElement* instance) {
  DOMElement* dense = nullptr;
  DOMElement* sparse = nullptr;
  bool reads = false;
  for (DOMElement* child = FirstElement(instance); child != nullptr; child = NextElement(child)) {
    const WideView name(child->getNodeName());
    // A translator looks for the first of these two only.
    const bool read = name == u"REAL-SparseArray";
    if (IsSparse(name) && (sparse == nullptr || (read && !reads))) {
      sparse = child;
      reads = read;
    }
    if (IsDense(name) && dense == nullptr) dense = child;
  }
  if (dense != nullptr && sparse != nullptr) {
    intake_.Tell("two-arrays", instance, "both a dense and a sparse array", "VectorInstance");
  }
  if (sparse != nullptr) return ReadSparse(sparse);
  if (dense != nullptr) return ReadDense(dense);
  intake_.Tell("vector-dropped", instance, "no array of numbers", "VectorInstance");
}

void VectorReader::ReadDense(DOMElement* array) {
  WideView offender;
  bool large = false;
  const NumberList* numbers = FindNumbers(array);
  const WideView text = numbers == nullptr ? TextView(array, joined_) : WideView();
  const auto count = numbers == nullptr ? CountNumbers(text, offender, large)
                                        : std::optional<std::size_t>(numbers->size);
  if (large) CheckFiniteWords(intake_, array, text);
  if (!count) return intake_.Refuse(array, code::kBadValue, Narrow(offender));
  if (*count != fields_) {
    return intake_.Refuse(array, code::kBadContent, VectorOf(std::to_string(*count), fields_),
                          NameOf(array));
  }
  CheckLength(array);
  if (AttributeView(array, "type") == u"string") {
    intake_.Tell("array-type", array, "string", "type", NameOf(array));
  }
  intake_.Tell("dense-array", array);
  // The numbers stay as they are written; zeros stay entries.
  DOMElement* entries = numbers == nullptr ? MakeElement(intake_.Dom(), "REAL-Entries") : nullptr;
  if (entries != nullptr) MoveChildren(array, entries);
  Rename(array, "REAL-SparseArray");
  RemoveAttribute(array, "type");
  // A translator would look for a number in it.
  if (!IsFieldCount(AttributeView(array, "n"))) RemoveAttribute(array, "n");
  if (entries == nullptr) return numbers_->SetPositions(array, AllPositions());
  AddText(AddElement(array, "Indices"), all_indices_);
  array->appendChild(entries);
}

void VectorReader::ReadSparse(DOMElement* array) {
  DOMElement* indices = nullptr;
  DOMElement* entries = nullptr;
  DOMElement* integers = nullptr;
  for (DOMElement* child = FirstElement(array); child != nullptr; child = NextElement(child)) {
    const WideView name(child->getNodeName());
    if (name == u"Indices" && indices == nullptr) indices = child;
    // Older versions call it Entries; where both are, the newer name counts.
    const bool newer = name == u"REAL-Entries";
    if (newer ? entries == nullptr || WideView(entries->getNodeName()) != name
              : name == u"Entries" && entries == nullptr) {
      entries = child;
    }
    if (name == u"INT-Entries" && integers == nullptr) integers = child;
  }
  if (WideView(array->getNodeName()) != u"REAL-SparseArray") {
    // A translator ignores it, and a document that it would refuse stays refused.
    DOMElement* list = entries != nullptr ? entries : integers;
    const bool pairs = indices != nullptr && list != nullptr &&
                       ArrayNumbers::CountWords(indices) == ArrayNumbers::CountWords(list);
    const WideView length = AttributeView(array, "n");
    const bool counts = length.data() == nullptr || ParseNumber(Narrow(length));
    if (!counts || (!pairs && indices != nullptr)) {
      return intake_.Tell("vector-dropped", array, "an array that cannot be read", NameOf(array));
    }
    intake_.Tell("integer-sparse-array", array);
    Rename(array, "REAL-SparseArray");
  } else if (entries == nullptr && integers != nullptr) {
    intake_.Tell("integer-sparse-array", array);
  }
  if (entries == nullptr && integers != nullptr) {
    Rename(integers, "REAL-Entries");
    entries = integers;
  }
  std::optional<WideView> default_value = ReadDefault(array);
  if (indices == nullptr && (entries != nullptr || !default_value)) {
    return ReadZeros(array, entries != nullptr);
  }
  CheckLength(array);
  if (indices == nullptr) {
    indices = AddElement(array, "Indices");
    entries = AddElement(array, "REAL-Entries");
  }
  // A translator says that the entries are missing.
  if (entries != nullptr) ReadPairs(array, indices, entries, default_value);
}

std::optional<WideView> VectorReader::ReadDefault(const DOMElement* array) const {
  const WideView stated = AttributeView(array, "defaultValue");
  if (stated.data() == nullptr) return std::nullopt;
  std::optional<double> number = ParseNumber(Narrow(stated));
  if (number && !std::isfinite(*number)) number.reset();
  if (!number) {
    intake_.Tell("default-value-unreadable", array, Narrow(stated), "defaultValue", NameOf(array));
  }
  return number.value_or(0.0) != 0.0 ? std::optional(stated) : std::nullopt;
}

void VectorReader::ReadZeros(DOMElement* array, bool has_entries) {
  const WideView stated = AttributeView(array, "n");
  if (stated.data() == nullptr && !has_entries) {
    intake_.Tell("zero-vector", array);
    return SetAttribute(array, "n", std::to_string(fields_));
  }
  const auto number = stated.data() == nullptr ? 0.0 : ParseNumber(Narrow(stated));
  // A translator reports that the length is not a number.
  if (!number) return;
  const int length = TruncateToInt(*number);
  if (length < 1) {
    return intake_.Tell("vector-dropped", array, "no Indices and no length", "REAL-SparseArray");
  }
  if (has_entries) {
    intake_.Tell("no-indices", array, "Indices", "REAL-SparseArray");
  }
  if (!IsOutside(length)) return CheckLength(array);
  // Otherwise a few digits could ask for gigabytes of zeros.
  intake_.Tell("surplus-zeros", array);
  SetAttribute(array, "n", std::to_string(fields_));
}

bool VectorReader::IsFieldCount(WideView length) {
  const auto number = ParseInteger(Narrow(length));
  if (!number || *number < 0 || static_cast<std::uint64_t>(*number) != fields_) return false;
  fitting_length_ = length;
  return true;
}

void VectorReader::CheckLength(const DOMElement* array) {
  const WideView length = AttributeView(array, "n");
  if (length.data() == nullptr || length == fitting_length_ || IsFieldCount(length)) return;
  // A translator reports that the length of a sparse array is not a number.
  if (!ParseNumber(Narrow(length)) && IsSparse(array->getNodeName())) return;
  intake_.Tell("count-disagrees", array, VectorOf(Narrow(length), fields_), NameOf(array));
}

int VectorReader::NextIndex(const DOMElement* list, WideView& text) const {
  const WideView word = NextWord(text);
  std::size_t index = 0;
  std::size_t at = 0;
  for (; at < word.size() && word[at] >= u'0' && word[at] <= u'9' && index <= fields_; ++at) {
    index = index * 10 + (word[at] - u'0');
  }
  if (at == word.size() && index >= 1 && index <= fields_) return static_cast<int>(index);
  const std::string slow = Narrow(word);
  const int read = TruncateToInt(NumberPrefix(slow.c_str()));
  if (ParseInteger(slow) != read) intake_.Tell("bad-number", list, slow);
  if (IsOutside(read)) TellOutside(list, slow);
  return read;
}

void VectorReader::TellOutside(const DOMElement* list, const std::string& index) const {
  intake_.Tell("index-out-of-range", list,
               fmt::format("the index {} for {} vector fields", index, fields_), "Indices");
}

bool VectorReader::IsOutside(int index) const {
  return index < 1 || static_cast<std::size_t>(index) > fields_;
}

const NumberList* VectorReader::FindNumbers(const DOMElement* list) const {
  return numbers_ == nullptr ? nullptr : numbers_->Find(list);
}

const std::shared_ptr<const std::vector<int>>& VectorReader::AllPositions() {
  if (all_positions_ == nullptr) {
    auto positions = std::make_shared<std::vector<int>>(fields_);
    std::iota(positions->begin(), positions->end(), 1);
    all_positions_ = std::move(positions);
  }
  return all_positions_;
}

void VectorReader::ReadPositions(const DOMElement* list, const NumberList& numbers) {
  ascending_ = true;
  if (numbers.positions == last_positions_) return;
  indices_ = *numbers.positions;
  // What is said of positions that are too large is said again for each list that has them.
  last_positions_ = IsOutside(indices_.back()) ? nullptr : numbers.positions;
  for (const int index : indices_) {
    if (IsOutside(index)) TellOutside(list, std::to_string(index));
  }
}

void VectorReader::ReadIndices(const DOMElement* list) {
  if (const NumberList* numbers = FindNumbers(list)) return ReadPositions(list, *numbers);
  last_positions_.reset();
  indices_.clear();
  ascending_ = true;
  WideView text = TextView(list, joined_);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  while (!text.empty()) {
    const int index = NextIndex(list, text);
    if (!indices_.empty() && index <= indices_.back()) ascending_ = false;
    indices_.push_back(index);
  }
}

std::size_t VectorReader::CountEntries(const DOMElement* list) {
  if (const NumberList* numbers = FindNumbers(list)) return numbers->size;
  const WideView text = TextView(list, joined_);
  WideView offender;
  bool large = false;
  const auto count = CountNumbers(text, offender, large);
  if (large || !count) CheckFiniteWords(intake_, list, text);
  if (count) return *count;
  intake_.Tell("bad-number", list, Narrow(offender));
  return CountWords(text);
}

void VectorReader::CheckRepeated(const DOMElement* list) const {
  if (ascending_) return;
  std::vector<int> sorted = indices_;
  std::sort(sorted.begin(), sorted.end());
  const auto twice = std::adjacent_find(sorted.begin(), sorted.end());
  if (twice == sorted.end()) return;
  const bool beyond = *twice == std::numeric_limits<int>::max();
  intake_.Tell("index-repeated", list,
               beyond ? "two indices beyond the range" : fmt::format("the index {} twice", *twice),
               "Indices");
}

std::size_t VectorReader::CountGaps() const {
  std::vector<int> inside;
  for (const int index : indices_) {
    if (!IsOutside(index)) inside.push_back(index);
  }
  std::sort(inside.begin(), inside.end());
  const auto end = std::unique(inside.begin(), inside.end());
  return fields_ - static_cast<std::size_t>(end - inside.begin());
}

void VectorReader::ReadPairs(DOMElement* array, DOMElement* indices, DOMElement* entries,
                             std::optional<WideView> default_value) {
  ReadIndices(indices);
  const std::size_t count = CountEntries(entries);
  // A translator says that the lengths differ.
  if (count != indices_.size()) return;
  CheckRepeated(indices);
  if (count == 0 && !default_value) {
    // Empty lists would be dropped with their vector.
    intake_.Tell("zero-vector", array);
    Remove(indices);
    Remove(entries);
    return SetAttribute(array, "n", std::to_string(fields_));
  }
  const bool sorted = std::is_sorted(indices_.begin(), indices_.end());
  if (!sorted) intake_.Tell("unordered-indices", array);
  if (default_value && CountGaps() == 0) default_value.reset();
  if (default_value) {
    intake_.Tell("default-value", array);
    implied_entries_ += CountGaps();
    CheckLimit(array, &Limits::implied_entries, implied_entries_);
  }
  if (!sorted || default_value) Rewrite(indices, entries, default_value);
}

void VectorReader::Rewrite(DOMElement* indices, DOMElement* entries,
                           std::optional<WideView> default_value) {
  if (numbers_ != nullptr) {
    numbers_->PutBack(indices);
    numbers_->PutBack(entries);
  }
  WideView text = TextView(entries, joined_);
  std::vector<std::pair<int, WideView>> pairs;
  for (const int index : indices_) pairs.emplace_back(index, NextWord(text));
  // Of equal indices the first one stays first.
  std::stable_sort(pairs.begin(), pairs.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  WideText index_text;
  WideText entry_text;
  const auto write = [&](int index, WideView entry) {
    index_text.append(ToUtf16(std::to_string(index) + ' '));
    entry_text.append(entry).push_back(u' ');
  };
  int next = 1;  // the first position that is not written yet, where gaps are filled
  const auto fill = [&](int end) {
    for (; default_value && next < end && !IsOutside(next); ++next) write(next, *default_value);
  };
  for (const auto& [index, entry] : pairs) {
    fill(index);
    write(index, entry);
    if (index == next) ++next;
  }
  fill(std::numeric_limits<int>::max());
  ReplaceText(indices, index_text);
  ReplaceText(entries, entry_text);
}

void UseSparseVectors(Intake& intake) {
  const std::size_t fields = CountVectorFields(intake);
  if (fields == 0) return;
  VectorReader reader(intake, fields);
  for (DOMElement* instance : Children(intake.ModelChild("VectorDictionary"), "VectorInstance")) {
    reader.Read(instance);
  }
}

}  // namespace svmscore::intake
