#include "tools/report/explanation.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <fmt/format.h>

#include "tools/base/bad_input.h"
#include "tools/explain/background.h"
#include "tools/explain/case_explainer.h"
#include "tools/report/chosen_cases.h"
#include "tools/report/entry_scoring.h"
#include "tools/report/input_effects.h"
#include "tools/report/regression_figures.h"

namespace svmscore::tools {
namespace {

constexpr std::uint64_t kSeed = 1;
constexpr std::size_t kMostRows = 50;  // of the background
constexpr std::size_t kMostCases = 200;
constexpr std::size_t kLeastCases = 4;  // with fewer a mean says nothing
// Products of a vector, a row of the background and an input that all values may take: a second or
// so.
constexpr double kExplanationSteps = 4e8;
// Orders of the inputs that the model draws for a sampled value.
constexpr double kOrders = 400.0;

// Entries of cases, [case][entry], as those of a background, and the other way round.
Background BackgroundOf(const ScoredCases& cases) {
  BackgroundRows rows(cases.entry_count, kMostRows, kSeed);
  for (std::size_t c = 0; c < cases.Size(); ++c) {
    rows.Add(cases.entries.data() + c * cases.entry_count, 1);
  }
  return rows.Take();
}
std::vector<double> EntriesOf(const Background& background) {
  const std::size_t width =
      background.count == 0 ? 0 : background.entries.size() / background.count;
  std::vector<double> entries(background.entries.size());
  for (std::size_t e = 0; e < width; ++e) {
    for (std::size_t r = 0; r < background.count; ++r) {
      entries[r * width + e] = background.entries[e * background.count + r];
    }
  }
  return entries;
}

class Explaining {
 public:
  explicit Explaining(const ExplanationOrder& order)
      : order_(order), explainable_(ExplainableOf(order.loaded)) {}

  Explanation Run() {
    if (!Prepare()) return std::move(result_);
    const ModelExplainer explainer(order_.loaded, explainable_, background_, kSeed, 0);
    result_.sampled = explainer.Values().IsSampled();
    const std::size_t most = MostExplained();
    if (most < kLeastCases) {
      result_.why_not = "the model is too large to be explained in a report";
      return std::move(result_);
    }
    ChooseMachine();
    result_.base = explainer.Values().Base(result_.machine);
    AddShares(explainer, most);
    if (result_.cases == 0) {
      result_.why_not = "the numbers of the cases are too large";
      result_.cases_may_help = true;
      return std::move(result_);
    }
    AddChosen(explainer);
    AddEffects();
    return std::move(result_);
  }

 private:
  // Makes cases and background; false where that cannot be, with the reason.
  bool Prepare() {
    const std::string no_vectors = WhyNoVectorBackground(explainable_.model, explainable_.players);
    if (order_.cases != nullptr && order_.cases->Size() > 0) {
      cases_ = *order_.cases;
    } else if (no_vectors.empty()) {
      result_.cases_are_vectors = true;
      cases_ = CasesOfEntries(
          order_.loaded, explainable_.batch,
          EntriesOf(VectorBackground(explainable_.batch, explainable_.model, MostHeld(), kSeed)));
    }
    if (cases_.Size() == 0) {
      result_.why_not = no_vectors.empty() ? "there is no case to explain" : no_vectors;
      result_.cases_may_help = true;
      return false;
    }
    if (order_.background != nullptr) {
      DrawFromTable(*order_.background);
    } else if (no_vectors.empty()) {
      background_ = VectorBackground(explainable_.batch, explainable_.model, kMostRows, kSeed);
    } else {
      result_.background = BackgroundKind::kCases;
      background_ = BackgroundOf(cases_);
    }
    if (background_.count == 0) {
      result_.why_not = "no support vector of the model has a finite decision value";
      return false;
    }
    if (result_.background != BackgroundKind::kTable) {
      result_.background_of = background_.rows_seen;
    }
    result_.background_rows = background_.count;
    return true;
  }

  void DrawFromTable(const DrawnTable& table) {
    const ScoredCases rows = ScoreCases(order_.loaded, table, {}, order_.rules);
    background_ = BackgroundOf(rows);
    if (rows.Size() == 0) {
      throw BadCases(fmt::format(
          "{}: {}; the background needs cases that the model can score", table.name,
          rows.drawn == 0 ? "there is no row below the header"
                          : fmt::format("none of {} rows can be scored, {} with a missing input, "
                                        "{} with an invalid one",
                                        rows.drawn, rows.missing, rows.invalid)));
    }
    result_.background = BackgroundKind::kTable;
    result_.background_of = rows.rows;
    result_.background_drawn = rows.drawn;
    result_.background_unscored = rows.missing + rows.invalid;
  }

  // Of vectors that stand for cases: so that they and their decision values fit.
  std::size_t MostHeld() const { return std::min<std::size_t>(MostCases(order_.loaded), 1000); }

  std::size_t MostExplained() const {
    const auto players = static_cast<double>(explainable_.players.list.size() + 1);
    // A sampled value takes a kernel value of its own for each step of each order.
    const double rounds = result_.sampled ? kOrders * static_cast<double>(cases_.entry_count)
                                          : static_cast<double>(background_.count);
    const double pairs = static_cast<double>(order_.summary.vectors + 1) * rounds * players;
    const double values = static_cast<double>(cases_.machines) * players * 50.0;
    return static_cast<std::size_t>(
        std::min(static_cast<double>(kMostCases), kExplanationSteps / (pairs + values)));
  }

  void ChooseMachine() {
    std::vector<MachineSides> sides;
    for (std::size_t m = 0; m < cases_.machines; ++m) {
      sides.push_back(SidesOf(order_.summary, explainable_.batch.DecisionCategories(m), m));
    }
    result_.machines = sides.size();
    result_.machine = HardestMachine(sides, cases_);
    result_.sides = sides[result_.machine];
  }

  // Whether all that is told of the case is finite: values of very large numbers may not be, though
  // the decision values are.
  bool IsUsable(const ModelExplainer& model, const CaseExplainer& explainer,
                std::size_t place) const {
    if (!explainer.IsExplained(place)) return false;
    const auto is_finite = [](double value) { return std::isfinite(value); };
    for (std::size_t m = 0; m < cases_.machines; ++m) {
      const double* values = explainer.Values(place, m);
      if (!std::all_of(values, values + model.ValueCount(), is_finite)) return false;
      if (!result_.sampled) continue;
      const double* errors = explainer.Errors(place, m);
      if (!std::all_of(errors, errors + model.ValueCount(), is_finite)) return false;
    }
    return true;
  }

  // Calls take(position among `chosen`, explainer, position in the batch) for those explained.
  template <typename Take>
  void ForEachExplained(const ModelExplainer& model, const std::vector<std::size_t>& chosen,
                        Take take) const {
    const std::size_t most = CasesExplainedAtOnce(model, false);
    CaseExplainer explainer(model, most, false);
    for (std::size_t begin = 0; begin < chosen.size(); begin += most) {
      const std::size_t count = std::min(most, chosen.size() - begin);
      explainer.Reset(count);
      for (std::size_t e = 0; e < cases_.entry_count; ++e) {
        for (std::size_t c = 0; c < count; ++c) {
          explainer.EntriesOf(e)[c] = cases_.entries[chosen[begin + c] * cases_.entry_count + e];
        }
      }
      explainer.Explain();
      for (std::size_t c = 0; c < count; ++c) {
        if (IsUsable(model, explainer, c)) take(begin + c, explainer, c);
      }
    }
  }

  // All shares, the largest first.
  static std::vector<InputShare> Ordered(const std::vector<Player>& players, const double* values,
                                         const double* errors) {
    std::vector<InputShare> shares;
    for (std::size_t p = 0; p < players.size(); ++p) {
      shares.push_back({p, players[p].name, values[p], errors == nullptr ? 0.0 : errors[p]});
    }
    std::stable_sort(shares.begin(), shares.end(), [](const InputShare& a, const InputShare& b) {
      return std::fabs(a.value) > std::fabs(b.value);
    });
    return shares;
  }

  // Keeps the largest ones, and adds up the others.
  static void Keep(std::vector<InputShare>& shares, std::size_t most, std::size_t& more,
                   double& rest) {
    for (std::size_t i = most; i < shares.size(); ++i) {
      if (shares[i].value == 0.0) continue;
      ++more;
      rest += shares[i].value;
    }
    if (shares.size() > most) shares.resize(most);
  }

  void AddShares(const ModelExplainer& model, std::size_t most) {
    std::vector<std::size_t> chosen(cases_.Size());
    std::iota(chosen.begin(), chosen.end(), std::size_t{0});
    result_.cases_of = chosen.size();
    ThinOut(chosen, most);
    const std::vector<Player>& players = model.PlayerList();
    std::vector<double> sums(players.size(), 0.0);
    std::vector<double> of_machine(players.size(), 0.0);
    ForEachExplained(model, chosen,
                     [&](std::size_t, const CaseExplainer& explainer, std::size_t place) {
                       ++result_.cases;
                       for (std::size_t m = 0; m < cases_.machines; ++m) {
                         const double* values = explainer.Values(place, m);
                         // Decision values of several machines have no common unit.
                         const double unit = cases_.machines > 1 ? model.Values().Scale(m) : 1.0;
                         for (std::size_t p = 0; p < players.size(); ++p) {
                           if (unit > 0.0) sums[p] += std::fabs(values[p]) / unit;
                           if (m == result_.machine) of_machine[p] += std::fabs(values[p]);
                         }
                       }
                     });
    result_.unexplained = chosen.size() - result_.cases;
    const double count = static_cast<double>(result_.cases) * static_cast<double>(cases_.machines);
    for (double& sum : sums) sum /= std::max(count, 1.0);
    result_.strongest = Ordered(players, sums.data(), nullptr);
    order_of_players_ = Ordered(players, of_machine.data(), nullptr);
    Keep(result_.strongest, kSharesShown, result_.more, result_.rest);
  }

  void AddChosen(const ModelExplainer& model) {
    const auto choices = ChooseCases(result_.sides, result_.machine, cases_);
    std::vector<std::size_t> chosen;
    chosen.reserve(choices.size());
    for (const auto& choice : choices) chosen.push_back(choice.second);
    ForEachExplained(
        model, chosen, [&](std::size_t i, const CaseExplainer& explainer, std::size_t place) {
          ExplainedCase shown;
          shown.choice = choices[i].first;
          shown.at = chosen[i];
          shown.number = cases_.numbers[chosen[i]];
          shown.decision = explainer.Decisions(place)[result_.machine];
          shown.shares =
              Ordered(model.PlayerList(), explainer.Values(place, result_.machine),
                      result_.sampled ? explainer.Errors(place, result_.machine) : nullptr);
          Keep(shown.shares, kSharesOfCase, shown.more, shown.rest);
          result_.chosen.push_back(std::move(shown));
        });
  }

  void AddEffects() {
    InputEffects effects(order_, explainable_.batch, background_, cases_, result_);
    std::vector<const Player*> shown;
    for (const InputShare& share : order_of_players_) {
      if (shown.size() == kDependencesShown || share.value == 0.0) break;
      const Player& player = explainable_.players.list[share.player];
      std::optional<Dependence> dependence = effects.DependenceOn(player);
      if (!dependence) continue;
      result_.dependences.push_back(std::move(*dependence));
      shown.push_back(&player);
    }
    for (std::size_t j = 1; j < shown.size() && !result_.surface; ++j) {
      for (std::size_t i = 0; i < j && !result_.surface; ++i) {
        result_.surface = effects.SurfaceOf(*shown[i], *shown[j]);
      }
    }
  }

  const ExplanationOrder& order_;
  Explainable explainable_;
  ScoredCases cases_;
  Background background_;
  std::vector<InputShare> order_of_players_;  // of all, those strongest in the machine first
  Explanation result_;
};

}  // namespace

Explanation ExplainForReport(const ExplanationOrder& order) {
  const auto* model = dynamic_cast<const ExplainableModel*>(order.loaded.model.get());
  if (model == nullptr) {
    Explanation none;
    none.why_not = "the plug-in does not explain its model";
    return none;
  }
  return Explaining(order).Run();
}

}  // namespace svmscore::tools
