#include "host/xml/array_numbers.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <mutex>
#include <new>
#include <utility>

#include "host/text/blank.h"
#include "host/text/number_text.h"
#include "host/xml/edit.h"
#include "host/xml/transcoder.h"
#include "host/xml/wide_text.h"

namespace svmscore {
namespace {

// Kept apart from the documents for the same reasons as their limits, see limits.cpp.
std::mutex attached_mutex;
std::atomic<std::size_t> attached_count = 0;
std::map<const xercesc::DOMDocument*, ArrayNumbers*>& Attached() {
  using Map = std::map<const xercesc::DOMDocument*, ArrayNumbers*>;
  alignas(Map) static std::byte storage[sizeof(Map)];
  static Map& map = *new (storage) Map;
  return map;
}

const char* SkipBlanks(const char* at, const char* end) {
  while (at != end && IsBlank(*at)) ++at;
  return at;
}

void AppendText(const std::vector<int>& positions, std::string& text) {
  for (const int position : positions) text += std::to_string(position) + ' ';
}

void AppendText(const std::vector<double>& entries, std::string& text) {
  char buffer[kNumberTextSize];
  for (const double entry : entries) {
    text.append(buffer, FormatNumber(buffer, entry));
    text += ' ';
  }
}

std::string TextOf(const NumberList& list) {
  std::string text;
  if (!list.entries.empty()) {
    AppendText(list.entries, text);
  } else if (list.positions != nullptr) {
    AppendText(*list.positions, text);
  }
  return text;
}

void PutBackText(Element* element, const std::string& text) {
  AddText(element, {text.begin(), text.end()});
}

void PutBackList(Element* element, const NumberList& list) {
  if (list.positions == nullptr || list.entries.empty()) return PutBackText(element, TextOf(list));
  std::string text;
  AppendText(*list.positions, text);
  PutBackText(AddElement(element, "Indices"), text);
  text.clear();
  AppendText(list.entries, text);
  PutBackText(AddElement(element, "REAL-Entries"), text);
}

}  // namespace

ReadsArrayNumbers::~ReadsArrayNumbers() = default;

ArrayNumbers* ArrayNumbers::Of(const Element* element) {
  if (element == nullptr || attached_count.load(std::memory_order_relaxed) == 0) return nullptr;
  const xercesc::DOMDocument* document = element->getOwnerDocument();
  const std::lock_guard<std::mutex> lock(attached_mutex);
  const auto found = Attached().find(document);
  return found == Attached().end() ? nullptr : found->second;
}

const NumberList* ArrayNumbers::Find(const Element* element) const {
  const std::size_t place = PlaceOf(element);
  return place == lists_.size() ? nullptr : &lists_[place].second;
}

std::size_t ArrayNumbers::PlaceOf(const Element* element) const {
  // Nearly all look for one list after the other, once or twice for each, or for every second one.
  constexpr std::size_t kNear = 3;
  if (element == nullptr || element->getFirstChild() != nullptr) return lists_.size();
  const std::size_t end = std::min(likely_ + kNear, lists_.size());
  for (std::size_t place = likely_; place < end; ++place) {
    if (lists_[place].first == element) return likely_ = place;
  }
  if (!lists_.empty() && lists_.front().first == element) return likely_ = 0;
  if (places_.empty()) {
    for (std::size_t place = 0; place < lists_.size(); ++place) {
      places_.emplace(lists_[place].first, place);
    }
  }
  const auto found = places_.find(element);
  if (found == places_.end() || lists_[found->second].first == nullptr) return lists_.size();
  return likely_ = found->second;
}

void ArrayNumbers::Add(const Element* element, NumberList list) {
  lists_.emplace_back(element, std::move(list));
}

void ArrayNumbers::SetPositions(const Element* element,
                                std::shared_ptr<const std::vector<int>> positions) {
  lists_[PlaceOf(element)].second.positions = std::move(positions);
}

std::size_t ArrayNumbers::CountWords(const Element* element) {
  if (const ArrayNumbers* numbers = Of(element)) {
    if (const NumberList* list = numbers->Find(element)) return list->size;
  }
  WideText joined;
  WideView text = TextView(element, joined);
  std::size_t count = 0;
  while (!NextWord(text).empty()) ++count;
  return count;
}

std::vector<double> ArrayNumbers::TakeEntries(const Element* element) {
  std::vector<double>& entries = lists_[PlaceOf(element)].second.entries;
  return lets_go_ ? std::exchange(entries, {}) : entries;
}

void ArrayNumbers::PutBack(Element* element) {
  const std::size_t place = PlaceOf(element);
  if (place == lists_.size()) return;
  PutBackList(element, std::exchange(lists_[place].second, {}));
  lists_[place].first = nullptr;
}

void ArrayNumbers::PutBackAll() {
  for (const auto& [element, list] : lists_) {
    if (element != nullptr) PutBackList(const_cast<Element*>(element), list);
  }
  lists_.clear();
  places_.clear();
}

bool ReadPositions(std::string_view text, std::vector<int>& list) {
  constexpr std::ptrdiff_t kMostDigits = 9;  // they always fit
  list.clear();
  const char* const end = text.data() + text.size();
  for (const char* at = SkipBlanks(text.data(), end); at != end; at = SkipBlanks(at, end)) {
    int position = 0;
    const char* const begin = at;
    for (; at != end && *at >= '0' && *at <= '9' && at - begin < kMostDigits; ++at) {
      position = 10 * position + (*at - '0');
    }
    // Whoever reports a position quotes it as it is written, so it has no leading zero.
    const bool plain = at != begin && *begin != '0' && (at == end || IsBlank(*at));
    if (!plain || (!list.empty() && position <= list.back())) return false;
    list.push_back(position);
  }
  return !list.empty();
}

bool ReadEntries(std::string_view text, std::vector<double>& list) {
  list.clear();
  const char* const end = text.data() + text.size();
  for (const char* at = SkipBlanks(text.data(), end); at != end; at = SkipBlanks(at, end)) {
    const char* const begin = at;
    while (at != end && !IsBlank(*at)) ++at;
    const auto entry = ParseNumber({begin, static_cast<std::size_t>(at - begin)});
    if (!entry || !std::isfinite(*entry)) return false;
    list.push_back(*entry);
  }
  return !list.empty();
}

std::string NumberText(const Element* element) {
  const ArrayNumbers* numbers = ArrayNumbers::Of(element);
  const NumberList* list = numbers == nullptr ? nullptr : numbers->Find(element);
  return list == nullptr ? std::string() : TextOf(*list);
}

void AttachNumbers(const xercesc::DOMDocument* document, ArrayNumbers& numbers) {
  const std::lock_guard<std::mutex> lock(attached_mutex);
  Attached()[document] = &numbers;
  attached_count = Attached().size();
}

void DetachNumbers(const xercesc::DOMDocument* document) noexcept {
  const std::lock_guard<std::mutex> lock(attached_mutex);
  Attached().erase(document);
  attached_count = Attached().size();
}

}  // namespace svmscore
