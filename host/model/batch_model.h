// Scoring many cases at once.
#ifndef HOST_MODEL_BATCH_MODEL_H_
#define HOST_MODEL_BATCH_MODEL_H_

#include <cstddef>
#include <cstdint>
#include <utility>

#include "host/model/score_case_record.h"
#include "host/model/score_status.h"
#include "host/text/api.h"

namespace svmscore {

// Cases as the numbers that a model makes of them: entry e of case c is entries[e * stride + c].
struct BatchCases {
  const double* entries = nullptr;  // [EntryCount()][stride]
  std::size_t stride = 0;           // at least `count`
  std::size_t count = 0;
};

// The results of the cases, in columns that the caller owns. A null column is not wanted, and one
// that this kind of model does not compute is filled with the value that means "none". Categories
// are positions among the categories of the target.
struct BatchResults {
  // [count]; 0, or the code of the case's failure. Null: only decision values are wanted, as far as
  // they are computed, and no failure is logged.
  long* status = nullptr;
  int* category = nullptr;       // [count]; -1: none
  double* value = nullptr;       // [count]; a regression's, in units of its target
  double* confidence = nullptr;  // [count]; -1.0: none
  // [categories][stride]: of category k and case c, percents[k * stride + c]; -1.0: none
  double* percents = nullptr;
  double* std_dev = nullptr;     // [count]; -1.0: none
  bool* has_interval = nullptr;  // [count]
  double* lower = nullptr;       // [count]; written where there is an interval
  double* upper = nullptr;       // [count]; likewise
  double* decisions = nullptr;   // [DecisionCount()][stride]: decision m of case c
  std::size_t stride = 0;        // of percents and decisions; at least `count`
};

// How the votes of a model are decided, and how many cases were so far. Estimates decide where a
// proven bound of their error leaves no doubt; results are those of exact decision values always.
struct VoteLevels {
  // What cases begin with at present: "single" or "double" for estimates of that precision,
  // "exact".
  const char* level = "exact";
  // Why no estimate is used; null where estimates are used.
  const char* why_exact = "the model does not report it";
  // Cases decided since the model was loaded, where decision values were not asked for. Of cases
  // that are scored one after another, up to 63 of each thread are not counted yet, and never where
  // it turns to another model before.
  std::uint64_t by_single = 0;
  std::uint64_t by_double = 0;
  std::uint64_t by_exact = 0;
};

// A model that scores blocks of cases faster than one case after another. A ScoreModel may also be
// one of these: ask by dynamic_cast. The results are those of GetScore to the last bit, for any
// number of cases at a time, in the rounding mode to nearest. The rules on threads are those of
// ScoreModel: FixPositions, or the model's first case in GetScore, comes alone; then any number of
// threads may call. A case that fails writes the same line to the log as in GetScore.
class SVMSCORE_HOST_API BatchModel {
 public:
  virtual ~BatchModel();

  // How many entries a case has, and how many decision values it gets.
  // [any thread] Fails: never.
  virtual std::size_t EntryCount() const = 0;
  virtual std::size_t DecisionCount() const = 0;
  // The categories that a decision value decides between; -1 for none.
  // [any thread] Fails: never.
  virtual std::pair<int, int> DecisionCategories(std::size_t decision) const = 0;

  // [any thread] Lives: the texts as long as the process. Fails: never.
  virtual VoteLevels Votes() const;

  // The variable whose number is the entry, as it is, wherever InputCaseRecord::FindPlainNumber
  // gives one; null for an entry that is made otherwise. Where all entries of a case are such
  // numbers, ReadCase does nothing but copy them.
  // [any thread] Lives: as long as the model. Fails: never.
  virtual const MCZandor_850::ScoreDictVar* PlainEntry(std::size_t entry) const = 0;

  // Whether a case fails (90027) that has a decision value which is not finite, here and in
  // GetScore. At first it does not.
  // [set-up] Fails: never.
  virtual void SetFiniteOnly(bool finite_only) = 0;

  // Fixes the positions of variables in records as the first case would, without scoring anything.
  // Later records must be laid out like this one. Does nothing where positions are fixed already.
  // [set-up] Lives: the record for the call. Fails: std::bad_alloc.
  virtual void FixPositions(const MCZandor_850::ScoreCaseRecord& record) = 0;
  // Computes the entries of one case, with `flag` as for GetScore. Where this fails, the error is
  // the status of the case, which must not become part of a batch; some entries may have been
  // written. Never throws.
  // [first case alone] Lives: the record and the entries for the call. Fails: 90027, 90029.
  virtual MCScore::MCStatus ReadCase(const MCZandor_850::ScoreCaseRecord& record, bool flag,
                                     double* entries, std::size_t stride) = 0;
  // Scores cases that ReadCase has accepted. Never throws: where memory runs out every case fails.
  // [first case alone] Lives: all columns for the call. Fails: each case by its own status.
  virtual void ScoreBatch(const BatchCases& cases, const BatchResults& results) = 0;
};

}  // namespace svmscore

#endif  // HOST_MODEL_BATCH_MODEL_H_
