#include "capi/text_columns.h"

#include <utility>

#include "capi/input_cells.h"

namespace svmscore::capi {

using MCZandor_850::ScoreDictVar;

VariablesByName InputsByName(const LoadedModel& loaded) {
  VariablesByName inputs;
  for (const auto* list : {&loaded.needed, &loaded.active, &loaded.output->ExtraInputs()}) {
    for (const ScoreDictVar* var : *list) inputs.emplace(var->GetName(), var);
  }
  return inputs;
}

tools::TextTable TextsOf(const std::string& name, const std::vector<ColumnView>& columns,
                         std::size_t rows, const VariablesByName* inputs) {
  const MissingTexts none;
  tools::TextTable table;
  table.name = name;
  table.rows.assign(rows, std::vector<std::string>(columns.size()));
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const ColumnView& column = columns[c];
    table.header.push_back(column.name);
    const ScoreDictVar* var = nullptr;
    if (inputs != nullptr) {
      const auto found = inputs->find(column.name);
      if (found == inputs->end()) continue;
      var = found->second;
    }
    column.Check();
    const InputCell cell = var == nullptr ? InputCell(column) : InputCell(column, *var, none);
    for (std::size_t row = 0; row < rows; ++row) table.rows[row][c] = cell.TextAt(row);
  }
  return table;
}

std::string AddLabels(const ColumnView& labels, tools::TextTable& table) {
  labels.Check();
  const InputCell cell(labels);
  std::string name = "label";
  while (table.FindColumn(name) >= 0) name += '_';
  table.header.push_back(name);
  for (std::size_t row = 0; row < table.rows.size(); ++row) {
    table.rows[row].push_back(cell.TextAt(row));
  }
  return name;
}

tools::CellRules RulesOf(const svmscore_text* missing_texts, std::size_t count) {
  MissingTexts missing = ReadMissingTexts(missing_texts, count);
  missing.emplace_back();  // none at all would be the program's own
  return tools::CellRules(std::move(missing));
}

}  // namespace svmscore::capi
