// Shapley values against their definition, and what holds for all of them.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "host/model/instruction_set.h"
#include "tests/kernel_explain/explained.h"
#include "tests/model/model_fixture.h"

namespace {

using explained::ExpectSound;
using explained::Found;
using explained::Kernel;
using explained::kRbf;
using explained::kSigmoid;
using explained::Polynomial;
using explained::RandomSample;
using explained::Row;
using explained::Sample;
using explained::ScaleOf;
using svmscore_test::Bits;

// The largest difference, in units of each machine's sum of the coefficients' sizes.
double Distance(const Sample& sample, const Row& expected, const Row& found) {
  EXPECT_EQ(expected.size(), found.size());
  double largest = 0.0;
  for (std::size_t i = 0; i < found.size(); ++i) {
    const std::size_t machine = i / sample.players.size() % sample.machines.size();
    const double distance = std::abs(expected[i] - found[i]) / ScaleOf(sample, machine);
    if (!(distance <= largest)) largest = distance;  // NaN stays
  }
  return largest;
}

struct Truth {
  std::string name;
  Sample sample;
};

std::vector<Truth> Truths() {
  std::vector<Truth> truths;
  const auto add = [&](std::string name, Sample sample) {
    truths.push_back({std::move(name), std::move(sample)});
  };
  const std::pair<std::string, Kernel> kernels[] = {{"rbf", kRbf},
                                                    {"linear", {SVMConst::kLinear}},
                                                    {"degree 0", Polynomial(0)},
                                                    {"degree 1", Polynomial(1)},
                                                    {"degree 2", Polynomial(2)},
                                                    {"degree 3", Polynomial(3)},
                                                    {"degree 4", Polynomial(4)},
                                                    {"degree 5", Polynomial(5)},
                                                    {"degree 8", Polynomial(8)},
                                                    {"no gamma", {SVMConst::kRadialBasis, 0.0}},
                                                    {"narrow", {SVMConst::kRadialBasis, 20.0}},
                                                    {"growing", {SVMConst::kRadialBasis, -0.02}}};
  for (const auto& [name, kernel] : kernels) {
    const double gamma = kernel.gamma;
    for (std::size_t players = 1; players <= 9; players += 2) {
      Kernel scaled = kernel;
      if (kernel.type == SVMConst::kPolynomial) scaled.gamma = gamma / static_cast<double>(players);
      add(name + ", " + std::to_string(players) + " players",
          RandomSample(scaled, players, 70, 4, 3, players));
    }
    // Indicators and numbers: players of many entries, of one, and of none.
    Sample grouped = RandomSample(kernel, 14, 40, 6, 2, 5, 0.4);
    grouped.players = {{0, 1, 2, 3}, {7}, {}, {4, 5, 6}, {13, 8}, {9}, {10}, {11, 12}};
    grouped.background[3] = grouped.background[1];
    add(name + ", groups", grouped);
  }
  add("12 players", RandomSample(kRbf, 12, 33, 3, 1, 77));
  // As the plain kernels walk them: unordered, repeated and out-of-range positions.
  for (const Kernel& kernel : {kRbf, Polynomial(2), Polynomial(6)}) {
    Sample odd = RandomSample(kernel, 6, 5, 3, 2, 8);
    odd.positions[0] = {4, 1, 5, 2};
    odd.positions[1] = {0, 0, 3, 3};
    odd.positions[2] = {2, 9, 3, 4};
    odd.positions[3] = {-1, 2};
    for (std::size_t v = 0; v < 4; ++v) odd.entries[v].resize(odd.positions[v].size());
    odd.machines[0].vectors.push_back(odd.machines[0].vectors[0]);  // a vector twice
    odd.machines[0].coefficients.push_back(0.7);
    add("odd positions", odd);
  }
  return truths;
}

TEST(ShapleyValues, AreThoseOfTheDefinition) {
  for (const Truth& truth : Truths()) {
    SCOPED_TRACE(truth.name);
    const Found found = explained::Explain(truth.sample);
    EXPECT_LE(Distance(truth.sample, explained::ByDefinition(truth.sample), found.values), 1e-12);
    EXPECT_FALSE(found.sampled);
    EXPECT_EQ(Row(found.errors.size(), 0.0), found.errors);
    ExpectSound(truth.sample, found);
  }
}

// Of one machine with a radial basis, by the polynomial of the numbers of present players.
long double ByPolynomial(const Sample& sample, const Row& x, std::size_t player) {
  const std::size_t players = sample.players.size();
  std::vector<long double> share(players, 1.0L / static_cast<long double>(players));
  for (std::size_t k = 1; k < players; ++k) {
    share[k] = share[k - 1] * static_cast<long double>(k) / static_cast<long double>(players - k);
  }
  long double sum = 0.0L;
  for (std::size_t v = 0; v < sample.entries.size(); ++v) {
    for (const Row& row : sample.background) {
      Row entries(sample.fields(), 0.0);
      for (std::size_t k = 0; k < sample.entries[v].size(); ++k) {
        entries[static_cast<std::size_t>(sample.positions[v][k])] = sample.entries[v][k];
      }
      const auto factor = [&](const Row& of, std::size_t j) {
        long double distance = 0.0L;
        for (const std::size_t e : sample.players[j]) {
          const long double difference =
              static_cast<long double>(of[e]) - static_cast<long double>(entries[e]);
          distance += difference * difference;
        }
        return std::exp(-static_cast<long double>(sample.kernel.gamma) * distance);
      };
      std::vector<long double> polynomial = {1.0L};
      for (std::size_t j = 0; j < players; ++j) {
        if (j == player) continue;
        polynomial.push_back(0.0L);
        const long double present = factor(x, j);
        const long double absent = factor(row, j);
        for (std::size_t k = polynomial.size() - 1; k > 0; --k) {
          polynomial[k] = polynomial[k] * absent + polynomial[k - 1] * present;
        }
        polynomial[0] *= absent;
      }
      long double mean = 0.0L;
      for (std::size_t k = 0; k < players; ++k) mean += share[k] * polynomial[k];
      sum += static_cast<long double>(sample.machines[0].coefficients[v]) * mean *
             (factor(x, player) - factor(row, player));
    }
  }
  return sum / static_cast<long double>(sample.background.size());
}

TEST(ShapleyValues, StayAccurateWithManyPlayers) {
  struct Large {
    std::size_t fields;
    double gamma;
    double fill;
    std::size_t vectors;
  };
  for (const Large& large :
       {Large{64, 1.0 / 64, 1, 35}, Large{64, 3.0, 1, 35}, Large{64, 1e-4, 1, 35},
        Large{500, 1.0 / 500, 1, 3}, Large{500, 0.5, 0.5, 3}, Large{1200, 1e-3, 1, 2}}) {
    Sample sample = RandomSample({SVMConst::kRadialBasis, large.gamma}, large.fields, large.vectors,
                                 3, 1, large.fields, large.fill);
    sample.machines[0].vectors.resize(large.vectors);
    std::iota(sample.machines[0].vectors.begin(), sample.machines[0].vectors.end(), 0);
    sample.machines[0].coefficients.assign(large.vectors, -1.5);
    sample.machines[0].coefficients[0] = 2.0;
    if (large.fill < 1) {  // indicators
      for (auto* rows : {&sample.entries, &sample.background, &sample.cases}) {
        for (Row& row : *rows) {
          for (double& entry : row) entry = entry == 0.0 ? 0.0 : 1.0;
        }
      }
    }
    // A case that is a vector, where integrands are as steep as can be.
    Row& steep = sample.cases[0];
    std::fill(steep.begin(), steep.end(), 0.0);
    for (std::size_t k = 0; k < sample.entries[0].size(); ++k) {
      steep[static_cast<std::size_t>(sample.positions[0][k])] = sample.entries[0][k];
    }
    SCOPED_TRACE(testing::Message() << large.fields << " fields, gamma " << large.gamma);
    const Found found = explained::Explain(sample);
    for (std::size_t c = 0; c < 2; ++c) {
      for (std::size_t j = 0; j < large.fields; j += large.fields / 4) {
        EXPECT_NEAR(static_cast<double>(ByPolynomial(sample, sample.cases[c], j)),
                    found.values[c * large.fields + j], 1e-16 * ScaleOf(sample, 0));
      }
    }
    ExpectSound(sample, found);
  }
}

TEST(ShapleyValues, AreEqualForPlayersThatNothingDistinguishes) {
  for (const Kernel& kernel :
       {kRbf, Kernel{SVMConst::kLinear}, Polynomial(2), Polynomial(6), kSigmoid}) {
    SCOPED_TRACE(testing::Message() << kernel.type << " " << kernel.degree);
    Sample sample = RandomSample(kernel, 7, 20, 5, 2, 3);
    for (auto* rows : {&sample.entries, &sample.background, &sample.cases}) {
      for (Row& row : *rows) row[5] = row[1];
    }
    sample.cases[1][5] += 1.0;
    sample.players = {{0}, {1}, {2, 3}, {4}, {5}, {6}};
    const Found found = explained::Explain(sample);
    for (std::size_t m = 0; m < 2; ++m) {
      const double* values = &found.values[m * 6];
      EXPECT_EQ(values[1], values[4]);
      EXPECT_NE(values[1], values[12 + 4]);
      EXPECT_NE(found.values[12 + m * 6 + 1], found.values[12 + m * 6 + 4]);
    }
  }
}

TEST(ShapleyValues, OfPlayersWithoutEffectAreZero) {
  for (const Kernel& kernel :
       {kRbf, Kernel{SVMConst::kLinear}, Polynomial(3), Polynomial(6), kSigmoid}) {
    SCOPED_TRACE(testing::Message() << kernel.type << " " << kernel.degree);
    Sample sample = RandomSample(kernel, 5, 20, 5, 1, 4);
    sample.players = {{0}, {}, {1, 2}, {3}, {4}};
    for (Row& row : sample.background) row[3] = sample.cases[0][3];
    const bool radial = kernel.type == SVMConst::kRadialBasis;
    if (!radial) {  // no vector has the entry
      for (std::size_t v = 0; v < sample.entries.size(); ++v) {
        sample.positions[v].pop_back();
        sample.entries[v].pop_back();
      }
    }
    const Found found = explained::Explain(sample);
    EXPECT_EQ(Bits({0.0, 0.0}), Bits({found.values[1], found.values[3]}));
    EXPECT_NE(0.0, found.values[5 + 3]);
    if (radial) {
      EXPECT_NE(0.0, found.values[4]);
    } else {
      EXPECT_EQ(Bits({0.0}), Bits({found.values[4]}));
    }
  }
}

TEST(ShapleyValues, SurviveFactorsThatVanish) {
  for (const double gamma : {5.0, 200.0, 1e12}) {
    Sample sample = RandomSample({SVMConst::kRadialBasis, gamma}, 40, 9, 3, 1, 6);
    sample.cases[0] = sample.entries[sample.machines[0].vectors[0]];
    sample.cases[1][0] = 1e200;
    const Found found = explained::Explain(sample);
    ExpectSound(sample, found);
    // From nowhere near any vector to one of them: all players did as much.
    for (std::size_t j = 0; gamma > 1e9 && j < 40; ++j) {
      EXPECT_NEAR(found.values[j], sample.machines[0].coefficients[0] / 40, 1e-13);
    }
  }
}

TEST(ShapleyValues, AreNotANumberWhereNothingCanBeSaid) {
  const double infinity = HUGE_VAL;
  for (const Kernel& kernel : {kRbf, Kernel{SVMConst::kLinear}, Polynomial(2), kSigmoid}) {
    SCOPED_TRACE(testing::Message() << kernel.type);
    Sample sample = RandomSample(kernel, 4, 10, 3, 2, 5);
    const Found finite = explained::Explain(sample);
    sample.cases.insert(sample.cases.begin() + 1, {1, svmscore_test::kNaN, 0, 0});
    sample.cases.push_back({1, 2, -infinity, 0});
    const Found found = explained::Explain(sample);
    for (const std::size_t c : {0u, 1u, 2u, 3u}) {
      for (const auto& [all, some, width] : {std::tuple{&found.decisions, &finite.decisions, 2},
                                             {&found.values, &finite.values, 8},
                                             {&found.errors, &finite.errors, 8},
                                             {&found.gradients, &finite.gradients, 8}}) {
        const Row of_case(all->begin() + width * static_cast<int>(c),
                          all->begin() + width * static_cast<int>(c + 1));
        if (c % 2 == 0) {
          const auto from = some->begin() + width * static_cast<int>(c / 2);
          EXPECT_EQ(Bits(Row(from, from + width)), Bits(of_case));
        } else {
          EXPECT_TRUE(std::all_of(of_case.begin(), of_case.end(),
                                  [](double value) { return std::isnan(value); }));
        }
      }
    }
    // A vector that makes one machine's decision value NaN leaves the other alone.
    sample = RandomSample(kernel, 4, 10, 3, 2, 5);
    sample.entries[3][2] = svmscore_test::kNaN;
    sample.machines[0] = {{0, 1, 2}, {1, 2, 3}};
    sample.machines[1] = {{2, 3}, {1, 1}};
    const Found one = explained::Explain(sample);
    for (std::size_t i = 0; i < one.values.size(); ++i) {
      EXPECT_EQ(i / 4 % 2 == 1, std::isnan(one.values[i])) << i;
    }
  }
}

TEST(ShapleyValues, HaveTheSameBitsOnAllInstructionSetsAndThreads) {
  const svmscore::Isa chosen = svmscore::ChosenIsa().isa;
  std::vector<Sample> samples;
  const Kernel vanishing{SVMConst::kRadialBasis, 45.0};  // in some of the lanes
  for (const Kernel& kernel : {kRbf, vanishing, Polynomial(3), Polynomial(7), kSigmoid}) {
    for (const std::size_t fields : {1u, 6u, 19u, 40u, 130u}) {
      samples.push_back(RandomSample(kernel, fields, 67, 3, 2, fields, 0.8));
    }
  }
  for (const Sample& sample : samples) {
    SCOPED_TRACE(testing::Message() << sample.kernel.type << " " << sample.fields());
    std::vector<Found> found;
    for (const auto isa : {svmscore::Isa::kPlain, svmscore::Isa::kSse2, svmscore::Isa::kAvx2,
                           svmscore::Isa::kAvx512}) {
      if (!svmscore::CpuHas(isa)) continue;
      svmscore::UseIsa(isa);
      found.push_back(explained::Explain(sample));
      SCOPED_TRACE(svmscore::NameOf(isa));
      EXPECT_EQ(Bits(found[0].values), Bits(found.back().values));
      EXPECT_EQ(Bits(found[0].errors), Bits(found.back().errors));
      EXPECT_EQ(Bits(found[0].gradients), Bits(found.back().gradients));
    }
    svmscore::UseIsa(chosen);
    const auto model = sample.Model();
    const auto explainer = sample.Explainer(*model);
    const std::vector<double> columns = explained::Columns(sample.cases);
    std::vector<Row> values(3, Row(found[0].values.size()));
    std::vector<std::thread> threads;
    for (Row& row : values) {
      threads.emplace_back([&] {
        svmscore::Explanations out;
        out.values = row.data();
        explainer->Explain({columns.data(), 2, 2}, out);
      });
    }
    for (std::thread& thread : threads) thread.join();
    for (const Row& row : values) EXPECT_EQ(Bits(found[0].values), Bits(row));
  }
}

// More of the background than is kept, and more cases than are taken together.
TEST(ShapleyValues, DoNotDependOnWhatIsKept) {
  Sample sample = RandomSample(kRbf, 90, 700, 140, 1, 9);
  const auto model = sample.Model();
  const auto large = sample.Explainer(*model);
  const Found found = explained::Explain(sample);
  ExpectSound(sample, found);
  // The mean of the values for parts of the background, each small enough to be kept.
  Row mean(found.values.size());
  for (const std::size_t begin : {0u, 70u}) {
    Sample part = sample;
    part.background.assign(sample.background.begin() + static_cast<int>(begin),
                           sample.background.begin() + static_cast<int>(begin + 70));
    const Row values = explained::Explain(part).values;
    for (std::size_t i = 0; i < mean.size(); ++i) mean[i] += values[i] / 2;
  }
  EXPECT_LE(Distance(sample, mean, found.values), 1e-14);
}

TEST(ShapleyValues, OfARegressionAreThoseOfItsFirstMachine) {
  for (const Kernel& kernel : {kRbf, Polynomial(3), Polynomial(6), kSigmoid}) {
    Sample sample = RandomSample(kernel, 4, 40, 3, 2, 15);
    sample.cases.resize(1);
    const Found all = explained::Explain(sample);
    sample.regression = true;
    const Found one = explained::Explain(sample);
    EXPECT_EQ(1u, one.decisions.size());
    for (std::size_t j = 0; j < 4; ++j) {
      EXPECT_NEAR(all.gradients[j], one.gradients[j], 1e-14 * ScaleOf(sample, 0));
      EXPECT_NEAR(all.values[j], one.values[j], 1e-14 * ScaleOf(sample, 0));
    }
  }
}

TEST(Gradients, AreThoseOfSmallSteps) {
  for (const Kernel& kernel :
       {kRbf, Kernel{SVMConst::kLinear}, Polynomial(0), Polynomial(1), Polynomial(3), kSigmoid,
        Kernel{SVMConst::kPolynomial, 0.1, 3.0, 2.5}}) {
    SCOPED_TRACE(testing::Message() << kernel.type << " " << kernel.degree);
    Sample sample = RandomSample(kernel, 6, 40, 2, 3, 14, 0.7);
    const auto model = sample.Model();
    const Row gradients = explained::Explain(sample).gradients;
    for (std::size_t c = 0; c < sample.cases.size(); ++c) {
      for (std::size_t e = 0; e < 6; ++e) {
        std::vector<Row> steps(2, sample.cases[c]);
        constexpr double kStep = 1e-5;
        steps[0][e] -= kStep;
        steps[1][e] += kStep;
        const Row decisions = explained::Decisions(*model, steps);
        for (std::size_t m = 0; m < 3; ++m) {
          EXPECT_NEAR((decisions[3 + m] - decisions[m]) / (steps[1][e] - steps[0][e]),
                      gradients[(c * 3 + m) * 6 + e], 1e-8 * ScaleOf(sample, m));
        }
      }
    }
  }
}

}  // namespace
