#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/describe/model_sentences.h"
#include "app/report/html_text.h"
#include "app/report/page_parts.h"
#include "app/report/sections.h"
#include "host/text/number_text.h"

namespace svmscore::app {

using tools::ModelSummary;
using tools::ReportData;
namespace {

constexpr std::size_t kListed = 12;

std::string Listed(const std::vector<std::string>& names) {
  std::string html;
  for (std::size_t i = 0; i < std::min(names.size(), kListed); ++i) {
    html += (i > 0 ? ", " : "") + Name(names[i]);
  }
  if (names.size() > kListed) {
    html += fmt::format(" and {} more", Count(names.size() - kListed));
  }
  return html;
}

std::string ValuesOf(const tools::InputRange& range) {
  std::string html;
  for (const std::string& value : range.values)
    html += (html.empty() ? "" : ", ") + Name(value, 30);
  if (range.more_values > 0) html += fmt::format(" and {} more", Count(range.more_values));
  for (const std::string& interval : range.intervals) {
    html += (html.empty() ? "" : ", ") + Escaped(interval);
  }
  return html.empty() ? "any" : html;
}

std::string InputsTable(const ReportData& data) {
  const std::size_t all = data.model->inputs.size();
  tools::InputSummary input;
  PageTable table;
  table.name = "Table of inputs";
  table.head_html = {"Input",          "Type",   "Allowed values",
                     "In the vectors", "Needed", "In place of a missing value"};
  table.is_number = {false, false, false, false, false, false};
  table.caption_html =
      data.inputs.size() == all
          ? fmt::format("The {} of the model", Counted(all, "input"))
          : fmt::format("The first {} of {} inputs", data.inputs.size(), Count(all));
  for (std::size_t i = 0; i < data.inputs.size(); ++i) {
    input = data.model->inputs[i];
    const tools::InputRange& range = data.inputs[i];
    const bool in_vectors = !std::isnan(range.low);
    table.rows_html.push_back(
        {Name(input.name), Escaped(input.optype + " " + input.type), ValuesOf(range),
         in_vectors ? fmt::format("{} to {}", Number(range.low), Number(range.high))
                    : std::string(kDash),
         input.needed ? "yes" : "no",
         input.replacement ? Name(*input.replacement) : std::string(kDash)});
  }
  std::string html = Table(table);
  if (data.inputs.size() <= kRowsOpen) return html;
  return Details(fmt::format("Inputs: {}", Counted(all, "row")), html);
}

std::string MachinesTable(const ModelSummary& model) {
  constexpr std::size_t kShown = 45;
  const std::size_t shown = std::min(model.machines.size(), kShown);
  PageTable table;
  table.name = "Table of machines";
  table.caption_html =
      shown == model.machines.size()
          ? fmt::format("The {} of the model", Counted(shown, "machine"))
          : fmt::format("The first {} of {} machines", shown, Count(model.machines.size()));
  table.head_html = {"Machine",   "Target category", "Alternate category",
                     "Threshold", "Absolute value",  "Terms"};
  table.is_number = {true, false, false, true, true, true};
  for (std::size_t i = 0; i < shown; ++i) {
    const tools::MachineSummary& machine = model.machines[i];
    const auto name = [](const std::string& category) {
      return category.empty() ? std::string(kDash) : Name(category);
    };
    table.rows_html.push_back({fmt::to_string(i + 1), name(machine.target), name(machine.alternate),
                               Number(machine.threshold), Number(machine.offset, 6),
                               Count(machine.terms)});
  }
  std::string html = Table(table);
  if (shown <= kRowsOpen) return html;
  return Details(fmt::format("Machines: {}", Counted(shown, "row")), html);
}

std::string KernelTile(const ModelSummary& model) {
  std::string meaning = "kernel";
  for (const auto& [name, value] : model.parameters) {
    meaning += fmt::format(", {} {}", name, Number(value));
  }
  return meaning;
}

std::string ModelTiles(const ModelSummary& model) {
  std::vector<Tile> tiles = {
      {Escaped(model.kernel), KernelTile(model)},
      {Count(model.inputs.size()), model.inputs.size() == 1 ? "input" : "inputs"}};
  if (!model.categories.empty()) {
    tiles.push_back({Count(model.categories.size()), "categories of the target"});
  }
  tiles.push_back(
      {Count(model.machines.size()), model.machines.size() == 1 ? "machine" : "machines"});
  tiles.push_back(
      {Count(model.vectors), model.vectors == 1 ? "support vector" : "support vectors"});
  return Tiles(tiles);
}

std::string FileFacts(const ReportData& data) {
  return Facts(
      {{"File", Name(data.file.name)},
       {"Size", fmt::format("{} bytes", Count(data.file.size))},
       {"SHA-256", data.file.sha256.empty() ? std::string()
                                            : fmt::format("<code>{}</code>", data.file.sha256)}});
}

}  // namespace

std::string CardSection(const ReportData& data) {
  if (!data.model) {
    return "<p class=\"alert\">No model can be made of this document; the findings say why.</p>\n" +
           FileFacts(data);
  }
  const ModelSummary& model = *data.model;
  std::string html;
  if (data.refused) {
    html += fmt::format("<p class=\"alert\">Scoring with this model is refused: {}</p>\n",
                        Escaped(*data.refused));
  }
  html += ModelTiles(model);
  std::string target = Name(model.target) + fmt::format(" ({})", Escaped(model.target_type));
  if (!model.categories.empty()) target += ": " + Listed(model.categories);
  html += Facts(
      {{"File", Name(data.file.name)},
       {"Size", fmt::format("{} bytes", Count(data.file.size))},
       {"SHA-256", data.file.sha256.empty() ? std::string()
                                            : fmt::format("<code>{}</code>", data.file.sha256)},
       {"PMML version", Name(model.pmml_version)},
       {"Producer", model.producer.empty() ? "not stated" : Name(model.producer)},
       {"Model name", model.model_name.empty() ? "" : Name(model.model_name)},
       {"Target", target},
       {"How it decides", Escaped(MethodSentence(model))},
       {"Kernel", Escaped(KernelSentence(model))},
       {"Percentages", Escaped(PercentagesSentence(model))},
       {"Terms",
        fmt::format("{} in all machines, {} vector fields, {}", Count(model.terms),
                    Count(model.vector_fields), Counted(model.derived_fields, "derived field"))},
       {"Missing values", fmt::format("policy {}", Escaped(model.missing_policy))},
       {"Output fields", Listed(model.output_fields)}});
  return html + InputsTable(data) + MachinesTable(model);
}

}  // namespace svmscore::app
