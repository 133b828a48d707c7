// MCSVM_700::CertifiedEngine: votes decided by estimates with proven bounds, and by the packed
// engine where those leave a doubt.
#ifndef SVM_KERNEL_CERTIFIED_CERTIFIED_ENGINE_H_
#define SVM_KERNEL_CERTIFIED_CERTIFIED_ENGINE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "svm/kernel/certified/level_operations.h"
#include "svm/kernel/certified/level_packing.h"
#include "svm/kernel/certified/level_plan.h"
#include "svm/kernel/certified/vote_rule.h"
#include "svm/kernel/packed/packed_engine.h"

namespace MCSVM_700 {

class CertifiedEngine;

// The working memory of a certified engine: one for each thread that scores, for any number of
// engines in turn.
class CertifiedScratch {
 public:
  CertifiedScratch() = default;
  CertifiedScratch(const CertifiedScratch&) = delete;
  CertifiedScratch& operator=(const CertifiedScratch&) = delete;

 private:
  friend class CertifiedEngine;

  template <class T>
  struct Buffers {
    packed::AlignedArray<T> tiles, shifts, values;
    packed::AlignedBuffer partial, totals, norms;
    certified::LevelWork<T> work = {};
    std::uint64_t engine = 0;  // the number of the engine that all this is sized for
  };

  Buffers<float> single_;
  Buffers<double> twofold_;
  std::vector<std::size_t> listed_begin_;
  std::vector<std::size_t> case_begin_;
  std::vector<std::uint32_t> listed_case_;
  std::vector<std::uint32_t> nonzero_field_;
  packed::AlignedBuffer listed_value_, nonzero_value_;
  packed::AlignedBuffer row_, errors_, open_cases_, open_decisions_;
  std::vector<std::size_t> open_;
  std::vector<std::uint8_t> unsure_;
  std::vector<std::uint32_t> best_;
  std::vector<double> best_low_;
  std::vector<int> certain_;
  std::vector<int> possible_;
  // Cases that came alone, until they are worth recording.
  std::uint64_t alone_engine_ = 0;
  std::size_t alone_tried_ = 0;
  std::size_t alone_open_ = 0;
};

// Any number of threads may use one, each with its own scratch. Only allocation can fail, by
// std::bad_alloc.
class CertifiedEngine {
 public:
  // How many cases were decided by each level since the engine was made. Of those that came alone,
  // up to 63 a thread are not counted yet, and never when it turns to another engine before.
  struct Counts {
    std::uint64_t single = 0;
    std::uint64_t twofold = 0;
    std::uint64_t exact = 0;
  };

  // `exact` must outlive this object. Compares estimates with exact decision values on some of the
  // model's own vectors; where one is outside its bound, nothing is certified.
  CertifiedEngine(const PackedEngine& exact, certified::VoteRule rule);
  CertifiedEngine(const CertifiedEngine&) = delete;
  CertifiedEngine& operator=(const CertifiedEngine&) = delete;

  // Why nothing is certified, and the packed engine decides all; null where something is.
  const char* why_not() const { return why_not_; }
  // The level that cases begin with at present.
  certified::Level level() const { return plan_.level(); }
  Counts counts() const;

  // As the packed engine's, but decision values are only on the right sides: every vote and every
  // winner by the rule is that of the exact values, or the winner alone where no more is wanted.
  // Where some value of a case is not finite, all of them are exact.
  void Decide(const double* x, CertifiedScratch& scratch, PackedScratch& packed, double* decisions,
              certified::Wanted wanted = certified::Wanted::kVotes) const;
  void DecideMany(packed::CaseColumns cases, std::size_t count, CertifiedScratch& scratch,
                  PackedScratch& packed, packed::DecisionColumns decisions,
                  certified::Wanted wanted = certified::Wanted::kVotes) const;

  // Estimates alone, by the level that is asked for; false where the model has no such level, or
  // nothing is certified.
  // REQUIRES: level is not kExact.
  bool Estimate(certified::Level level, packed::CaseColumns cases, std::size_t count,
                CertifiedScratch& scratch, certified::Estimates out) const;
  bool EstimateOne(const double* x, CertifiedScratch& scratch, certified::Estimates out) const;

 private:
  // As Estimate, for at most kCasesAtOnce cases.
  template <class T>
  void EstimateLevel(const certified::LevelPacking<T>& packing,
                     const certified::LevelOperations<T>& operations, packed::CaseColumns cases,
                     std::size_t count, CertifiedScratch& scratch,
                     CertifiedScratch::Buffers<T>& buffers, certified::Estimates out) const;
  template <class T>
  void Fit(const certified::LevelView<T>& view, std::size_t tile, CertifiedScratch& scratch,
           CertifiedScratch::Buffers<T>& buffers) const;
  // DecideMany for a sparse model by its single level; returns how many cases were taken.
  std::size_t DecideSparse(packed::CaseColumns cases, std::size_t count, CertifiedScratch& scratch,
                           PackedScratch& packed, packed::DecisionColumns decisions,
                           certified::Wanted wanted) const;
  // Null where the model has no such level.
  const certified::LevelPacking<double>* Twofold() const;
  bool KeepsItsBounds() const;
  // Lists the open cases among estimates of `count` cases, the first of which is case `first`.
  std::size_t ListOpen(std::size_t first, std::size_t count, const certified::Estimates& estimates,
                       CertifiedScratch& scratch, certified::Wanted wanted) const;
  void DecideOpen(packed::CaseColumns cases, CertifiedScratch& scratch, PackedScratch& packed,
                  packed::DecisionColumns decisions) const;
  void Count(certified::Level level, std::size_t tried, std::size_t open) const;
  // The same for cases that came one at a time.
  void CountAlone(certified::Level level, std::size_t tried, std::size_t open) const;

  const PackedEngine& exact_;
  certified::VoteRule rule_;
  std::uint64_t number_;  // unique among the engines of the process
  const certified::Operations* operations_;
  const char* why_not_ = nullptr;
  std::unique_ptr<const certified::LinearPacking> linear_;
  std::unique_ptr<const certified::LevelPacking<float>> single_;
  // Made when the plan first asks for it.
  mutable std::once_flag twofold_made_;
  mutable std::unique_ptr<const certified::LevelPacking<double>> twofold_;
  mutable certified::LevelPlan plan_;
  mutable std::atomic<std::uint64_t> counts_[3] = {};
};

}  // namespace MCSVM_700

#endif  // SVM_KERNEL_CERTIFIED_CERTIFIED_ENGINE_H_
