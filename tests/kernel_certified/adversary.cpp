// certified_adversary [MILLIONS [SEED]] [--scale FACTOR]: random models, and cases sought where
// estimates are most likely to mislead, until every instruction set of this CPU has given so many
// million estimates (1). Prints what was compared. Exit status 1 if an estimate was further from
// the exact decision value than its bound, or a certain vote or a winner was wrong. With
// --scale 0.3 bounds are taken for that part of what they are: there must then be such estimates.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

#include "svm/kernel/packed/operations.h"
#include "tests/kernel_certified/comparison.h"
#include "tests/kernel_certified/hard_models.h"

namespace {

namespace packed = MCSVM_700::packed;
using hard::Kind;
using hard::Tally;
using sample::Random;

constexpr std::size_t kPairs = 12;
constexpr int kHalvings = 56;

// Halves the way between cases of different votes until it can be halved no more.
void Bisect(const sample::Model& model, const MCSVM_700::certified::VoteRule& rule, double scale,
            hard::Pair& pair, Random& random, Tally& tally) {
  const sample::Cases ends = hard::RandomCases(model, Kind::kNear, 2 * kPairs, random);
  const std::vector<double> decided = pair.Decide(ends);
  const auto vote = [&](const std::vector<double>& values, std::size_t count, std::size_t c) {
    std::vector<double> of_case;
    for (std::size_t i = c; i < values.size(); i += count) of_case.push_back(values[i]);
    return hard::VoteOf(rule, of_case);
  };
  std::vector<std::size_t> pairs;
  for (std::size_t p = 0; p < kPairs; ++p) {
    if (vote(decided, ends.count, p) != vote(decided, ends.count, p + kPairs)) pairs.push_back(p);
  }
  if (pairs.empty()) return;
  const std::size_t count = pairs.size();
  std::vector<double> low(count, 0.0);
  std::vector<double> high(count, 1.0);
  sample::Cases middle{model.fields, count, std::vector<double>(model.fields * count)};
  for (int step = 0; step < kHalvings; ++step) {
    for (std::size_t i = 0; i < middle.columns.size(); ++i) {
      const std::size_t at = i / count * ends.count + pairs[i % count];
      const double from = ends.columns[at];
      const double part = 0.5 * (low[i % count] + high[i % count]);
      middle.columns[i] = from + part * (ends.columns[at + kPairs] - from);
    }
    if (step >= 8) pair.Compare(middle, scale, tally);
    const std::vector<double> values = pair.Decide(middle);
    for (std::size_t i = 0; i < count; ++i) {
      const bool first = vote(values, count, i) == vote(decided, ends.count, pairs[i]);
      (first ? low : high)[i] = 0.5 * (low[i] + high[i]);
    }
  }
}

const char* NameOf(const sample::Model& model) {
  if (model.form == packed::KernelFunctionType::kLinear) return "linear";
  if (model.form == packed::KernelFunctionType::kRadialBasis) return "radial basis";
  if (model.form == packed::KernelFunctionType::kSigmoid) return "sigmoid";
  return model.degree == 2 ? "polynomial 2" : "polynomial 3";
}

// All tests of one model; the second time with a rule that its cases hardly obey.
void TryModel(const packed::Operations* operations, double scale, Random& random,
              std::map<std::string, Tally>& tallies) {
  constexpr const char* kNames[] = {"near", "vectors", "magnitudes", "any size", "odd"};
  const sample::Model model = hard::RandomModel(random);
  const std::size_t machines = model.machines.size();
  const sample::Cases seen = hard::RandomCases(model, Kind::kNear, 24, random);
  const auto rule =
      hard::RandomRule(hard::Pair(model, {{}, std::vector<double>(machines)}, nullptr).Decide(seen),
                       machines, random);
  hard::Pair pair(model, rule, operations);
  Tally all;
  const auto add = [&](const std::string& name, const Tally& tally) {
    tallies["by cases: " + name].Add(tally);
    all.Add(tally);
  };
  Tally on_rule;
  pair.Compare(seen, scale, on_rule);
  add("of the threshold", on_rule);
  for (const Kind kind : hard::kKinds) {
    Tally tally;
    const std::size_t count = 1 + random.Below(random.Chance(0.3) ? 150 : 30);
    pair.Compare(hard::RandomCases(model, kind, count, random), scale, tally);
    add(kNames[static_cast<std::size_t>(kind)], tally);
  }
  Tally bisected;
  Bisect(model, rule, scale, pair, random, bisected);
  add("bisected", bisected);
  tallies[std::string("by kernel: ") + NameOf(model)].Add(all);
  tallies["in all"].Add(all);
}

void Print(const std::string& name, const Tally& tally) {
  const auto share = [](std::size_t part, std::size_t whole) {
    return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
  };
  std::printf("  %-28s %12zu %8.2f%% %8.2f%% %9.3f %8zu %8zu\n", name.c_str(), tally.estimates,
              share(tally.bounded, tally.estimates), share(tally.sure, tally.cases), tally.closest,
              tally.outside, tally.wrong);
}

}  // namespace

int main(int argc, char** argv) {
  double scale = 1;
  std::vector<double> numbers = {1, 1};
  for (int i = 1, place = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--scale") == 0 && i + 1 < argc) {
      scale = std::atof(argv[++i]);
    } else if (place < 2) {
      numbers[static_cast<std::size_t>(place++)] = std::atof(argv[i]);
    }
  }
  bool failed = false;
  for (const packed::Isa isa : {packed::Isa::kAvx2, packed::Isa::kAvx512}) {
    if (!svmscore::CpuHas(isa)) {
      std::printf("%s: this CPU lacks it\n", svmscore::NameOf(isa));
      continue;
    }
    Random random(static_cast<std::uint64_t>(numbers[1]));
    std::map<std::string, Tally> tallies;
    std::size_t models = 0;
    while (static_cast<double>(tallies["in all"].estimates) < numbers[0] * 1e6) {
      TryModel(packed::OperationsOf(isa), scale, random, tallies);
      ++models;
    }
    std::printf("%s: %zu models, bounds times %g\n  %-28s %12s %9s %9s %9s %8s %8s\n",
                svmscore::NameOf(isa), models, scale, "", "estimates", "bounded", "sure",
                "of bound", "outside", "wrong");
    for (const auto& [name, tally] : tallies) Print(name, tally);
    const Tally& all = tallies["in all"];
    if (!all.first.empty()) std::printf("  first fault: %s\n", all.first.c_str());
    failed = failed || !all.first.empty();
  }
  return failed ? 1 : 0;
}
