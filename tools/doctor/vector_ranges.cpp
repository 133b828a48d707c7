// Finds inputs whose cases are nowhere near the vectors.
#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "tools/doctor/comparison.h"
#include "tools/findings/model_numbers.h"

namespace svmscore::tools {
namespace {

// Of fewer cases, or cases that are all alike, all may be outside.
constexpr std::size_t kNeededCases = 6;

struct NumberRange {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();

  void Add(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  std::string Text() const {
    return fmt::format("from {} to {}", FormatNumber(low), FormatNumber(high));
  }
};

}  // namespace

void FindFieldsBeyondVectors(const Suspect& suspect, const CaseFiles& files,
                             FindingList& findings) {
  const Inspected inspected = Inspect(suspect.loaded);
  const ModelNumbers numbers = ReadNumbers(inspected);
  if (numbers.kernel.type == KernelNumbers::Type::kLinear) return;  // one vector may be weights
  VerifyCase scored(suspect.loaded);
  const auto& header = files.cases.header;
  for (std::size_t i = 0; i < numbers.fields.size(); ++i) {
    const Element* field = inspected.vectors.Fields()[i];
    const auto column = std::find(header.begin(), header.end(), AttributeText(field, "field"));
    if (column == header.end() || !scored.IsInput(*column)) continue;
    const MCZandor_850::ScoreDictVar& var = scored.VariableOf(*scored.FindInput(*column));
    NumberRange vectors;
    for (const auto& vector : numbers.vectors) vectors.Add(vector[i]);
    NumberRange cases;
    std::size_t count = 0;
    bool outside = vectors.low < vectors.high;
    std::string buffer;
    for (const auto& row : files.cases.rows) {
      const std::string& cell = row[static_cast<std::size_t>(column - header.begin())];
      const auto number = files.rules.IsMissing(cell, var)
                              ? std::nullopt
                              : ParseNumber(files.rules.TextOf(cell, var, buffer));
      if (!number) continue;
      cases.Add(*number);
      outside = outside && (*number < vectors.low || *number > vectors.high);
      ++count;
    }
    if (!outside || count < kNeededCases || !(cases.low < cases.high)) continue;
    findings.Add("cases-beyond-vectors", field,
                 fmt::format("{} is {} in the cases, and {} in the vectors", *column, cases.Text(),
                             vectors.Text()));
  }
}

}  // namespace svmscore::tools
