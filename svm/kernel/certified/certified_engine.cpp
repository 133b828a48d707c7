#include "svm/kernel/certified/certified_engine.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "svm/kernel/packed/layout.h"

namespace MCSVM_700 {

using certified::Estimates;
using certified::kBlock;
using certified::Level;
using certified::LevelOperations;
using certified::LevelPacking;
using certified::LevelView;
using certified::LevelWork;
using certified::Wanted;
using packed::CaseColumns;
using packed::DecisionColumns;

namespace {

// Cases whose estimates and bounds are held at once; fewer where there are many machines.
constexpr std::size_t kMostCases = 1024;
constexpr std::size_t kLeastCases = 256;
constexpr std::size_t kMostEstimates = 16384;
// Open cases that the packed engine takes at once.
constexpr std::size_t kOpenCases = 512;
// What tiles that share a pass over the vectors may take, to stay in the second level of cache.
constexpr std::size_t kGroupBytes = std::size_t{384} * 1024;
constexpr std::size_t kMostTiles = 32;
// So few cases left over are taken one at a time.
constexpr std::size_t kFewCases = 3;
// Of the model's own vectors, so many are checked when it is loaded: enough for whole tiles and a
// rest, fewer where the model is large, so that loading does not take longer for them.
constexpr std::size_t kMostChecked = 88;
constexpr std::size_t kLeastChecked = 16;
constexpr std::size_t kCheckedTerms = 4000000;
// Cases that come alone are recorded so many at a time: the counts are shared by all threads.
constexpr std::size_t kCountedAlone = 64;

std::uint64_t NextCertifiedNumber() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

std::size_t CasesAtOnce(std::size_t machines) {
  return std::clamp(kMostEstimates / std::max<std::size_t>(machines, 1), kLeastCases, kMostCases);
}

}  // namespace

CertifiedEngine::CertifiedEngine(const PackedEngine& exact, certified::VoteRule rule)
    : exact_(exact),
      rule_(std::move(rule)),
      number_(NextCertifiedNumber()),
      operations_(certified::OperationsOf(exact.isa())) {
  plan_.Start(Level::kExact, false);
  why_not_ = operations_ == nullptr ? "this instruction set has no estimates"
                                    : certified::WhyNothingIsCertain(exact);
  if (why_not_ == nullptr && rule_.kind == certified::VoteRule::Kind::kThresholds &&
      rule_.thresholds.size() != exact.machines()) {
    why_not_ = "the number of thresholds";
  }
  if (why_not_ != nullptr) return;
  Level first = Level::kTwofold;
  if (exact.view().kernel.type == SVMConst::kLinear) {
    linear_ = std::make_unique<const certified::LinearPacking>(exact);
  } else {
    single_ = std::make_unique<const LevelPacking<float>>(exact);
    if (single_->usable()) {
      first = Level::kSingle;
    } else {
      single_.reset();
      if (Twofold() == nullptr) why_not_ = "the range of entries or coefficients";
    }
  }
  if (why_not_ == nullptr && !KeepsItsBounds()) why_not_ = "an estimate was outside its bound";
  if (why_not_ != nullptr) {
    single_.reset();
    linear_.reset();
    return;
  }
  plan_.Start(first, linear_ == nullptr && !exact.sparse());
}

const LevelPacking<double>* CertifiedEngine::Twofold() const {
  if (exact_.sparse() || linear_ != nullptr) return nullptr;
  std::call_once(twofold_made_, [this] {
    try {
      auto made = std::make_unique<const LevelPacking<double>>(exact_);
      if (made->usable()) twofold_ = std::move(made);
    } catch (const std::bad_alloc&) {
      twofold_ = nullptr;  // the model is scored without this level
    }
  });
  return twofold_.get();
}

CertifiedEngine::Counts CertifiedEngine::counts() const {
  const auto count = [this](Level level) {
    return counts_[static_cast<std::size_t>(level)].load(std::memory_order_relaxed);
  };
  return {count(Level::kSingle), count(Level::kTwofold), count(Level::kExact)};
}

void CertifiedEngine::Count(Level level, std::size_t tried, std::size_t open) const {
  const auto add = [this](Level by, std::size_t cases) {
    if (cases == 0) return;
    counts_[static_cast<std::size_t>(by)].fetch_add(cases, std::memory_order_relaxed);
  };
  if (level == Level::kExact) open = tried;
  add(level, tried - open);
  add(Level::kExact, open);
  plan_.Record(level, tried, open);
}

void CertifiedEngine::CountAlone(Level level, std::size_t tried, std::size_t open) const {
  if (level != Level::kTwofold || linear_ != nullptr) return Count(level, tried, open);
  // One case at a time there is no such level: it was not tried, and its turn still passes.
  counts_[static_cast<std::size_t>(Level::kExact)].fetch_add(tried, std::memory_order_relaxed);
  plan_.Record(level, tried, 0);
}

template <class T>
void CertifiedEngine::Fit(const LevelView<T>& view, std::size_t tile, CertifiedScratch& scratch,
                          CertifiedScratch::Buffers<T>& buffers) const {
  if (buffers.engine == number_) return;
  buffers.engine = 0;
  const std::size_t case_bytes =
      (view.fields + 2) * sizeof(T) + (3 * view.machines + view.widest_row + 2) * sizeof(double);
  const std::size_t group =
      std::clamp<std::size_t>(kGroupBytes / (case_bytes * tile), 1, kMostTiles);
  buffers.tiles.Reserve(group * tile * std::max<std::size_t>(view.fields, 1));
  buffers.shifts.Reserve(group * tile);
  buffers.values.Reserve(std::max(kBlock * tile, view.positions));
  buffers.partial.Reserve(group * tile * view.widest_row);
  buffers.totals.Reserve(group * tile * 3 * std::max<std::size_t>(view.machines, 1));
  buffers.norms.Reserve(group * tile * 2);
  if (view.blocks == nullptr) {
    const std::size_t room = certified::kFewListed * view.fields;
    const auto fit = [](auto& list, std::size_t size) { list.resize(std::max(list.size(), size)); };
    fit(scratch.listed_begin_, view.fields + 1);
    fit(scratch.case_begin_, certified::kListedCases + 1);
    fit(scratch.listed_case_, room);
    fit(scratch.nonzero_field_, room);
    scratch.listed_value_.Reserve(room);
    scratch.nonzero_value_.Reserve(room);
    buffers.work.listed_room = room;
  }
  LevelWork<T>& work = buffers.work;
  work.tiles = buffers.tiles.data();
  work.shifts = buffers.shifts.data();
  work.values = buffers.values.data();
  work.partial = buffers.partial.data();
  work.totals = buffers.totals.data();
  work.norms = buffers.norms.data();
  work.group_tiles = group;
  work.listed_begin = scratch.listed_begin_.data();
  work.listed_case = scratch.listed_case_.data();
  work.listed_value = scratch.listed_value_.data();
  work.case_begin = scratch.case_begin_.data();
  work.nonzero_field = scratch.nonzero_field_.data();
  work.nonzero_value = scratch.nonzero_value_.data();
  buffers.engine = number_;
}

template <class T>
void CertifiedEngine::EstimateLevel(const LevelPacking<T>& packing,
                                    const LevelOperations<T>& operations, CaseColumns cases,
                                    std::size_t count, CertifiedScratch& scratch,
                                    CertifiedScratch::Buffers<T>& buffers, Estimates out) const {
  const LevelView<T>& view = packing.view();
  const std::size_t tile = operations.tile;
  Fit(view, tile, scratch, buffers);
  const auto from = [](CaseColumns columns, std::size_t c) {
    return CaseColumns{columns.entries + c, columns.stride};
  };
  const auto to = [&out](std::size_t c) {
    return Estimates{out.decisions + c, out.errors + c, out.stride, out.error_stride};
  };
  if (view.blocks == nullptr) {
    for (std::size_t c = 0; c < count;) {
      c += operations.sparse(view, from(cases, c), std::min(certified::kListedCases, count - c),
                             buffers.work, to(c));
    }
    return;
  }
  std::size_t done = 0;
  const std::size_t left = count % tile;
  const std::size_t whole = operations.narrow == 0 || 4 * left > 3 * tile ? count : count - left;
  while (done < whole) {
    const std::size_t here = std::min(buffers.work.group_tiles * tile, whole - done);
    operations.tiles(view, from(cases, done), here, buffers.work, to(done));
    done += here;
  }
  if (count - done > kFewCases) {
    operations.narrow_tiles(view, from(cases, done), count - done, buffers.work, to(done));
    done = count;
  }
  scratch.row_.Reserve(view.fields);
  for (; done < count; ++done) {
    for (std::size_t f = 0; f < view.fields; ++f) {
      scratch.row_.data()[f] = cases.entries[f * cases.stride + done];
    }
    operations.one(view, scratch.row_.data(), buffers.work, to(done));
  }
}

bool CertifiedEngine::Estimate(Level level, CaseColumns cases, std::size_t count,
                               CertifiedScratch& scratch, Estimates out) const {
  if (why_not_ != nullptr) return false;
  if (linear_ != nullptr) {
    if (level != Level::kTwofold) return false;
    operations_->linear(linear_->view(), cases, count, out);
  } else if (level == Level::kSingle) {
    if (single_ == nullptr) return false;
    EstimateLevel(*single_, operations_->single, cases, count, scratch, scratch.single_, out);
  } else {
    const LevelPacking<double>* twofold = Twofold();
    if (twofold == nullptr) return false;
    EstimateLevel(*twofold, operations_->twofold, cases, count, scratch, scratch.twofold_, out);
  }
  return true;
}

bool CertifiedEngine::EstimateOne(const double* x, CertifiedScratch& scratch, Estimates out) const {
  if (why_not_ != nullptr) return false;
  if (linear_ != nullptr) {
    operations_->linear_one(linear_->view(), x, out);
    return true;
  }
  if (single_ == nullptr) return false;
  Fit(single_->view(), operations_->single.tile, scratch, scratch.single_);
  operations_->single.one(single_->view(), x, scratch.single_.work, out);
  return true;
}

std::size_t CertifiedEngine::ListOpen(std::size_t first, std::size_t count,
                                      const Estimates& estimates, CertifiedScratch& scratch,
                                      Wanted wanted) const {
  scratch.unsure_.resize(std::max(scratch.unsure_.size(), count));
  scratch.best_.resize(scratch.unsure_.size());
  scratch.best_low_.resize(scratch.unsure_.size());
  certified::FindUnsure(rule_, exact_.machines(), estimates, count, scratch.unsure_.data(),
                        scratch.best_.data(), scratch.best_low_.data());
  const std::size_t before = scratch.open_.size();
  for (std::size_t c = 0; c < count; ++c) {
    if (scratch.unsure_[c] == 0) continue;
    const Estimates of_case{estimates.decisions + c, estimates.errors + c, estimates.stride,
                            estimates.error_stride};
    if (wanted == Wanted::kWinner &&
        IsWinnerSure(rule_, of_case, scratch.certain_, scratch.possible_)) {
      continue;
    }
    scratch.open_.push_back(first + c);
  }
  return scratch.open_.size() - before;
}

void CertifiedEngine::DecideOpen(CaseColumns cases, CertifiedScratch& scratch,
                                 PackedScratch& packed, DecisionColumns decisions) const {
  const std::size_t fields = exact_.fields();
  const std::size_t machines = exact_.machines();
  for (std::size_t begin = 0; begin < scratch.open_.size(); begin += kOpenCases) {
    const std::size_t count = std::min(kOpenCases, scratch.open_.size() - begin);
    const std::size_t* open = scratch.open_.data() + begin;
    scratch.open_cases_.Reserve(fields * count);
    scratch.open_decisions_.Reserve(machines * count);
    double* gathered = scratch.open_cases_.data();
    for (std::size_t f = 0; f < fields; ++f) {
      const double* column = cases.entries + f * cases.stride;
      // Columns are far apart, so that hardware does not prefetch the next one.
      const std::size_t ahead = f + 16 < fields ? 16 * cases.stride : 0;
      for (std::size_t i = 0; i < count; ++i) {
        __builtin_prefetch(column + ahead + open[i]);
        gathered[f * count + i] = column[open[i]];
      }
    }
    double* decided = scratch.open_decisions_.data();
    exact_.DecideMany({gathered, count}, count, packed, {decided, count});
    for (std::size_t m = 0; m < machines; ++m) {
      double* column = decisions.values + m * decisions.stride;
      for (std::size_t i = 0; i < count; ++i) column[open[i]] = decided[m * count + i];
    }
  }
  scratch.open_.clear();
}

void CertifiedEngine::DecideMany(CaseColumns cases, std::size_t count, CertifiedScratch& scratch,
                                 PackedScratch& packed, DecisionColumns decisions,
                                 Wanted wanted) const {
  const std::size_t most = CasesAtOnce(exact_.machines());
  scratch.open_.clear();
  for (std::size_t done = 0; done < count;) {
    const CaseColumns part{cases.entries + done, cases.stride};
    const DecisionColumns decided{decisions.values + done, decisions.stride};
    const Level level = plan_.level();
    if (level == Level::kSingle && exact_.sparse()) {
      done += DecideSparse(part, count - done, scratch, packed, decided, wanted);
      continue;
    }
    const std::size_t here =
        level == Level::kExact ? count - done : std::min(plan_.CasesAtOnce(most), count - done);
    bool estimated = false;
    std::size_t open = 0;
    if (level != Level::kExact) {
      scratch.errors_.Reserve(exact_.machines() * here);
      const Estimates out{decided.values, scratch.errors_.data(), decided.stride, here};
      estimated = Estimate(level, part, here, scratch, out);
      if (estimated) {
        open = ListOpen(done, here, out, scratch, wanted);
        if (open == here) scratch.open_.resize(scratch.open_.size() - open);
      }
    }
    if (!estimated || open == here) {
      exact_.DecideMany(part, here, packed, decided);
      open = here;
    }
    Count(level, here, open);
    done += here;
  }
  DecideOpen(cases, scratch, packed, decisions);
}

// The rows of open cases are rebuilt from their listed entries: gathered from columns far apart,
// they would take longer than all estimates.
std::size_t CertifiedEngine::DecideSparse(CaseColumns cases, std::size_t count,
                                          CertifiedScratch& scratch, PackedScratch& packed,
                                          DecisionColumns decisions, Wanted wanted) const {
  const LevelView<float>& view = single_->view();
  const std::size_t machines = exact_.machines();
  Fit(view, operations_->single.tile, scratch, scratch.single_);
  count = std::min(plan_.CasesAtOnce(certified::kListedCases), count);
  scratch.errors_.Reserve(machines * count);
  const Estimates out{decisions.values, scratch.errors_.data(), decisions.stride, count};
  const LevelWork<float>& work = scratch.single_.work;
  count = operations_->single.sparse(view, cases, count, work, out);
  const std::size_t before = scratch.open_.size();
  const std::size_t open = ListOpen(0, count, out, scratch, wanted);
  scratch.row_.Reserve(view.fields);
  scratch.open_decisions_.Reserve(machines);
  double* row = scratch.row_.data();
  for (std::size_t i = before; i < before + open; ++i) {
    const std::size_t c = scratch.open_[i];
    std::fill_n(row, view.fields, 0.0);
    for (std::size_t e = work.case_begin[c]; e < work.case_begin[c + 1]; ++e) {
      row[work.nonzero_field[e]] = work.nonzero_value[e];
    }
    exact_.Decide(row, packed, scratch.open_decisions_.data());
    for (std::size_t m = 0; m < machines; ++m) {
      decisions.values[m * decisions.stride + c] = scratch.open_decisions_.data()[m];
    }
  }
  scratch.open_.resize(before);
  Count(Level::kSingle, count, open);
  return count;
}

void CertifiedEngine::Decide(const double* x, CertifiedScratch& scratch, PackedScratch& packed,
                             double* decisions, Wanted wanted) const {
  const Level level = plan_.level();
  const bool single = level == Level::kSingle || linear_ != nullptr;
  bool open = true;
  if (level != Level::kExact && single) {
    scratch.errors_.Reserve(exact_.machines());
    const Estimates out{decisions, scratch.errors_.data(), 1, 1};
    if (EstimateOne(x, scratch, out)) {
      open = ListOpen(0, 1, out, scratch, wanted) != 0;
      scratch.open_.clear();
    }
  }
  if (open) exact_.Decide(x, packed, decisions);
  if (scratch.alone_engine_ != number_) {
    // Two engines in turn would never come to the end of a stretch.
    scratch.alone_engine_ = number_;
    scratch.alone_tried_ = scratch.alone_open_ = 0;
    CountAlone(level, 1, open ? 1 : 0);
    return;
  }
  ++scratch.alone_tried_;
  if (open) ++scratch.alone_open_;
  if (scratch.alone_tried_ < kCountedAlone) return;
  CountAlone(level, scratch.alone_tried_, scratch.alone_open_);
  scratch.alone_tried_ = scratch.alone_open_ = 0;
}

// The vectors are spread evenly over the pool; the estimates come from the first level, all at once
// and alone.
bool CertifiedEngine::KeepsItsBounds() const {
  const std::size_t fields = exact_.fields();
  const std::size_t machines = exact_.machines();
  const std::size_t vectors = exact_.pool().size();
  const std::size_t affordable = kCheckedTerms / std::max<std::size_t>(fields * vectors, 1);
  const std::size_t count = std::min(std::clamp(affordable, kLeastChecked, kMostChecked), vectors);
  std::vector<double> cases(fields * count, 0.0);
  for (std::size_t c = 0; c < count; ++c) {
    const packed::VectorView& vector = exact_.pool()[c * vectors / count];
    for (std::size_t i = 0; i < vector.positions->size(); ++i) {
      const auto f = static_cast<std::size_t>((*vector.positions)[i]);
      cases[f * count + c] = (*vector.entries)[i];
    }
  }
  PackedScratch packed;
  CertifiedScratch scratch;
  std::vector<double> decided(machines * count);
  exact_.DecideMany({cases.data(), count}, count, packed, {decided.data(), count});
  std::vector<double> estimates(machines * count);
  std::vector<double> errors(machines * count);
  const auto holds = [&](std::size_t first, std::size_t last) {
    for (std::size_t m = 0; m < machines; ++m) {
      for (std::size_t c = first; c < last; ++c) {
        const std::size_t i = m * count + c;
        if (std::fabs(estimates[i] - decided[i]) > errors[i]) return false;
      }
    }
    return true;
  };
  const Level level = single_ != nullptr ? Level::kSingle : Level::kTwofold;
  Estimate(level, {cases.data(), count}, count, scratch,
           {estimates.data(), errors.data(), count, count});
  if (!holds(0, count)) return false;
  if (count == 0 || (single_ == nullptr && linear_ == nullptr)) return true;
  std::vector<double> row(fields);
  for (std::size_t f = 0; f < fields; ++f) row[f] = cases[f * count];
  EstimateOne(row.data(), scratch, {estimates.data(), errors.data(), count, count});
  return holds(0, 1);
}

}  // namespace MCSVM_700
