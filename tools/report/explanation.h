// What the inputs of a model do, for a report.
#ifndef TOOLS_REPORT_EXPLANATION_H_
#define TOOLS_REPORT_EXPLANATION_H_

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/load/loader.h"
#include "tools/base/cell_rules.h"
#include "tools/describe/machine_sides.h"
#include "tools/describe/model_summary.h"
#include "tools/report/scored_cases.h"

namespace svmscore::tools {

// So many of each are shown at most.
inline constexpr std::size_t kSharesShown = 12;
inline constexpr std::size_t kSharesOfCase = 8;
inline constexpr std::size_t kDependencesShown = 6;

// What an input, or several that meet in a derived field, contributes.
struct InputShare {
  std::size_t player = 0;
  std::string name;
  double value = 0.0;
  double error = 0.0;  // standard error of a sampled value
};

// Why a case is shown.
enum class CaseChoice {
  kSurestAbove,
  kSurestBelow,
  kTypicalAbove,  // in the middle of those on that side
  kTypicalBelow,
  kClosest,
  kWorstMistake,
  kHighest,
  kLowest,
  kMiddle,
  kLargestResidual,
};
struct ExplainedCase {
  CaseChoice choice = CaseChoice::kClosest;
  std::size_t at = 0;        // position among the cases
  std::uint64_t number = 0;  // of its row, or of the vector, from 1
  double decision = 0.0;
  std::vector<InputShare> shares;  // the largest first
  std::size_t more = 0;            // inputs without an entry there,
  double rest = 0.0;               // and what they contribute together
};

// A case in a picture of one or two inputs.
struct CasePlace {
  double x = 0.0;
  double y = 0.0;
  bool is_below = false;  // on the lower side of the threshold
};

// How one input, by itself, moves the decision value.
struct Dependence {
  std::string name;              // of the input
  bool of_field = false;         // x is the number of the vector field, not of the input
  std::vector<CasePlace> cases;  // y: the decision value
  std::vector<CasePlace> curve;  // y: the mean decision value of the background with this x
};

// Decision values over two inputs, all others being those of one case: the row of the background
// that is closest to its mean or, where the values are then all on one side of the threshold, the
// case closest to that.
struct DecisionSurface {
  std::string x_name;
  std::string y_name;
  double x_low = 0.0;
  double x_high = 0.0;
  double y_low = 0.0;
  double y_high = 0.0;
  std::size_t side = 0;        // grid points of each side
  std::vector<double> values;  // of point (i, j): [j * side + i], i along x
  std::vector<CasePlace> cases;
  bool of_closest = false;  // the others are those of the case closest to the threshold

  // Whether there are values on both sides of it.
  bool Crosses(double threshold) const {
    bool above = false;
    bool below = false;
    for (const double value : values) (value > threshold ? above : below) = true;
    return !std::isnan(threshold) && above && below;
  }
};

enum class BackgroundKind { kTable, kVectors, kCases };

struct Explanation {
  // A clause, such as "the model is too large"; empty where there is an explanation.
  std::string why_not;
  bool cases_may_help = false;  // other cases, or a background of others, may have one then

  BackgroundKind background = BackgroundKind::kVectors;
  std::size_t background_rows = 0;
  std::uint64_t background_of = 0;      // that these are drawn from: rows, vectors or cases
  std::size_t background_drawn = 0;     // of a table: rows that were looked at,
  std::size_t background_unscored = 0;  // and those of them that cannot be scored
  bool cases_are_vectors = false;       // no table was given
  std::size_t cases = 0;                // that values are means over
  std::size_t cases_of = 0;             // that these are drawn from
  std::size_t unexplained = 0;          // of the drawn ones: a value of them is not finite
  bool sampled = false;

  // Mean sizes over cases, the largest first: of one machine in units of its decision value, of
  // several their mean, each in units of the sum of the sizes of its machine's coefficients.
  std::vector<InputShare> strongest;
  std::size_t more = 0;  // inputs without an entry there,
  double rest = 0.0;     // and the sum of their mean sizes

  // Of the machine that the rest is about: that whose cases are, on the average, closest to its
  // threshold.
  std::size_t machine = 0;
  std::size_t machines = 0;
  MachineSides sides;
  double base = 0.0;  // the mean decision value of the background
  std::vector<ExplainedCase> chosen;
  std::vector<Dependence> dependences;
  std::optional<DecisionSurface> surface;
};

struct ExplanationOrder {
  const LoadedModel& loaded;
  const ModelSummary& summary;
  const DrawnTable* table = nullptr;       // the cases' table; null for none
  const ScoredCases* cases = nullptr;      // of that table; null for none
  const DrawnTable* background = nullptr;  // null for none
  const CellRules& rules;
};

// In bounded time and memory: of many cases and rows it draws some, always the same. Throws a
// BadCases for a background that does not fit the model. [one thread] for each model. Owns: the
// caller. Lives: the order's references for the call.
Explanation ExplainForReport(const ExplanationOrder& order);

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_EXPLANATION_H_
