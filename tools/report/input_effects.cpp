#include "tools/report/input_effects.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "host/text/number_text.h"
#include "tools/report/chosen_cases.h"
#include "tools/report/entry_scoring.h"
#include "tools/report/regression_figures.h"

namespace svmscore::tools {
namespace {

constexpr double kNoEffect = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kPointsShown = 200;
constexpr std::size_t kCurvePoints = 33;
constexpr std::size_t kSide = 31;
constexpr std::size_t kLeastSide = 9;
// Products of vectors and entries that a curve or a surface may take: a tenth of a second or so.
constexpr double kEffectSteps = 2e8;

bool IsNumber(const MCZandor_850::ScoreDictVar& input) {
  constexpr int kContinuousInput = 0;
  return input.GetTypeCode() == kContinuousInput && CellRules::IsOfNumbers(input);
}

}  // namespace

InputEffects::InputEffects(const ExplanationOrder& order, BatchModel& model,
                           const Background& background, const ScoredCases& cases,
                           const Explanation& explanation)
    : order_(order),
      model_(model),
      background_(background),
      cases_(cases),
      explanation_(explanation),
      vectors_(static_cast<double>(std::max<std::size_t>(order.summary.vectors, 1))) {}

std::vector<double> InputEffects::NumbersOf(const Player& player) const {
  std::vector<double> numbers(cases_.Size(), kNoEffect);
  if (order_.table == nullptr || explanation_.cases_are_vectors) {
    if (player.entries.size() != 1) return numbers;
    for (std::size_t c = 0; c < cases_.Size(); ++c) numbers[c] = Entry(c, player.entries[0]);
    return numbers;
  }
  const DrawnTable& table = *order_.table;
  const MCZandor_850::ScoreDictVar& input = *player.inputs.front();
  const auto column = std::find(table.header.begin(), table.header.end(), input.GetName());
  if (column == table.header.end()) return numbers;
  const auto cell = static_cast<std::size_t>(column - table.header.begin());
  std::string buffer;
  std::size_t c = 0;
  for (const DrawnRow& row : table.drawn) {
    if (c == cases_.Size()) break;
    if (row.number != cases_.numbers[c]) continue;
    const std::string_view text = row.Cell(cell);
    if (!order_.rules.IsMissing(text, input)) {
      const auto number = ParseNumber(order_.rules.TextOf(text, input, buffer));
      if (number && std::isfinite(*number)) numbers[c] = *number;
    }
    ++c;
  }
  return numbers;
}

std::optional<InputEffects::Axis> InputEffects::AxisOf(const Player& player) const {
  if (player.inputs.size() != 1 || player.entries.empty()) return std::nullopt;
  if (!IsNumber(*player.inputs.front())) return std::nullopt;
  Axis axis;
  axis.player = &player;
  axis.name = player.name;
  axis.of_case = NumbersOf(player);
  if (explanation_.cases_are_vectors) {
    const auto* explainable = dynamic_cast<const ExplainableModel*>(order_.loaded.model.get());
    axis.name = explainable->EntryName(player.entries.front());
    axis.of_field = axis.name != player.name;
  }
  for (std::size_t c = 0; c < axis.of_case.size(); ++c) {
    if (!std::isnan(axis.of_case[c])) axis.cases.push_back(c);
  }
  const auto number = [&axis](std::size_t c) { return axis.of_case[c]; };
  std::stable_sort(axis.cases.begin(), axis.cases.end(),
                   [&](std::size_t a, std::size_t b) { return number(a) < number(b); });
  axis.cases.erase(
      std::unique(axis.cases.begin(), axis.cases.end(),
                  [&](std::size_t a, std::size_t b) { return number(a) == number(b); }),
      axis.cases.end());
  for (const std::size_t c : axis.cases) axis.numbers.push_back(number(c));
  if (axis.numbers.size() < 2 || !std::isfinite(axis.High() - axis.Low())) return std::nullopt;
  CheckStraight(axis);
  return axis;
}

void InputEffects::CheckStraight(Axis& axis) const {
  for (const std::size_t entry : axis.player->entries) {
    const double first = Entry(axis.cases.front(), entry);
    const double last = Entry(axis.cases.back(), entry);
    double size = std::fabs(first) + std::fabs(last);
    for (const std::size_t c : axis.cases) size = std::max(size, std::fabs(Entry(c, entry)));
    for (std::size_t i = 0; i < axis.cases.size(); ++i) {
      const double share = (axis.numbers[i] - axis.Low()) / (axis.High() - axis.Low());
      const double expected = first + share * (last - first);
      axis.straight =
          axis.straight && std::fabs(Entry(axis.cases[i], entry) - expected) <= 1e-6 * size;
    }
  }
}

void InputEffects::SetEntries(const Axis& axis, double number, double* entries) const {
  const auto above = std::lower_bound(axis.numbers.begin(), axis.numbers.end(), number);
  const auto at = static_cast<std::size_t>(
      std::min(above - axis.numbers.begin(), std::ptrdiff_t(axis.numbers.size()) - 1));
  const std::size_t before = at > 0 ? at - 1 : at;
  const double gap = axis.numbers[at] - axis.numbers[before];
  const double share = gap > 0.0 ? (number - axis.numbers[before]) / gap : 0.0;
  for (const std::size_t entry : axis.player->entries) {
    const double low = Entry(axis.cases[before], entry);
    entries[entry] = low + share * (Entry(axis.cases[at], entry) - low);
  }
}

std::vector<CasePlace> InputEffects::PlacesOf(const Axis& x, const Axis* y,
                                              std::size_t most) const {
  std::vector<std::size_t> shown;
  for (std::size_t c = 0; c < cases_.Size(); ++c) {
    if (!IsAbout(explanation_.sides, cases_, c)) continue;
    if (!std::isnan(x.of_case[c]) && (y == nullptr || !std::isnan(y->of_case[c]))) {
      shown.push_back(c);
    }
  }
  ThinOut(shown, most);
  std::vector<CasePlace> places;
  for (const std::size_t c : shown) {
    const double decision = cases_.decisions[c * cases_.machines + explanation_.machine];
    places.push_back({x.of_case[c], y == nullptr ? decision : y->of_case[c],
                      decision < explanation_.sides.threshold});
  }
  return places;
}

std::optional<Dependence> InputEffects::DependenceOn(const Player& player) {
  const std::optional<Axis> axis = AxisOf(player);
  if (!axis) return std::nullopt;
  Dependence result{axis->name, axis->of_field, PlacesOf(*axis, nullptr, kPointsShown), {}};
  const std::size_t width = cases_.entry_count;
  const double steps =
      vectors_ * static_cast<double>(width) * static_cast<double>(background_.count);
  const auto points =
      static_cast<std::size_t>(std::min(static_cast<double>(kCurvePoints), kEffectSteps / steps));
  if (points < 2) return result;
  std::vector<double> numbers;
  const std::size_t last = axis->numbers.size() - 1;
  for (std::size_t p = 0; p < points; ++p) {
    const double share = static_cast<double>(p) / static_cast<double>(points - 1);
    // Between the numbers of cases only where that is sure to be right.
    numbers.push_back(axis->straight ? axis->Low() + share * (axis->High() - axis->Low())
                                     : axis->numbers[p * last / (points - 1)]);
  }
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  for (const double number : numbers) {
    std::vector<double> entries(background_.count * width);
    for (std::size_t r = 0; r < background_.count; ++r) {
      double* row = entries.data() + r * width;
      for (std::size_t e = 0; e < width; ++e) {
        row[e] = background_.entries[e * background_.count + r];
      }
      SetEntries(*axis, number, row);
    }
    const std::vector<double> decisions = DecisionsOf(model_, entries, explanation_.machine);
    const double mean = std::accumulate(decisions.begin(), decisions.end(), 0.0) /
                        static_cast<double>(decisions.size());
    if (std::isfinite(mean)) result.curve.push_back({number, mean, false});
  }
  return result;
}

std::vector<double> InputEffects::TypicalRow() const {
  const std::size_t rows = background_.count;
  std::vector<double> distances(rows, 0.0);
  for (std::size_t e = 0; e < cases_.entry_count; ++e) {
    const double* column = background_.entries.data() + e * rows;
    const auto count = static_cast<double>(rows);
    const double mean = std::accumulate(column, column + rows, 0.0) / count;
    double spread = 0.0;
    for (std::size_t r = 0; r < rows; ++r)
      spread += (column[r] - mean) * (column[r] - mean) / count;
    if (!(spread > 0.0)) continue;
    for (std::size_t r = 0; r < rows; ++r) {
      distances[r] += (column[r] - mean) * (column[r] - mean) / spread;
    }
  }
  const auto typical = static_cast<std::size_t>(
      std::min_element(distances.begin(), distances.end()) - distances.begin());
  std::vector<double> row;
  for (std::size_t e = 0; e < cases_.entry_count; ++e) {
    row.push_back(background_.entries[e * rows + typical]);
  }
  return row;
}

std::vector<double> InputEffects::ValuesOver(const Axis& x, const Axis& y,
                                             const std::vector<double>& others,
                                             std::size_t side) const {
  const auto number = [side](const Axis& axis, std::size_t i) {
    return axis.Low() +
           (axis.High() - axis.Low()) * static_cast<double>(i) / static_cast<double>(side - 1);
  };
  const std::size_t width = cases_.entry_count;
  std::vector<double> values;
  for (std::size_t j = 0; j < side; ++j) {
    std::vector<double> entries;
    for (std::size_t i = 0; i < side; ++i) {
      entries.insert(entries.end(), others.begin(), others.end());
      double* row = entries.data() + i * width;
      SetEntries(x, number(x, i), row);
      SetEntries(y, number(y, j), row);
    }
    for (const double decision : DecisionsOf(model_, entries, explanation_.machine)) {
      if (!std::isfinite(decision)) return {};
      values.push_back(decision);
    }
  }
  return values;
}

std::optional<DecisionSurface> InputEffects::SurfaceOf(const Player& x, const Player& y) {
  const std::optional<Axis> across = AxisOf(x);
  const std::optional<Axis> up = AxisOf(y);
  if (!across || !up || !across->straight || !up->straight) return std::nullopt;
  const std::size_t width = cases_.entry_count;
  const double side = std::sqrt(kEffectSteps / (vectors_ * static_cast<double>(width)));
  DecisionSurface surface;
  surface.side = static_cast<std::size_t>(std::min(side, static_cast<double>(kSide)));
  if (surface.side < kLeastSide) return std::nullopt;
  surface.x_name = across->name;
  surface.y_name = up->name;
  surface.x_low = across->Low();
  surface.x_high = across->High();
  surface.y_low = up->Low();
  surface.y_high = up->High();
  surface.values = ValuesOver(*across, *up, TypicalRow(), surface.side);
  const double threshold = explanation_.sides.threshold;
  const auto closest =
      std::find_if(explanation_.chosen.begin(), explanation_.chosen.end(),
                   [](const ExplainedCase& shown) { return shown.choice == CaseChoice::kClosest; });
  if (!surface.Crosses(threshold) && closest != explanation_.chosen.end()) {
    const auto first = cases_.entries.begin() + static_cast<std::ptrdiff_t>(closest->at * width);
    surface.values =
        ValuesOver(*across, *up, {first, first + static_cast<std::ptrdiff_t>(width)}, surface.side);
    surface.of_closest = true;
  }
  if (surface.values.empty()) return std::nullopt;
  surface.cases = PlacesOf(*across, &*up, kPointsShown);
  return surface;
}

}  // namespace svmscore::tools
