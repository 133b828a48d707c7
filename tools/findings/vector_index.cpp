#include "tools/findings/vector_index.h"

#include <algorithm>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/xml/array_numbers.h"
#include "host/xml/transcoder.h"

namespace svmscore::tools {
namespace {

constexpr const char* kBlanks = " \t\r\n";

bool HasWords(const Element* element) {
  if (element == nullptr) return false;
  const ArrayNumbers* numbers = ArrayNumbers::Of(element);
  if (numbers != nullptr && numbers->Find(element) != nullptr) return true;
  return ElementText(element).find_first_not_of(kBlanks) != std::string::npos;
}

// Why an instance has no values; empty for one that has some.
std::string WithoutValues(const Element* instance) {
  const Element* sparse = FindChild(instance, "REAL-SparseArray");
  if (sparse == nullptr) {
    const bool dense =
        FindChild(instance, "REAL-ARRAY") != nullptr || FindChild(instance, "Array") != nullptr;
    return dense ? "it is dense, and only sparse arrays are read" : "it has no sparse array";
  }
  if (FindChild(sparse, "Indices") != nullptr) {
    return HasWords(EntriesOf(sparse)) ? "" : "it has no values";
  }
  const ArrayNumbers* numbers = ArrayNumbers::Of(sparse);
  if (numbers != nullptr && numbers->Find(sparse) != nullptr) return "";
  const std::string n = AttributeText(sparse, "n");
  return ParseNumber(n).value_or(-1.0) >= 1.0 ? "" : "it has neither Indices nor a count n";
}

}  // namespace

VectorIndex::VectorIndex(const Element* model) {
  const Element* dictionary = FindChild(model, "VectorDictionary");
  for (const Element* field : ChildElements(FindChild(dictionary, "VectorFields"))) {
    const std::string name = svmscore::NameOf(field);
    if (name == "FieldRef" || name == "CategoricalPredictor") fields_.push_back(field);
  }
  for (const Element* element : Children(dictionary, "VectorInstance")) {
    VectorInstance instance{element, AttributeText(element, "id"), WithoutValues(element)};
    if (instance.dropped.empty() && instance.id.empty()) instance.dropped = "its id is empty";
    if (instance.dropped.empty() && !kept_.emplace(instance.id, element).second) {
      instance.dropped = fmt::format("the id \"{}\" is taken by an earlier one", instance.id);
    }
    instances_.push_back(std::move(instance));
  }
}

std::vector<std::string> TokensOf(const Element* element) {
  std::vector<std::string> tokens;
  if (element == nullptr) return tokens;
  const std::string text = ElementText(element);
  std::size_t begin = text.find_first_not_of(kBlanks);
  while (begin != std::string::npos) {
    const std::size_t end = std::min(text.find_first_of(kBlanks, begin), text.size());
    tokens.push_back(text.substr(begin, end - begin));
    begin = text.find_first_not_of(kBlanks, end);
  }
  return tokens;
}

const Element* EntriesOf(const Element* sparse_array) {
  const Element* entries = FindChild(sparse_array, "REAL-Entries");
  return entries != nullptr ? entries : FindChild(sparse_array, "Entries");
}

MachineTerms TermsOf(const Element* machine, const VectorIndex& index) {
  MachineTerms terms;
  terms.vectors = ChildElements(FindChild(machine, "SupportVectors"), "SupportVector");
  terms.coefficients = ChildElements(FindChild(machine, "Coefficients"), "Coefficient");
  const std::size_t pairs = std::min(terms.vectors.size(), terms.coefficients.size());
  for (std::size_t i = 0; i < pairs; ++i) {
    if (index.IsKept(AttributeText(terms.vectors[i], "vectorId"))) ++terms.kept;
  }
  return terms;
}

}  // namespace svmscore::tools
