// Cases on their way through a model's batch interface.
#ifndef TOOLS_SCORE_CASE_BATCH_H_
#define TOOLS_SCORE_CASE_BATCH_H_

#include <cstddef>
#include <memory>
#include <vector>

#include "host/model/batch_model.h"

namespace svmscore::tools {

// How many cases to take at once: few enough that their `width` cells each, or the numbers that the
// model makes of them, stay in the cache from reading to writing; enough for it to score many at a
// time. `model` is null for one that takes no batches. [any thread] Fails: never.
std::size_t CasesAtOnce(const BatchModel* model, std::size_t width);
// So many bytes of text are held for the output fields of these cases; one case may be beyond.
inline constexpr std::size_t kMostTexts = std::size_t{16} << 20;

// The status of a case with an invalid value, which the model is not asked about: logged as the
// model would. [any thread] Fails: never.
long RefuseInvalid();

// Holds cases up to a fixed number and what the model makes of them. Used by one thread.
class CaseBatch {
 public:
  // `categories` of the model's target; `model` must outlive this object. Without `decisions` the
  // model is not asked for decision values, and may decide by estimates, which is faster.
  CaseBatch(BatchModel& model, std::size_t categories, std::size_t capacity, bool decisions);

  void Clear() { count_ = 0; }
  // Takes the case as the next one unless the status, which is the case's own, is an error.
  // REQUIRES: fewer cases than the capacity are held.
  MCScore::MCStatus Add(const MCZandor_850::ScoreCaseRecord& record);
  // Makes room for cases whose entries the caller writes: of case c, EntriesOf(entry)[c].
  // REQUIRES: `count` is at most the capacity.
  void Reset(std::size_t count) { count_ = count; }
  double* EntriesOf(std::size_t entry) { return entries_.data() + entry * stride_; }
  void Score();

  std::size_t Size() const { return count_; }
  // Valid after Score, until the next.
  const BatchResults& Results() const { return results_; }

  // The decision values of a case, `stride` apart, also where the batch was not asked for them; NaN
  // where memory runs out.
  // Valid until the next call, or the next Score. REQUIRES: its status is not kCannotScore.
  struct Decisions {
    const double* values;
    std::size_t stride;
  };
  Decisions DecisionsOf(std::size_t position);

 private:
  BatchModel& model_;
  std::size_t stride_;
  std::size_t count_ = 0;
  std::vector<double> entries_;
  std::vector<long> status_;
  std::vector<int> category_;
  std::vector<double> numbers_;  // the columns of doubles, one after the other
  std::unique_ptr<bool[]> has_interval_;
  BatchResults results_;
  std::vector<double> decisions_;  // of one case, scored again
};

}  // namespace svmscore::tools

#endif  // TOOLS_SCORE_CASE_BATCH_H_
