#include "svm/kernel/explain/game.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <map>
#include <numeric>
#include <utility>

namespace MCSVM_700::explain {

Game::Game(std::vector<std::vector<std::size_t>> players, packed::CaseColumns background,
           std::size_t rows, const MachineSums& sums)
    : players_(std::move(players)), entries_(sums.entries()), rows_(rows) {
  background_.resize(rows_ * entries_);
  for (std::size_t e = 0; e < entries_; ++e) {
    for (std::size_t b = 0; b < rows_; ++b) {
      background_[b * entries_ + e] = background.entries[e * background.stride + b];
    }
  }
  FindValues();
  FindAlike(sums);
}

void Game::FindValues() {
  value_of_.resize(rows_ * players());
  std::vector<std::uint32_t> order(rows_);
  for (std::size_t j = 0; j < players(); ++j) {
    const auto compare = [&](std::uint32_t a, std::uint32_t b) {
      for (const std::size_t e : players_[j]) {
        const double left = row(a)[e];
        const double right = row(b)[e];
        if (left < right) return -1;
        if (right < left) return 1;
      }
      return 0;
    };
    std::iota(order.begin(), order.end(), 0u);
    std::stable_sort(order.begin(), order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return compare(a, b) < 0; });
    std::vector<std::uint32_t>& first = first_row_.emplace_back();
    for (const std::uint32_t b : order) {
      if (first.empty() || compare(first.back(), b) != 0) first.push_back(b);
      value_of_[b * players() + j] = static_cast<std::uint32_t>(first.size() - 1);
    }
  }
}

void Game::FindAlike(const MachineSums& sums) {
  // The vectors' entries, then the background's, as bits, so that NaN has a place in the order.
  using Column =
      std::pair<std::vector<std::pair<std::uint32_t, std::uint64_t>>, std::vector<std::uint64_t>>;
  const auto bits = [](double number) { return std::bit_cast<std::uint64_t>(number + 0.0); };
  std::vector<Column> columns(entries_);
  for (std::uint32_t v = 0; v < sums.vectors().size(); ++v) {
    const SparseVector& vector = sums.vectors()[v];
    for (std::size_t k = 0; k < vector.at.size(); ++k) {
      if (vector.value[k] == 0.0) continue;
      columns[vector.at[k]].first.emplace_back(v, bits(vector.value[k]));
    }
  }
  for (std::size_t e = 0; e < entries_; ++e) {
    for (std::size_t b = 0; b < rows_; ++b) columns[e].second.push_back(bits(row(b)[e]));
  }
  std::map<std::vector<const Column*>, std::vector<std::uint32_t>> classes;
  const auto before = [](const Column* a, const Column* b) { return std::less<>()(*a, *b); };
  std::map<const Column*, const Column*, decltype(before)> kinds(before);
  for (std::size_t j = 0; j < players(); ++j) {
    std::vector<const Column*> key;
    for (const std::size_t e : players_[j]) {
      key.push_back(kinds.emplace(&columns[e], &columns[e]).first->second);
    }
    classes[key].push_back(static_cast<std::uint32_t>(j));
  }
  for (auto& [key, members] : classes) {
    if (members.size() > 1) alike_.push_back(std::move(members));
  }
  std::sort(alike_.begin(), alike_.end());
}

void Game::Match(const double* x, std::uint32_t* match) const {
  for (std::size_t j = 0; j < players(); ++j) {
    match[j] = kNew;
    for (std::size_t value = 0; value < first_row_[j].size(); ++value) {
      const double* const of = row(first_row_[j][value]);
      const auto& entries = players_[j];
      if (std::all_of(entries.begin(), entries.end(),
                      [&](std::size_t e) { return x[e] == of[e]; })) {
        match[j] = static_cast<std::uint32_t>(value);
        break;
      }
    }
  }
}

bool Game::SameEntries(const double* x, std::size_t player, std::size_t other) const {
  const auto& a = players_[player];
  const auto& b = players_[other];
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [x](std::size_t e, std::size_t f) { return x[e] == x[f]; });
}

void Game::Even(const double* x, std::size_t machines, double* values) const {
  for (const std::vector<std::uint32_t>& members : alike_) {
    std::vector<std::uint32_t> seen;
    for (const std::uint32_t player : members) {
      const auto same = std::find_if(seen.begin(), seen.end(), [&](std::uint32_t other) {
        return SameEntries(x, player, other);
      });
      if (same == seen.end()) {
        seen.push_back(player);
        continue;
      }
      for (std::size_t m = 0; m < machines; ++m) {
        values[m * players() + player] = values[m * players() + *same];
      }
    }
  }
}

}  // namespace MCSVM_700::explain
