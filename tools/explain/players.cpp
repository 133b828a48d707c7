#include "tools/explain/players.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <string_view>
#include <unordered_map>

#include "host/transform/derived_fields.h"
#include "host/transform/transformation_dictionary.h"
#include "tools/base/case_columns.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreDictVar;
using transform::Program;

constexpr std::size_t kNoInput = static_cast<std::size_t>(-1);

// Inputs, by their positions, in groups that grow together. A group is known by its first member.
class Groups {
 public:
  explicit Groups(std::size_t count) : parents_(count) {
    std::iota(parents_.begin(), parents_.end(), std::size_t{0});
  }

  std::size_t FirstOf(std::size_t member) {
    while (parents_[member] != member) {
      parents_[member] = parents_[parents_[member]];
      member = parents_[member];
    }
    return member;
  }
  // Either may be kNoInput. Returns a member of the group of both.
  std::size_t Join(std::size_t one, std::size_t other) {
    if (one == kNoInput) return other;
    if (other == kNoInput) return one;
    one = FirstOf(one);
    other = FirstOf(other);
    parents_[std::max(one, other)] = std::min(one, other);
    return std::min(one, other);
  }

 private:
  std::vector<std::size_t> parents_;
};

using Positions = std::unordered_map<const ScoreDictVar*, std::size_t>;

// Joins the inputs that meet in derived fields of the entries. Of each such field, by its name: one
// of its inputs, or kNoInput.
std::unordered_map<std::string_view, std::size_t> JoinInputs(
    const Program& program, const std::vector<const ScoreDictVar*>& variables,
    const Positions& positions, Groups& groups) {
  std::unordered_map<std::string_view, std::size_t> input_of_name;
  for (const ScoreDictVar* var : variables) {
    if (var != nullptr && var->IsDerived()) input_of_name.emplace(var->GetName(), kNoInput);
  }
  std::vector<bool> used(program.SlotCount(), false);
  for (auto step = program.Steps().rbegin(); step != program.Steps().rend(); ++step) {
    const auto slot = static_cast<std::size_t>(step->slot);
    if (!used[slot] && !input_of_name.contains(step->name)) continue;
    used[slot] = true;
    for (const int read : step->reads) used[static_cast<std::size_t>(read)] = true;
  }
  std::vector<std::size_t> input_of_slot(program.SlotCount(), kNoInput);
  for (const Program::Input& input : program.Inputs()) {
    const auto found = positions.find(input.var);
    if (found == positions.end()) continue;
    input_of_slot[static_cast<std::size_t>(input.slot)] = found->second;
  }
  for (const Program::Step& step : program.Steps()) {
    std::size_t& input = input_of_slot[static_cast<std::size_t>(step.slot)];
    if (!used[static_cast<std::size_t>(step.slot)]) continue;
    for (const int read : step.reads) {
      input = groups.Join(input, input_of_slot[static_cast<std::size_t>(read)]);
    }
    const auto named = input_of_name.find(step.name);
    if (named != input_of_name.end()) named->second = input;
  }
  return input_of_name;
}

}  // namespace

Players FindPlayers(const LoadedModel& loaded, const std::vector<const ScoreDictVar*>& variables) {
  const std::vector<const ScoreDictVar*> inputs = InputsOf(loaded);
  Positions positions;
  for (std::size_t i = 0; i < inputs.size(); ++i) positions.emplace(inputs[i], i);
  Groups groups(inputs.size());
  std::unordered_map<std::string_view, std::size_t> derived;
  if (const auto* dictionary = loaded.model->GetTransformationDictionary()) {
    derived = JoinInputs(dictionary->GetProgram(), variables, positions, groups);
  }

  std::map<std::size_t, Player> players;  // by the first input
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    Player& player = players[groups.FirstOf(i)];
    if (!player.name.empty()) player.name += '+';
    player.name += inputs[i]->GetName();
    player.inputs.push_back(inputs[i]);
  }
  Players found;
  for (std::size_t e = 0; e < variables.size(); ++e) {
    const ScoreDictVar* var = variables[e];
    std::size_t input = kNoInput;
    if (var != nullptr && var->IsDerived()) {
      const auto named = derived.find(var->GetName());
      if (named != derived.end()) input = named->second;
    } else if (const auto given = positions.find(var); given != positions.end()) {
      input = given->second;
    }
    (input == kNoInput ? found.others : players[groups.FirstOf(input)].entries).push_back(e);
  }
  for (auto& [first, player] : players) found.list.push_back(std::move(player));
  return found;
}

}  // namespace svmscore::tools
