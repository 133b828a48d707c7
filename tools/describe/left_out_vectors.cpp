// Vectors: instances that are dropped, and numbers that are not read as they stand.
#include <fmt/format.h>

#include "host/text/number_text.h"
#include "tools/describe/left_out.h"

namespace svmscore::tools {
namespace {

// Tells of the tokens that are read as another number than they spell.
void CheckTokens(const Element* list, const std::vector<std::string>& tokens, bool whole,
                 FindingList& findings) {
  for (const std::string& token : tokens) {
    const double read = NumberPrefix(token.c_str());
    const auto spelled = ParseNumber(token);
    const double used = whole ? static_cast<double>(TruncateToInt(read)) : read;
    if (spelled && *spelled == used) continue;
    findings.Add("bad-number", list,
                 fmt::format("\"{}\" is read as {}", token, FormatNumber(used)));
  }
}

void CheckIndices(const Element* list, const std::vector<std::string>& tokens,
                  std::size_t field_count, FindingList& findings) {
  int previous = 0;
  bool ordered = true;
  for (const std::string& token : tokens) {
    const int index = TruncateToInt(NumberPrefix(token.c_str()));
    if (index < 1 || static_cast<std::size_t>(index) > field_count) {
      findings.Add("index-out-of-range", list,
                   fmt::format("the index {} stands for none of the {} vector fields: its value is "
                               "compared with no input",
                               index, field_count));
    }
    ordered = ordered && (index > previous || &token == tokens.data());
    previous = index;
  }
  if (!ordered) {
    findings.Add(
        "indices-unordered", list,
        "the indices do not ascend strictly: the kernel pairs such entries wrongly with the "
        "inputs");
  }
}

void CheckSparseArray(const Inspected& inspected, const Element* array, FindingList& findings) {
  const std::size_t field_count = inspected.vectors.Fields().size();
  const Element* indices = FindChild(array, "Indices");
  const Element* entries = EntriesOf(array);
  if (indices == nullptr) {
    // Without either list it is a vector of zeros, as it says.
    if (entries == nullptr) return;
    findings.Add("no-indices", array,
                 fmt::format("it has no Indices: it is read as {} zeros, and its entries are not "
                             "read",
                             AttributeText(array, "n")));
    return;
  }
  const std::vector<std::string> index_tokens = TokensOf(indices);
  CheckTokens(indices, index_tokens, true, findings);
  CheckIndices(indices, index_tokens, field_count, findings);
  CheckTokens(entries, TokensOf(entries), false, findings);
  CheckCount(array, "n", field_count, "vector fields", findings);
}

}  // namespace

void CheckVectors(const Inspected& inspected, FindingList& findings) {
  const Element* dictionary = FindChild(inspected.model, "VectorDictionary");
  CheckCount(dictionary, "numberOfVectors", inspected.vectors.Instances().size(),
             "VectorInstance elements", findings);
  for (const VectorInstance& instance : inspected.vectors.Instances()) {
    if (!instance.dropped.empty()) {
      findings.Add("vector-dropped", instance.element,
                   fmt::format("the vector \"{}\" is not kept: {}", instance.id, instance.dropped));
      continue;
    }
    CheckSparseArray(inspected, FindChild(instance.element, "REAL-SparseArray"), findings);
  }
}

}  // namespace svmscore::tools
