// The cases that say what values an absent input takes.
#ifndef TOOLS_EXPLAIN_BACKGROUND_H_
#define TOOLS_EXPLAIN_BACKGROUND_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/model/batch_model.h"
#include "host/model/explainable_model.h"
#include "host/model/score_case_record.h"
#include "tools/explain/draw.h"
#include "tools/explain/players.h"

namespace svmscore::tools {

// Explanations of a case take time in proportion to the background: beyond this many rows people
// should know.
inline constexpr std::size_t kManyRows = 1000;

struct Background {
  std::vector<double> entries;  // entry e of row r is entries[e * count + r]
  std::size_t count = 0;
  std::uint64_t rows_seen = 0;  // usable rows, of which `count` were drawn
  // Support vectors, of all or those that were drawn, without a finite decision value.
  std::uint64_t left_out = 0;

  BatchCases Cases() const { return {entries.data(), count, count}; }
};

// Takes rows one after the other and keeps all, or so many of them, drawn without replacement.
// Holds no more than it keeps. [one thread] for each object. Fails: std::bad_alloc.
class BackgroundRows {
 public:
  // `most` 0: all rows are kept. The same rows, `most` and `seed` give the same draw on every
  // machine.
  BackgroundRows(std::size_t entry_count, std::size_t most, std::uint64_t seed);

  // Takes a row: its entries, `stride` apart.
  void Add(const double* entries, std::size_t stride);
  std::uint64_t Seen() const { return seen_; }
  // The rows that are kept, in the order in which they came. Empties this object.
  Background Take();

 private:
  std::size_t entry_count_;
  std::size_t most_;
  Draw draw_;
  std::uint64_t seen_ = 0;
  std::vector<std::uint64_t> numbers_;  // of the rows that are kept
  std::vector<double> entries_;         // [rows][entry_count_]
};

// A case that may be a row of the background, if it can be scored.
struct BackgroundCase {
  long status = 0;  // 0, or why the model cannot score it
  // Then its decision values, as far as they are known: null where the case had no entries.
  const double* decisions = nullptr;
};

// Reads cases of a model, one by one, into a background. [one thread] for each object. Lives: the
// model longer than this object. Fails: std::bad_alloc.
class BackgroundReader {
 public:
  // The arguments are those of BackgroundRows.
  BackgroundReader(BatchModel& model, std::size_t most, std::uint64_t seed);

  // A row of the background, unless it fails: a value is missing or invalid, or an entry or a
  // decision value is not finite. The decision values live until the next call. REQUIRES: the
  // layout of the record is one that MatchColumns made, and the model's positions are fixed.
  BackgroundCase Add(const MCZandor_850::InputCaseRecord& record);
  Background Take() { return rows_.Take(); }

 private:
  BatchModel& model_;
  BackgroundRows rows_;
  std::vector<double> entries_;
  std::vector<double> decisions_;
};

// Why the vectors of a model cannot be its background: a clause in plain words, such as "it has no
// support vectors"; empty where they can. [any thread] Fails: std::bad_alloc.
std::string WhyNoVectorBackground(const ExplainableModel& model, const Players& players);
// The support vectors of the model, as ExplainableModel::VectorsAsCases has them, each as likely as
// another, or a draw of them; without those that have a decision value that is not finite, which
// may leave none. `batch` is the same model. REQUIRES: WhyNoVectorBackground is empty. [any thread]
// Fails: std::bad_alloc.
Background VectorBackground(BatchModel& batch, const ExplainableModel& model, std::size_t most,
                            std::uint64_t seed);

}  // namespace svmscore::tools

#endif  // TOOLS_EXPLAIN_BACKGROUND_H_
