// The cases of a hold-out, scored, beside what is known of them.
#ifndef TOOLS_CALIBRATE_HOLDOUT_H_
#define TOOLS_CALIBRATE_HOLDOUT_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/load/loader.h"
#include "tools/base/cell_rules.h"
#include "tools/base/text_table.h"

namespace svmscore::tools {

// An output field that an expression makes a number of: not a number for a case without.
struct OutputNumbers {
  std::string name;
  std::vector<double> numbers;
};

// One entry a usable case in every list: one that has a label and is scored.
struct Holdout {
  std::size_t rows = 0;        // of the table
  std::size_t unlabelled = 0;  // their cell is missing
  // Labels that are no category of the target, or no finite number, and how often they occur.
  std::map<std::string, std::size_t> unknown_labels;
  std::size_t unscored = 0;  // a missing or invalid input, or a result that is not finite

  std::size_t machines = 0;
  std::vector<double> decisions;  // of case c and machine m, decisions[c * machines + m]

  // Of a classification: categories of the target. `percents` has them for each case as the model
  // computes them, [c * categories + k]; it is empty where the model computes none.
  std::vector<int> actual;
  std::vector<int> predicted;
  std::vector<double> percents;

  // Of a regression. `values` are the model's own, before the document's target rescales them; the
  // intervals, as score writes them, are empty where the document has none.
  std::vector<double> observed;
  std::vector<double> values;
  std::vector<std::pair<double, double>> intervals;
  std::vector<double> predictions;     // as score writes them, before output fields
  std::vector<OutputNumbers> outputs;  // final results, in the order of the document

  // Of the numbers that the model makes of each usable case, and how many cases have them.
  std::unordered_map<std::uint64_t, std::size_t> keys;

  std::size_t Size() const { return actual.size() + observed.size(); }
};

// Scores the table. `actual` is the column of labels. Throws a BadCases for a table that does not
// fit the model or has no such column, or has it twice, and a BadDocument for a model that takes no
// batches. [one thread] Owns: the caller.
Holdout ScoreHoldout(const LoadedModel& loaded, const TextTable& table, const std::string& actual,
                     const CellRules& rules);

// The first labels that are not known, in quotation marks. [any thread] Owns: the caller.
std::string UnknownLabelsOf(const Holdout& holdout);
// Throws a BadCases that says why where no case is usable. `name` is what messages call the table.
// [any thread]
void RequireUsable(const Holdout& holdout, const LoadedModel& loaded, const std::string& name);

// Whether there are support vectors and every one is among the cases, as numbers that agree to six
// digits, and hardly by chance: the share of cases that occur once estimates how many new ones
// would occur for the first time (I. J. Good, The population frequencies of species, Biometrika 40,
// 1953), and by it, all vectors occur once in a thousand times at most. REQUIRES: the document
// holds arrays as texts (Arrays::kAsTexts). [one thread] Fails: std::bad_alloc.
bool HasAllVectors(const Holdout& holdout, const LoadedModel& loaded);

}  // namespace svmscore::tools

#endif  // TOOLS_CALIBRATE_HOLDOUT_H_
