// Cases for a report, scored, beside what is known of them.
#ifndef TOOLS_REPORT_SCORED_CASES_H_
#define TOOLS_REPORT_SCORED_CASES_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/load/loader.h"
#include "tools/base/cell_rules.h"
#include "tools/calibrate/figures.h"
#include "tools/report/case_draw.h"

namespace svmscore::tools {

// A table of cases, drawn where it has many.
struct DrawnTable {
  std::string name;  // how messages call it
  std::vector<std::string> header;
  std::uint64_t rows = 0;  // of the table, drawn or not
  std::vector<DrawnRow> drawn;
};

// So many cases of a model a report scores at most: fewer of a model that takes long or has many
// inputs. [any thread] Fails: std::bad_alloc.
std::size_t MostCases(const LoadedModel& loaded);

// One entry a scored case in every list but where stated.
struct ScoredCases {
  std::uint64_t rows = 0;          // of the table
  std::size_t drawn = 0;           // that were to be scored
  std::size_t missing = 0;         // of these: not scored, for an input is missing
  std::size_t invalid = 0;         // not scored, for an input or a result is invalid
  std::size_t unlabelled = 0;      // of the scored ones: their label is missing
  std::size_t unknown_labels = 0;  // their label is no category of the target, or no number

  std::vector<std::uint64_t> numbers;  // of the case's row, from 1
  std::size_t entry_count = 0;
  std::vector<double> entries;  // of case c: entries[c * entry_count + e]
  std::size_t machines = 0;
  std::vector<double> decisions;  // of case c: decisions[c * machines + m]

  // Of a classification: categories of the target. -1 for none, and for an unknown label.
  std::vector<int> predicted;
  std::vector<int> actual;
  // Of the first of two categories; of three and more, of the predicted one. Empty for a model that
  // computes none.
  std::vector<double> probabilities;
  std::optional<ClassFigures> figures;  // of the cases with a known label; nothing without one

  // Of a regression, as score writes them; NaN for an unknown label. Intervals are empty where a
  // case lacks one.
  std::vector<double> values;
  std::vector<double> observed;
  std::vector<std::pair<double, double>> intervals;
  // The output field that computes something else of a regression's results, where its predictions
  // are so far from all labels that they must have another unit; then no case has an observed
  // value. Empty where they can be compared.
  std::string own_unit;

  bool classification = true;
  bool has_labels = false;  // a column of labels is given

  std::size_t Size() const { return numbers.size(); }
};

// Scores the drawn rows. `actual` is the column of labels; empty for none. Cases that are not
// scored are counted only. Throws a BadCases for a table that does not fit the model or does not
// have such a column once, and a BadDocument for a model that takes no batches. [one thread] for
// each model.
ScoredCases ScoreCases(const LoadedModel& loaded, const DrawnTable& table,
                       const std::string& actual, const CellRules& rules);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_SCORED_CASES_H_
