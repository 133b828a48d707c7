// Who shares a decision value: inputs of a model, and the entries of a case that each changes.
#ifndef TOOLS_EXPLAIN_PLAYERS_H_
#define TOOLS_EXPLAIN_PLAYERS_H_

#include <cstddef>
#include <string>
#include <vector>

#include "host/load/loader.h"

namespace svmscore::tools {

// A player is an input of the model, or several that meet in a derived field of a vector: their
// shares cannot be told apart.
struct Player {
  // The name of the input; of several the names with plus signs between them, as in "a+b".
  std::string name;
  std::vector<const MCZandor_850::ScoreDictVar*> inputs;  // at least one
  // The entries of a case that depend on the inputs, rising; none for an input that no vector uses.
  std::vector<std::size_t> entries;
};

struct Players {
  std::vector<Player> list;         // in the order of their first inputs among InputsOf()
  std::vector<std::size_t> others;  // entries that depend on no input, rising
};

// Every input of the model is of exactly one player. `variables`: of each entry of a case the
// variable that it is made of, or null; that of a derived field depends on all inputs that the
// field is computed from, directly or through other derived fields.
// [any thread] Owns: the model the variables. Fails: std::bad_alloc.
Players FindPlayers(const LoadedModel& loaded,
                    const std::vector<const MCZandor_850::ScoreDictVar*>& variables);

}  // namespace svmscore::tools

#endif  // TOOLS_EXPLAIN_PLAYERS_H_
