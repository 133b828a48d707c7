#include "tools/report/report_data.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "host/model/batch_model.h"
#include "host/text/number_text.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/doctor/comparison.h"
#include "tools/doctor/examination.h"
#include "tools/doctor/labelled_cases.h"
#include "tools/findings/inspected.h"
#include "tools/findings/model_numbers.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreDictVar;

constexpr std::size_t kBins = 24;
// Cells that are looked at for inputs whose cases lie beyond the vectors.
constexpr std::size_t kCellsChecked = 1000000;

std::string TextOf(const Interval& interval) {
  return fmt::format("{}{}, {}{}", interval.left_closed ? "[" : "(", FormatNumber(interval.left),
                     FormatNumber(interval.right), interval.right_closed ? "]" : ")");
}

InputRange DeclaredRange(const ScoreDictVar& var) {
  InputRange range;
  range.name = var.GetName();
  constexpr int kContinuous = 0;
  if (var.GetTypeCode() != kContinuous) {
    const auto& categories = var.GetCategories();
    for (const auto* category : categories) {
      if (range.values.size() == kValuesShown) break;
      range.values.push_back(category->GetText());
    }
    range.more_values = categories.size() - range.values.size();
  }
  for (const Interval& interval : var.GetIntervals()) {
    if (range.intervals.size() == kValuesShown) break;
    range.intervals.push_back(TextOf(interval));
  }
  return range;
}

std::vector<InputRange> RangesOf(const LoadedModel& loaded) {
  const ModelNumbers numbers = ReadNumbers(Inspect(loaded));
  std::unordered_map<std::string, std::size_t> fields;
  for (std::size_t i = 0; i < numbers.fields.size(); ++i) fields.emplace(numbers.fields[i], i);
  std::vector<InputRange> ranges;
  for (const ScoreDictVar* var : InputsOf(loaded)) {
    if (ranges.size() == kInputsShown) break;
    InputRange range = DeclaredRange(*var);
    const auto field = fields.find(range.name);
    if (field != fields.end() && !numbers.vectors.empty()) {
      range.low = numbers.vectors.front()[field->second];
      range.high = range.low;
      for (const auto& vector : numbers.vectors) {
        range.low = std::min(range.low, vector[field->second]);
        range.high = std::max(range.high, vector[field->second]);
      }
    }
    ranges.push_back(std::move(range));
  }
  return ranges;
}

// The checks that look at cases want a table of texts.
TextTable SomeRows(const DrawnTable& drawn) {
  TextTable table{drawn.name, drawn.header, {}};
  const std::size_t most = kCellsChecked / std::max<std::size_t>(drawn.header.size(), 1) + 6;
  for (const DrawnRow& row : drawn.drawn) {
    if (table.rows.size() == most) break;
    std::vector<std::string>& cells = table.rows.emplace_back();
    for (std::size_t i = 0; i < row.ends.size(); ++i) cells.emplace_back(row.Cell(i));
  }
  return table;
}

// Labels that are of no use are told where scores are compared with them; the document is examined
// all the same.
std::vector<Finding> ExamineWith(const ReportOrder& order, const TextTable& rows) {
  if (!order.actual.empty()) {
    try {
      const LabelledCases labelled{rows, order.actual, order.rules};
      return Examine(order.opened, order.plugin, order.source, std::nullopt, &labelled).findings;
    } catch (const BadCases&) {
    }
  }
  return Examine(order.opened, order.plugin, order.source, std::nullopt).findings;
}

std::vector<Finding> FindingsOf(const ReportOrder& order) {
  if (order.cases == nullptr || !IsScored(order.opened)) {
    return Examine(order.opened, order.plugin, order.source, std::nullopt).findings;
  }
  const TextTable rows = SomeRows(*order.cases);
  std::vector<Finding> findings = ExamineWith(order, rows);
  FindingList of_cases(order.opened.Document());
  FindFieldsBeyondVectors({*order.opened.loaded, order.plugin, order.source},
                          {rows, {}, order.rules, 0.0}, of_cases);
  for (Finding& finding : of_cases.Take()) findings.push_back(std::move(finding));
  std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
    return a.kind->of_class > b.kind->of_class;
  });
  return findings;
}

MachineDistribution DistributionOf(const ReportData& data, const BatchModel& model,
                                   std::size_t machine) {
  const ModelSummary& summary = *data.model;
  const ScoredCases& cases = *data.cases;
  MachineDistribution result;
  static_cast<MachineSides&>(result) = SidesOf(summary, model.DecisionCategories(machine), machine);
  result.machine = machine;
  std::vector<double> decisions;
  std::vector<std::size_t> groups;
  for (std::size_t c = 0; c < cases.Size(); ++c) {
    decisions.push_back(cases.decisions[c * cases.machines + machine]);
    const int actual = cases.actual[c];
    groups.push_back(actual < 0 ? 2 : actual == result.above ? 0 : actual == result.below ? 1 : 2);
  }
  result.histogram = HistogramOf(decisions, groups, 3, result.threshold, kBins);
  return result;
}

void AddDistributions(const BatchModel& model, ReportData& data) {
  const ScoredCases& cases = *data.cases;
  if (!cases.classification || cases.Size() == 0) return;
  for (std::size_t m = 0; m < std::min(cases.machines, kMachinesShown); ++m) {
    data.machines.push_back(DistributionOf(data, model, m));
  }
  data.categories = CountCategories(cases.predicted, cases.actual);
  if (cases.figures) {
    data.confusion = ConfusionOf(cases.predicted, cases.actual, kConfusionShown);
  }
}

void AddCases(const ReportOrder& order, const LoadedModel& loaded, ReportData& data) {
  data.cases_name = std::filesystem::path(order.cases->name).filename().string();
  data.actual = order.actual;
  data.cases = ScoreCases(loaded, *order.cases, order.actual, order.rules);
  AddDistributions(*dynamic_cast<const BatchModel*>(loaded.model.get()), data);
}

}  // namespace

ReportData GatherReport(const ReportOrder& order) {
  ReportData data;
  data.file = order.file;
  if (order.opened.refused) data.refused = std::string(order.opened.refused->What());
  data.findings = FindingsOf(order);
  if (!order.opened.loaded) return data;
  const LoadedModel& loaded = *order.opened.loaded;
  data.model = Summarise(loaded);
  data.inputs = RangesOf(loaded);
  if (!IsScored(order.opened)) return data;
  if (order.cases != nullptr) AddCases(order, loaded, data);
  data.explanation =
      ExplainForReport({loaded, *data.model, order.cases, data.cases ? &*data.cases : nullptr,
                        order.background, order.rules});
  return data;
}

}  // namespace svmscore::tools
