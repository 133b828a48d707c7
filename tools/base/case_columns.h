// Which cell of a row belongs to which variable.
#ifndef TOOLS_BASE_CASE_COLUMNS_H_
#define TOOLS_BASE_CASE_COLUMNS_H_

#include <string>
#include <string_view>
#include <vector>

#include "host/load/loader.h"

namespace svmscore::tools {

inline constexpr std::size_t kNoCell = static_cast<std::size_t>(-1);

struct CaseColumns {
  std::size_t width = 0;  // cells in every row
  // The variables that have a column, and the position of its cell in the row: parallel lists.
  std::vector<const MCZandor_850::ScoreDictVar*> variables;
  std::vector<std::size_t> cells;
  // The cell of each of the output plan's extra inputs; kNoCell where the header lacks it.
  std::vector<std::size_t> extras;
  // Cells that are copied to the output, in the order asked for.
  std::vector<std::size_t> copied;
};

// Every variable that a case may have a value of, each once: those that the model needs, then its
// other inputs. The records of a model that is shared must begin with the needed ones, in that
// order. [any thread] Owns: the model the variables. Fails: std::bad_alloc.
std::vector<const MCZandor_850::ScoreDictVar*> InputsOf(const LoadedModel& loaded);

// Finds the columns of a model's inputs, and those to copy, by their names. An input that the model
// does not need may be absent. `input_name` is what messages call the file; empty: a table without
// one. [any thread] Owns: the caller; the model the variables. Lives: the model, longer than the
// result. Fails: BadCases if a column that the model needs, or one to copy, is absent or named
// twice; std::bad_alloc.
CaseColumns MatchColumns(const std::vector<std::string_view>& header, const LoadedModel& loaded,
                         const std::vector<std::string>& copied, const std::string& input_name);

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_CASE_COLUMNS_H_
