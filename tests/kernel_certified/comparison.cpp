#include "tests/kernel_certified/comparison.h"

#include <cmath>
#include <cstdio>
#include <utility>

namespace hard {

using MCSVM_700::certified::Estimates;
using MCSVM_700::certified::Level;
using MCSVM_700::certified::VoteRule;

namespace {

constexpr std::size_t kAlone = 5;  // every so many cases are taken alone as well

void Fault(Tally& tally, const char* what, std::size_t machine, std::size_t c, double exact,
           double found, double error) {
  if (!tally.first.empty()) return;
  char text[200];
  std::snprintf(text, sizeof text, "%s: machine %zu, case %zu: %a, exact %a, bound %g", what,
                machine, c, found, exact, error);
  tally.first = text;
}

std::vector<double> Of(const std::vector<double>& values, std::size_t machines, std::size_t count,
                       std::size_t c) {
  std::vector<double> one;
  for (std::size_t m = 0; m < machines; ++m) one.push_back(values[m * count + c]);
  return one;
}

}  // namespace

void Tally::Add(const Tally& other) {
  estimates += other.estimates;
  bounded += other.bounded;
  outside += other.outside;
  cases += other.cases;
  sure += other.sure;
  wrong += other.wrong;
  closest = std::max(closest, other.closest);
  if (first.empty()) first = other.first;
}

std::vector<int> VoteOf(const VoteRule& rule, const std::vector<double>& values) {
  std::vector<int> vote;
  if (rule.kind == VoteRule::Kind::kThresholds) {
    for (std::size_t m = 0; m < values.size(); ++m) {
      const double t = rule.thresholds[m];
      vote.push_back(values[m] < t ? -1 : values[m] > t ? 1 : values[m] == t ? 0 : 2);
    }
    return vote;
  }
  vote = {0, 0};
  for (std::size_t m = 1; m < values.size(); ++m) {
    const auto better = [&](int than, bool or_equal) {
      const double sign = rule.kind == VoteRule::Kind::kLargest ? 1 : -1;
      const double best = sign * values[static_cast<std::size_t>(than)];
      return sign * values[m] > best || (or_equal && sign * values[m] == best);
    };
    if (better(vote[0], false)) vote[0] = static_cast<int>(m);
    if (better(vote[1], true)) vote[1] = static_cast<int>(m);
  }
  return vote;
}

Pair::Pair(const sample::Model& model, VoteRule rule,
           const MCSVM_700::packed::Operations* operations)
    : machines_(model.machines.size()),
      rule_(std::move(rule)),
      exact_(model.Input(), operations),
      certified_(exact_, rule_) {}

std::vector<double> Pair::Decide(const sample::Cases& cases) {
  std::vector<double> values(machines_ * cases.count);
  exact_.DecideMany({cases.columns.data(), cases.count}, cases.count, packed_scratch_,
                    {values.data(), cases.count});
  return values;
}

void Pair::CompareVotes(const char* what, const std::vector<double>& exact,
                        const std::vector<double>& found, const std::uint8_t* unsure,
                        Tally& tally) {
  const std::size_t count = machines_ == 0 ? 0 : exact.size() / machines_;
  for (std::size_t c = 0; c < count; ++c) {
    if (unsure != nullptr && unsure[c] != 0) continue;
    const std::vector<double> values = Of(exact, machines_, count, c);
    const std::vector<double> others = Of(found, machines_, count, c);
    if (VoteOf(rule_, values) == VoteOf(rule_, others)) continue;
    ++tally.wrong;
    Fault(tally, what, 0, c, values[0], others[0], NAN);
  }
}

void Pair::CompareEstimates(const char* level, const std::vector<double>& exact, std::size_t count,
                            double scale, Tally& tally) {
  for (std::size_t i = 0; i < machines_ * count; ++i) {
    errors_[i] *= scale;
    ++tally.estimates;
    if (!(errors_[i] < INFINITY)) continue;
    ++tally.bounded;
    const double error = std::fabs(estimates_[i] - exact[i]);
    if (error > 0 && error < INFINITY) {
      tally.closest = std::max(tally.closest, error / errors_[i]);
    }
    if (error <= errors_[i]) continue;  // false for NaN
    ++tally.outside;
    Fault(tally, level, i / count, i % count, exact[i], estimates_[i], errors_[i]);
  }
  std::vector<std::uint8_t> unsure(count);
  std::vector<std::uint32_t> best(count);
  std::vector<double> low(count);
  FindUnsure(rule_, machines_, {estimates_.data(), errors_.data(), count, count}, count,
             unsure.data(), best.data(), low.data());
  tally.cases += count;
  tally.sure += static_cast<std::size_t>(std::count(unsure.begin(), unsure.end(), 0));
  CompareVotes(level, exact, estimates_, unsure.data(), tally);
}

void Pair::Compare(const sample::Cases& cases, double scale, Tally& tally) {
  const std::size_t count = cases.count;
  const std::vector<double> exact = Decide(cases);
  estimates_.resize(exact.size());
  errors_.resize(exact.size());
  const Estimates out{estimates_.data(), errors_.data(), count, count};
  for (const Level level : {Level::kSingle, Level::kTwofold}) {
    if (!certified_.Estimate(level, {cases.columns.data(), count}, count, scratch_, out)) continue;
    CompareEstimates(NameOf(level), exact, count, scale, tally);
  }
  std::vector<double> found(exact.size());
  certified_.DecideMany({cases.columns.data(), count}, count, scratch_, packed_scratch_,
                        {found.data(), count});
  CompareVotes("decided", exact, found, nullptr, tally);
  for (std::size_t c = 0; c < count; c += kAlone) {
    const std::vector<double> x = cases.Case(c);
    const std::vector<double> values = Of(exact, machines_, count, c);
    if (certified_.EstimateOne(x.data(), scratch_, {out.decisions, out.errors, 1, 1})) {
      CompareEstimates("one case", values, 1, scale, tally);
    }
    certified_.Decide(x.data(), scratch_, packed_scratch_, found.data());
    CompareVotes("one case decided", values, Of(found, machines_, 1, 0), nullptr, tally);
  }
}

}  // namespace hard
