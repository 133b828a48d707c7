#include "tools/explain/background.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/model/score_status.h"

namespace svmscore::tools {
namespace {

bool AllFinite(const std::vector<double>& numbers) {
  return std::all_of(numbers.begin(), numbers.end(),
                     [](double number) { return std::isfinite(number); });
}

// The decision values are computed so many cases at a time.
constexpr std::size_t kCasesAtOnce = 64;

Background WithoutUndecided(BatchModel& batch, const Background& all) {
  const std::size_t entries = batch.EntryCount();
  std::vector<std::size_t> kept;
  std::vector<double> decisions(batch.DecisionCount() * kCasesAtOnce);
  for (std::size_t first = 0; first < all.count; first += kCasesAtOnce) {
    const std::size_t count = std::min(kCasesAtOnce, all.count - first);
    BatchResults results;
    results.decisions = decisions.data();
    results.stride = kCasesAtOnce;
    std::fill(decisions.begin(), decisions.end(), std::numeric_limits<double>::quiet_NaN());
    batch.ScoreBatch({all.entries.data() + first, all.count, count}, results);
    for (std::size_t c = 0; c < count; ++c) {
      bool finite = true;
      for (std::size_t at = c; at < decisions.size(); at += kCasesAtOnce) {
        finite = finite && std::isfinite(decisions[at]);
      }
      if (finite) kept.push_back(first + c);
    }
  }
  Background result;
  result.count = kept.size();
  result.left_out = all.count - kept.size();
  result.rows_seen = all.rows_seen - result.left_out;
  result.entries.reserve(entries * kept.size());
  for (std::size_t e = 0; e < entries; ++e) {
    for (const std::size_t row : kept) {
      result.entries.push_back(all.entries[e * all.count + row]);
    }
  }
  return result;
}

}  // namespace

BackgroundRows::BackgroundRows(std::size_t entry_count, std::size_t most, std::uint64_t seed)
    : entry_count_(entry_count), most_(most), draw_(seed) {}

// Each row that comes takes a place among those kept with the probability that it should have, and
// drives out another, each as likely (J. S. Vitter's algorithm R, 1985).
void BackgroundRows::Add(const double* entries, std::size_t stride) {
  const std::uint64_t number = seen_++;
  std::size_t place = numbers_.size();
  if (most_ > 0 && place == most_) {
    const std::uint64_t drawn = draw_.Below(seen_);
    if (drawn >= most_) return;
    place = static_cast<std::size_t>(drawn);
  } else {
    numbers_.emplace_back();
    entries_.resize(entries_.size() + entry_count_);
  }
  numbers_[place] = number;
  for (std::size_t e = 0; e < entry_count_; ++e) {
    entries_[place * entry_count_ + e] = entries[e * stride];
  }
}

Background BackgroundRows::Take() {
  std::vector<std::size_t> order(numbers_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [this](std::size_t a, std::size_t b) { return numbers_[a] < numbers_[b]; });
  Background taken;
  taken.count = order.size();
  taken.rows_seen = seen_;
  taken.entries.resize(entry_count_ * taken.count);
  for (std::size_t r = 0; r < taken.count; ++r) {
    for (std::size_t e = 0; e < entry_count_; ++e) {
      taken.entries[e * taken.count + r] = entries_[order[r] * entry_count_ + e];
    }
  }
  *this = BackgroundRows(entry_count_, most_, 0);
  return taken;
}

BackgroundReader::BackgroundReader(BatchModel& model, std::size_t most, std::uint64_t seed)
    : model_(model),
      rows_(model.EntryCount(), most, seed),
      entries_(model.EntryCount()),
      decisions_(model.DecisionCount()) {}

BackgroundCase BackgroundReader::Add(const MCZandor_850::InputCaseRecord& record) {
  if (record.HasInvalid()) return {MCScore::kInvalidValue};
  const MCScore::MCStatus status = model_.ReadCase(record, false, entries_.data(), 1);
  if (status.IsError()) return {status.GetErrorCode()};
  std::fill(decisions_.begin(), decisions_.end(), std::numeric_limits<double>::quiet_NaN());
  BatchResults results;
  results.decisions = decisions_.data();
  results.stride = 1;
  model_.ScoreBatch({entries_.data(), 1, 1}, results);
  if (!AllFinite(entries_) || !AllFinite(decisions_)) {
    return {MCScore::kInvalidValue, decisions_.data()};
  }
  rows_.Add(entries_.data(), 1);
  return {0, decisions_.data()};
}

std::string WhyNoVectorBackground(const ExplainableModel& model, const Players& players) {
  for (const Player& player : players.list) {
    if (player.inputs.size() == 1 || player.entries.empty()) continue;
    std::vector<std::string> names;
    for (const auto* input : player.inputs) names.push_back(input->GetName());
    return fmt::format("the inputs {} meet in {}, so that its support vectors are no cases",
                       fmt::join(names, " and "), model.EntryName(player.entries.front()));
  }
  if (!players.others.empty()) {
    return fmt::format("{} depends on no input, so that its support vectors are no cases",
                       model.EntryName(players.others.front()));
  }
  std::size_t count = 0;
  static_cast<void>(model.VectorsAsCases(count));
  return count > 0 ? ""
                   : "it has no support vectors that are cases, as where a linear model is written "
                     "by its weights";
}

Background VectorBackground(BatchModel& batch, const ExplainableModel& model, std::size_t most,
                            std::uint64_t seed) {
  std::size_t count = 0;
  const std::vector<double> vectors = model.VectorsAsCases(count);
  BackgroundRows rows(batch.EntryCount(), most, seed);
  for (std::size_t i = 0; i < count; ++i) rows.Add(vectors.data() + i, count);
  return WithoutUndecided(batch, rows.Take());
}

}  // namespace svmscore::tools
