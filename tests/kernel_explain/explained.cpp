#include "tests/kernel_explain/explained.h"

#include <bit>
#include <cmath>
#include <numeric>
#include <string>

#include <gtest/gtest.h>

#include "tests/model/model_fixture.h"

namespace explained {

using svmscore_test::Bits;

std::unique_ptr<MCZandor_850::SVMModel> Sample::Model() const {
  svmscore_test::Classifier classifier(2);
  MCZandor_850::SVMModelData& data = *classifier.data;
  data.SetFunctionName(!regression);
  data.SetSVMKernelType(kernel.type);
  data.SetSVMKernelTypeGamma(kernel.gamma);
  data.SetSVMKernelTypeCoef0(kernel.coef0);
  data.SetSVMKernelTypeDegree(kernel.degree);
  for (std::size_t e = 0; e < fields(); ++e) {
    const std::string name = svmscore_test::Numbered("x", e);
    classifier.dictionary->AddVar(svmscore_test::NumberVar(name));
    data.AddFieldRef(name, "");
  }
  for (std::size_t v = 0; v < entries.size(); ++v) {
    std::vector<int> from_one = positions[v];
    for (int& position : from_one) ++position;
    data.AddVectorInstance(svmscore_test::Numbered("v", v), from_one, entries[v]);
  }
  for (std::size_t m = 0; m < machines.size(); ++m) {
    auto* machine = new svmscore_test::Machine;
    machine->target_index = 0;
    machine->alternate_target_index = 1;
    machine->absolute_value = static_cast<double>(m) + 0.5;
    machine->coefficients = machines[m].coefficients;
    for (const std::size_t v : machines[m].vectors) {
      machine->support_vectors.push_back(data.GetVectorInstance(svmscore_test::Numbered("v", v)));
    }
    data.AddSupportVectorMachine(machine);
  }
  return classifier.Model();
}

std::vector<double> Columns(const std::vector<Row>& cases) {
  std::vector<double> columns;
  for (std::size_t e = 0; e < cases.front().size(); ++e) {
    for (const Row& row : cases) columns.push_back(row[e]);
  }
  return columns;
}

std::unique_ptr<svmscore::Explainer> Sample::Explainer(const MCZandor_850::SVMModel& model) const {
  const std::vector<double> columns = Columns(background);
  return model.MakeExplainer(
      {players, {columns.data(), background.size(), background.size()}, seed, orders});
}

Sample RandomSample(const Kernel& kernel, std::size_t fields, std::size_t vectors, std::size_t rows,
                    std::size_t machines, std::uint64_t seed, double fill) {
  std::mt19937_64 bits(seed);
  std::normal_distribution<> normal;
  std::uniform_real_distribution<> unit;
  Sample sample;
  sample.kernel = kernel;
  for (std::size_t v = 0; v < vectors; ++v) {
    sample.positions.emplace_back();
    sample.entries.emplace_back();
    for (std::size_t e = 0; e < fields; ++e) {
      if (e > 0 && unit(bits) >= fill) continue;
      sample.positions.back().push_back(static_cast<int>(e));
      sample.entries.back().push_back(normal(bits));
    }
  }
  for (std::size_t m = 0; m < machines; ++m) {
    auto& machine = sample.machines.emplace_back();
    for (std::size_t v = 0; v < vectors; ++v) {
      if (v > 0 && unit(bits) < 0.2) continue;
      machine.vectors.push_back(v);
      machine.coefficients.push_back(normal(bits));
    }
  }
  for (std::size_t j = 0; j < fields; ++j) sample.players.push_back({j});
  const auto row = [&] {
    Row entries(fields);
    for (double& entry : entries) entry = unit(bits) < fill ? normal(bits) : 0.0;
    return entries;
  };
  for (std::size_t b = 0; b < rows; ++b) sample.background.push_back(row());
  sample.cases = {row(), row()};
  return sample;
}

Found Explain(const Sample& sample) {
  const auto model = sample.Model();
  const auto explainer = sample.Explainer(*model);
  const std::size_t count = sample.cases.size() * model->DecisionCount();
  Found found{Row(count), Row(count * sample.players.size()), Row(count * sample.players.size()),
              Row(count * sample.fields()), explainer->IsSampled()};
  const std::vector<double> columns = Columns(sample.cases);
  explainer->Explain(
      {columns.data(), sample.cases.size(), sample.cases.size()},
      {found.decisions.data(), found.values.data(), found.errors.data(), found.gradients.data()});
  return found;
}

Row Decisions(MCZandor_850::SVMModel& model, const std::vector<Row>& cases) {
  const std::size_t machines = model.DecisionCount();
  const std::vector<double> columns = Columns(cases);
  Row by_machine(machines * cases.size());
  svmscore::BatchResults results;
  results.decisions = by_machine.data();
  results.stride = cases.size();
  model.ScoreBatch({columns.data(), cases.size(), cases.size()}, results);
  Row decisions;
  for (std::size_t c = 0; c < cases.size(); ++c) {
    for (std::size_t m = 0; m < machines; ++m) {
      decisions.push_back(by_machine[m * cases.size() + c]);
    }
  }
  return decisions;
}

Row ByDefinition(const Sample& sample) {
  const auto model = sample.Model();
  const std::size_t machines = model->DecisionCount();
  const std::size_t players = sample.players.size();
  std::vector<long double> share(players);  // of the sets of k others
  share[0] = 1.0L / static_cast<long double>(players);
  for (std::size_t k = 1; k < players; ++k) {
    share[k] = share[k - 1] * static_cast<long double>(k) / static_cast<long double>(players - k);
  }
  Row values;
  for (const Row& x : sample.cases) {
    std::vector<long double> worth((std::size_t{1} << players) * machines, 0.0L);
    for (const Row& background : sample.background) {
      std::vector<Row> mixed;
      for (std::size_t set = 0; set < std::size_t{1} << players; ++set) {
        mixed.push_back(background);
        for (std::size_t j = 0; j < players; ++j) {
          if ((set >> j & 1) == 0) continue;
          for (const std::size_t e : sample.players[j]) mixed.back()[e] = x[e];
        }
      }
      const Row decisions = Decisions(*model, mixed);
      for (std::size_t i = 0; i < worth.size(); ++i) worth[i] += decisions[i];
    }
    for (std::size_t m = 0; m < machines; ++m) {
      for (std::size_t j = 0; j < players; ++j) {
        long double value = 0.0L;
        for (std::size_t set = 0; set < std::size_t{1} << players; ++set) {
          if ((set >> j & 1) != 0) continue;
          value += share[static_cast<std::size_t>(std::popcount(set))] *
                   (worth[(set | std::size_t{1} << j) * machines + m] - worth[set * machines + m]);
        }
        values.push_back(
            static_cast<double>(value / static_cast<long double>(sample.background.size())));
      }
    }
  }
  return values;
}

Kernel Polynomial(double degree) {
  return {SVMConst::kPolynomial, 0.2, 0.7, degree};
}

double ScaleOf(const Sample& sample, std::size_t machine) {
  const Row& coefficients = sample.machines[machine].coefficients;
  return std::accumulate(coefficients.begin(), coefficients.end(), 0.0,
                         [](double sum, double c) { return sum + std::abs(c); });
}

void ExpectSound(const Sample& sample, const Found& found) {
  const auto model = sample.Model();
  const auto explainer = sample.Explainer(*model);
  const std::size_t machines = model->DecisionCount();
  const std::size_t players = sample.players.size();
  EXPECT_EQ(Bits(Decisions(*model, sample.cases)), Bits(found.decisions));
  const Row background = Decisions(*model, sample.background);
  for (std::size_t m = 0; m < machines; ++m) {
    EXPECT_DOUBLE_EQ(ScaleOf(sample, m), explainer->Scale(m));
    double mean = 0.0;
    for (std::size_t b = 0; b < sample.background.size(); ++b) mean += background[b * machines + m];
    EXPECT_NEAR(mean / static_cast<double>(sample.background.size()), explainer->Base(m),
                1e-13 * ScaleOf(sample, m));
    for (std::size_t c = 0; c < sample.cases.size(); ++c) {
      const double* of_case = &found.values[(c * machines + m) * players];
      EXPECT_NEAR(std::accumulate(of_case, of_case + players, explainer->Base(m)),
                  found.decisions[c * machines + m], 1e-12 * ScaleOf(sample, m));
    }
  }
  for (std::size_t c = 0; c < sample.cases.size(); ++c) {
    Sample alone = sample;
    alone.cases = {sample.cases[c]};
    const std::size_t size = machines * players;
    EXPECT_EQ(Bits(Explain(alone).values),
              Bits(Row(&found.values[c * size], &found.values[c * size] + size)));
  }
}

}  // namespace explained
