#include "tools/base/label_column.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "host/model/score_dict_var.h"
#include "host/text/number_text.h"
#include "tools/base/bad_input.h"

namespace svmscore::tools {

using MCZandor_850::ScoreDictVar;

LabelColumn::LabelColumn(const std::vector<std::string>& header, const std::string& table,
                         const std::string& name, const LoadedModel& loaded,
                         const ScoreDictVar& target, bool of_categories, const CellRules& rules)
    : target_(target), rules_(rules), of_categories_(of_categories) {
  const auto named = std::count(header.begin(), header.end(), name);
  if (named != 1) {
    throw BadCases(fmt::format("{}: {} named {}; --actual names the one that holds what is known "
                               "of the cases",
                               table, named == 0 ? "no column is" : "two columns are", name),
                   name);
  }
  for (const ScoreDictVar* var : loaded.needed) {
    if (var->GetName() != name || var->GetName() == target.GetName()) continue;
    throw BadCases(fmt::format("{}: the column {} is an input of the model; --actual names the one "
                               "that holds what is known of the cases",
                               table, name),
                   name);
  }
  position_ =
      static_cast<std::size_t>(std::find(header.begin(), header.end(), name) - header.begin());
}

LabelColumn::Found LabelColumn::Read(std::string_view cell, double& label) {
  if (rules_.IsMissing(cell, target_)) return Found::kMissing;
  if (of_categories_) {
    const int category =
        target_.GetCategoryIndexOfText(std::string(rules_.TextOf(cell, target_, buffer_)));
    if (category < 0) return Found::kUnknown;
    label = category;
    return Found::kLabel;
  }
  const auto number = ParseNumber(
      rules_.HasDecimalComma() ? CellRules::ExchangePointAndComma(cell, buffer_) : cell);
  if (!number || !std::isfinite(*number)) return Found::kUnknown;
  label = *number;
  return Found::kLabel;
}

}  // namespace svmscore::tools
