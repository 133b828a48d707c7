#include "app/score/plain_rows.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/model/score_dict_var.h"
#include "host/text/number_text.h"

namespace svmscore::app {

using MCZandor_850::NumericValue;
using MCZandor_850::ScoreDictVar;

PlainRows::PlainRows(const BatchModel& model, const tools::CaseColumns& columns,
                     const tools::CellRules& rules)
    : columns_(columns), rules_(rules), system_missing_(NumericValue::GetSysmisValue()) {
  const std::vector<const ScoreDictVar*>& inputs = columns.variables;
  const bool all_plain = std::all_of(inputs.begin(), inputs.end(), [](const ScoreDictVar* var) {
    return var->TakesNumbersInIntervals();
  });
  if (!all_plain || !rules.NumbersAreNeverMissing()) return;
  for (std::size_t e = 0; e < model.EntryCount(); ++e) {
    const auto found = std::find(inputs.begin(), inputs.end(), model.PlainEntry(e));
    if (found == inputs.end()) return;
    variables_.push_back(static_cast<std::size_t>(found - inputs.begin()));
  }
  numbers_.resize(variables_.empty() ? 0 : inputs.size());
}

bool PlainRows::Take(const std::string_view* cells, tools::CaseBatch& batch) {
  if (numbers_.empty()) return false;
  for (std::size_t i = 0; i < numbers_.size(); ++i) {
    const ScoreDictVar& var = *columns_.variables[i];
    const std::optional<double> number =
        ParseNumber(rules_.TextOf(cells[columns_.cells[i]], var, exchanged_));
    if (!number || !std::isfinite(*number) || *number == system_missing_) return false;
    if (!var.IsInIntervals(*number)) return false;
    numbers_[i] = *number;
  }
  const std::size_t place = batch.Size();
  batch.Reset(place + 1);
  for (std::size_t e = 0; e < variables_.size(); ++e) {
    batch.EntriesOf(e)[place] = numbers_[variables_[e]];
  }
  return true;
}

}  // namespace svmscore::app
