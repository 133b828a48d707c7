// How one input, or two, move a decision value. Lives: references, longer than the object. [one
// thread] for each object. Fails: std::bad_alloc.
#ifndef TOOLS_REPORT_INPUT_EFFECTS_H_
#define TOOLS_REPORT_INPUT_EFFECTS_H_

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/explain/background.h"
#include "tools/explain/players.h"
#include "tools/report/explanation.h"

namespace svmscore::tools {

class InputEffects {
 public:
  // `cases` are those that pictures show; `vectors_only`: they come from no table.
  InputEffects(const ExplanationOrder& order, BatchModel& model, const Background& background,
               const ScoredCases& cases, const Explanation& explanation);

  // Nothing for players of several inputs, of inputs that are no numbers, and of one that has no
  // two values.
  std::optional<Dependence> DependenceOn(const Player& player);
  // Nothing also for players whose entries do not follow their inputs along straight lines.
  std::optional<DecisionSurface> SurfaceOf(const Player& x, const Player& y);

 private:
  // The numbers of an input in the cases, rising, and the entries of the player that belong to
  // them.
  struct Axis {
    std::string name;
    bool of_field = false;
    const Player* player = nullptr;
    std::vector<double> numbers;     // each once, rising
    std::vector<std::size_t> cases;  // one with that number
    std::vector<double> of_case;     // of every case; NaN where it has none
    bool straight = true;            // entries lie on a line over the numbers

    double Low() const { return numbers.front(); }
    double High() const { return numbers.back(); }
  };

  std::optional<Axis> AxisOf(const Player& player) const;
  std::vector<double> NumbersOf(const Player& player) const;
  void CheckStraight(Axis& axis) const;
  double Entry(std::size_t c, std::size_t entry) const {
    return cases_.entries[c * cases_.entry_count + entry];
  }
  // The player's entries where its input has that number, between its neighbours in the cases.
  void SetEntries(const Axis& axis, double number, double* entries) const;
  std::vector<CasePlace> PlacesOf(const Axis& x, const Axis* y, std::size_t most) const;
  // The row of the background that is closest to its mean, in units of each entry's spread.
  std::vector<double> TypicalRow() const;
  // Decision values over the grid of the surface, the other entries being these; empty where one is
  // not finite.
  std::vector<double> ValuesOver(const Axis& x, const Axis& y, const std::vector<double>& others,
                                 std::size_t side) const;

  const ExplanationOrder& order_;
  BatchModel& model_;
  const Background& background_;
  const ScoredCases& cases_;
  const Explanation& explanation_;
  double vectors_ = 0.0;
};

}  // namespace svmscore::tools

#endif  // TOOLS_REPORT_INPUT_EFFECTS_H_
