#include "svm/kernel/certified/run_members.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "svm/kernel/certified/level_view.h"

namespace MCSVM_700::certified {
namespace {

// Beyond so many machines or runs the search for a run takes too long; the pool's order is then
// taken as it is.
constexpr std::size_t kMostMachines = 512;
constexpr std::size_t kMostRuns = 256;
// A run of one column is divided where its parts keep this many vectors, into this many parts.
constexpr std::size_t kLeastPart = 128;
constexpr std::size_t kMostParts = 8;

std::vector<ColumnNumber> ColumnsOf(std::span<const SignedTerm> terms) {
  std::vector<ColumnNumber> columns;
  for (const SignedTerm& term : terms) columns.push_back(term.column);
  return columns;
}

std::vector<ColumnNumber> Joint(const std::vector<ColumnNumber>& a,
                                const std::vector<ColumnNumber>& b) {
  std::vector<ColumnNumber> joint;
  std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(joint));
  return joint;
}

// How many columns both have; -1 where one has a machine's positive and the other its negative
// coefficients.
long Common(const std::vector<ColumnNumber>& a, const std::vector<ColumnNumber>& b) {
  long common = 0;
  auto i = a.begin();
  auto j = b.begin();
  while (i != a.end() && j != b.end()) {
    if (*i == *j) {
      ++common;
      ++i;
      ++j;
    } else if (*i / 2 == *j / 2) {
      return -1;
    } else {
      ++(*i < *j ? i : j);
    }
  }
  return common;
}

// Whether a run stays a third full where vectors with as many terms join it.
bool StaysFull(const RunMembers& run, const std::vector<ColumnNumber>& columns, std::size_t vectors,
               std::size_t terms) {
  constexpr std::size_t kFew = 64;
  const std::size_t places = Joint(run.columns, columns).size() * (run.vectors.size() + vectors);
  return places <= 3 * (run.terms + terms) + kFew;
}

// The run that `vectors` with these columns and so many terms join, or runs.size() for one of their
// own; the search begins with `first`, and never returns `except`.
std::size_t RunFor(const std::vector<ColumnNumber>& columns, std::size_t vectors, std::size_t terms,
                   const std::vector<RunMembers>& runs, std::size_t first, std::size_t except) {
  const auto takes = [&](std::size_t r) {
    return Common(runs[r].columns, columns) > 0 && StaysFull(runs[r], columns, vectors, terms);
  };
  if (first < runs.size() && first != except && takes(first)) return first;
  std::size_t best = runs.size();
  long most = 0;
  for (std::size_t r = 0; r < runs.size(); ++r) {
    if (r == except || runs[r].vectors.empty()) continue;
    const long common = Common(runs[r].columns, columns);
    if (common <= most || !takes(r)) continue;
    most = common;
    best = r;
  }
  return best;
}

void Join(RunMembers& run, const std::vector<ColumnNumber>& columns, std::size_t terms,
          std::span<const std::uint32_t> vectors) {
  run.terms += terms;
  run.columns = Joint(run.columns, columns);
  run.vectors.insert(run.vectors.end(), vectors.begin(), vectors.end());
}

std::vector<RunMembers> DividedByNorm(RunMembers run, std::span<const double> norms) {
  std::stable_sort(run.vectors.begin(), run.vectors.end(),
                   [&](std::uint32_t a, std::uint32_t b) { return norms[a] < norms[b]; });
  const std::size_t count = run.vectors.size();
  const std::size_t share = (count / kMostParts + kRunStart - 1) / kRunStart * kRunStart;
  const std::size_t part = std::max(kLeastPart, share);
  std::vector<RunMembers> parts;
  for (std::size_t begin = 0; begin < count; begin += part) {
    const auto from = run.vectors.begin() + static_cast<std::ptrdiff_t>(begin);
    const auto to = from + static_cast<std::ptrdiff_t>(std::min(part, count - begin));
    parts.push_back({run.columns, {from, to}, static_cast<std::size_t>(to - from)});
  }
  return parts;
}

}  // namespace

TermsByVector::TermsByVector(const PackedEngine& engine) : begin_(engine.pool().size() + 1, 0) {
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    for (const std::uint32_t vector : engine.machine(m).vectors) ++begin_[vector + 1];
  }
  for (std::size_t v = 1; v < begin_.size(); ++v) begin_[v] += begin_[v - 1];
  terms_.resize(begin_.back());
  std::vector<std::size_t> end(begin_.begin(), begin_.end() - 1);
  for (std::size_t m = 0; m < engine.machines(); ++m) {
    const packed::MachineView machine = engine.machine(m);
    for (std::size_t k = 0; k < machine.vectors.size(); ++k) {
      const double alpha = machine.coefficients[k];
      if (alpha == 0) continue;
      const auto column = static_cast<ColumnNumber>(2 * m + (alpha < 0 ? 1 : 0));
      const std::size_t vector = machine.vectors[k];
      // A machine may use a vector more than once.
      std::size_t at = end[vector];
      while (at > begin_[vector] && terms_[at - 1].column > column) --at;
      if (at > begin_[vector] && terms_[at - 1].column == column) {
        terms_[at - 1].size += std::fabs(alpha);
        continue;
      }
      std::move_backward(terms_.begin() + static_cast<std::ptrdiff_t>(at),
                         terms_.begin() + static_cast<std::ptrdiff_t>(end[vector]),
                         terms_.begin() + static_cast<std::ptrdiff_t>(end[vector] + 1));
      terms_[at] = {column, std::fabs(alpha)};
      ++end[vector];
    }
  }
  // Close the places of what was left out.
  std::size_t next = 0;
  for (std::size_t v = 0; v + 1 < begin_.size(); ++v) {
    const std::size_t from = begin_[v];
    begin_[v] = next;
    for (std::size_t t = from; t < end[v]; ++t) terms_[next++] = terms_[t];
  }
  begin_.back() = next;
  terms_.resize(next);
}

std::vector<RunMembers> FreeRuns(const TermsByVector& terms, std::span<const double> norms) {
  std::vector<RunMembers> runs;
  std::size_t last = 0;
  std::size_t machines = 0;
  for (std::size_t v = 0; v < terms.vectors(); ++v) {
    if (!terms.Of(v).empty()) {
      machines = std::max<std::size_t>(machines, terms.Of(v).back().column / 2 + 1);
    }
  }
  if (machines > kMostMachines) return PoolRuns(terms);
  for (std::size_t v = 0; v < terms.vectors(); ++v) {
    const auto vector = static_cast<std::uint32_t>(v);
    const std::vector<ColumnNumber> columns = ColumnsOf(terms.Of(v));
    if (columns.empty()) continue;
    last = RunFor(columns, 1, columns.size(), runs, last, runs.size());
    if (last == runs.size()) {
      if (runs.size() == kMostRuns) return PoolRuns(terms);
      runs.emplace_back();
    }
    Join(runs[last], columns, columns.size(), {&vector, 1});
  }
  for (std::size_t r = 0; r < runs.size(); ++r) {
    if (runs[r].vectors.size() >= kRunStart) continue;
    const std::size_t other =
        RunFor(runs[r].columns, runs[r].vectors.size(), runs[r].terms, runs, runs.size(), r);
    if (other == runs.size()) continue;
    Join(runs[other], runs[r].columns, runs[r].terms, runs[r].vectors);
    runs[r] = {};
  }
  std::vector<RunMembers> divided;
  for (RunMembers& run : runs) {
    if (run.vectors.empty()) continue;
    if (run.columns.size() > 1) {
      divided.push_back(std::move(run));
      continue;
    }
    std::vector<RunMembers> parts = DividedByNorm(std::move(run), norms);
    std::move(parts.begin(), parts.end(), std::back_inserter(divided));
  }
  return divided;
}

// Groups join the run before them where few of the joint columns stay empty.
std::vector<RunMembers> PoolRuns(const TermsByVector& terms) {
  constexpr std::size_t kFew = 4;
  std::vector<RunMembers> runs;
  std::size_t filled = 0;  // of the last run: columns of its groups, added up
  for (std::size_t begin = 0; begin < terms.vectors(); begin += kRunStart) {
    RunMembers group;
    for (std::size_t v = begin; v < std::min(begin + kRunStart, terms.vectors()); ++v) {
      group.columns = Joint(group.columns, ColumnsOf(terms.Of(v)));
      group.terms += terms.Of(v).size();
      group.vectors.push_back(static_cast<std::uint32_t>(v));
    }
    if (!runs.empty()) {
      RunMembers& run = runs.back();
      const std::size_t groups = run.vectors.size() / kRunStart + 1;
      const std::size_t places = Joint(run.columns, group.columns).size() * groups;
      if (2 * places <= 3 * (filled + group.columns.size()) + kFew) {
        filled += group.columns.size();
        Join(run, group.columns, group.terms, group.vectors);
        continue;
      }
    }
    filled = group.columns.size();
    runs.push_back(std::move(group));
  }
  return runs;
}

}  // namespace MCSVM_700::certified
