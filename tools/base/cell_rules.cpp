#include "tools/base/cell_rules.h"

#include <algorithm>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "host/model/score_dict_var.h"

namespace svmscore::tools {

using MCZandor_850::ScoreDictVar;

CellRules::CellRules(std::vector<std::string> given_tokens, bool decimal_comma)
    : tokens_(std::move(given_tokens)),
      tokens_given_(!tokens_.empty()),
      decimal_comma_(decimal_comma) {
  if (!tokens_given_) tokens_ = {"NA", "N/A"};
}

bool CellRules::IsToken(std::string_view cell) const {
  return std::find(tokens_.begin(), tokens_.end(), cell) != tokens_.end();
}

bool CellRules::NumbersAreNeverMissing() const {
  return std::none_of(tokens_.begin(), tokens_.end(), [](const std::string& token) {
    return token.find_first_of("0123456789") != std::string::npos;
  });
}

bool CellRules::Declares(const ScoreDictVar& var, std::string_view cell) {
  return !var.DeclaresNoValues() && var.GetCategoryIndexOfText(std::string(cell)) >= 0;
}

std::vector<std::string> CellRules::OverruledValues(const LoadedModel& loaded) const {
  std::vector<std::string> lines;
  if (!tokens_given_) return lines;
  for (const std::string& token : tokens_) {
    const std::string* first = nullptr;
    std::set<const ScoreDictVar*> inputs;
    for (const auto* variables : {&loaded.needed, &loaded.active, &loaded.output->ExtraInputs()}) {
      for (const ScoreDictVar* var : *variables) {
        if (!Declares(*var, token)) continue;
        inputs.insert(var);
        if (first == nullptr) first = &var->GetName();
      }
    }
    if (first == nullptr) continue;
    lines.push_back(fmt::format(
        "the model lists \"{0}\" as a value of \"{1}\"{2}; cells of that text are missing all the "
        "same, because --missing-token {0} says so",
        token, *first,
        inputs.size() > 1 ? fmt::format(" and of {} more inputs", inputs.size() - 1) : ""));
  }
  return lines;
}

bool CellRules::IsOfNumbers(const ScoreDictVar& var) {
  switch (var.GetFieldType().data) {
    case DataType::kInteger:
    case DataType::kFloat:
    case DataType::kDouble:
      return true;
    default:
      return false;
  }
}

std::string_view CellRules::ExchangePointAndComma(std::string_view cell, std::string& buffer) {
  buffer.assign(cell);
  for (char& c : buffer) {
    if (c == ',') {
      c = '.';
    } else if (c == '.') {
      c = ',';
    }
  }
  return buffer;
}

}  // namespace svmscore::tools
