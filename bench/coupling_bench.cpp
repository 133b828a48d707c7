// What coupling costs compared with the rest of scoring: Google Benchmark, nanoseconds per case.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "host/model/score_value.h"
#include "svm/model/model.h"
#include "svm/model/model_data.h"

namespace {

using namespace MCZandor_850;

constexpr int kFields = 64;
constexpr int kVectorsOfACategory = 200;
constexpr std::size_t kCases = 256;

// One machine for every pair of categories, each with the vectors of its two; RBF.
struct Model {
  Model(int categories, bool coupled) {
    auto dictionary = std::make_unique<BaseDictionary>();
    auto target = std::make_unique<ScoreDictVar>("y", svmscore::OpType::kCategorical,
                                                 svmscore::FieldType{svmscore::DataType::kString});
    for (int k = 0; k < categories; ++k) target->DeclareCategory(std::to_string(k), "");
    dictionary->AddVar(std::move(target));
    auto data = std::make_unique<SVMModelData>();
    data->SetFunctionName(true);
    data->SetClassificationMethod(false);
    data->SetMaxWins(true);
    data->SetCateNumOfTarget(categories);
    data->SetVEMAExtension(coupled);
    data->SetSVMKernelType(SVMConst::kRadialBasis);
    data->SetSVMKernelTypeGamma(1.0 / kFields);
    std::vector<int> indices;
    for (int f = 1; f <= kFields; ++f) {
      const std::string name = "x" + std::to_string(f);
      dictionary->AddVar(std::make_unique<ScoreDictVar>(
          name, svmscore::OpType::kContinuous, svmscore::FieldType{svmscore::DataType::kDouble}));
      data->AddFieldRef(name, "");
      indices.push_back(f);
    }
    for (int v = 0; v < categories * kVectorsOfACategory; ++v) {
      data->AddVectorInstance(std::to_string(v), indices, Numbers(kFields));
    }
    for (int i = 0; i < categories; ++i) {
      for (int j = i + 1; j < categories; ++j) AddMachine(*data, i, j, coupled);
    }
    model.SetScoreDictionary(dictionary.release());
    model.SetVarRole(std::string("y"), ScoreModel::kTargetRole);
    model.SetSupportVectorMachineModel(data.release());
    model.SetTargetCategories();
    entries = Numbers(kFields * kCases);
    machines = static_cast<std::size_t>(categories * (categories - 1) / 2);
  }

  std::vector<double> Numbers(std::size_t count) {
    std::vector<double> numbers(count);
    for (double& number : numbers) number = std::normal_distribution<>()(bits);
    return numbers;
  }

  void AddMachine(SVMModelData& data, int i, int j, bool coupled) {
    auto* machine = new SVMModelData::ST_SUPPORTVECTORMACHINE;
    machine->target_index = i;
    machine->alternate_target_index = j;
    for (const int category : {i, j}) {
      for (int v = 0; v < kVectorsOfACategory; ++v) {
        machine->coefficients.push_back(std::normal_distribution<>()(bits) * 0.1);
        machine->support_vectors.push_back(
            data.GetVectorInstance(std::to_string(category * kVectorsOfACategory + v)));
      }
    }
    if (coupled) {
      machine->extension = new ST_MACHINEEXTENSION;
      machine->extension->response_index = i;
      machine->extension->non_response_index = j;
      machine->extension->a = -2.0;
      machine->extension->b = 0.1;
    }
    data.AddSupportVectorMachine(machine);
  }

  std::mt19937_64 bits{3};
  SVMModel model;
  std::vector<double> entries;
  std::size_t machines = 0;
};

void Report(benchmark::State& state) {
  state.counters["case"] =
      benchmark::Counter(static_cast<double>(kCases) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Score(benchmark::State& state, bool coupled) {
  Model built(static_cast<int>(state.range(0)), coupled);
  std::vector<long> status(kCases);
  std::vector<double> percents(kCases * static_cast<std::size_t>(state.range(0)));
  svmscore::BatchResults results;
  results.status = status.data();
  results.percents = percents.data();
  results.stride = kCases;
  for (auto _ : state) {
    built.model.ScoreBatch({built.entries.data(), kCases, kCases}, results);
    benchmark::DoNotOptimize(percents.data());
  }
  Report(state);
}
void ScoreByVotes(benchmark::State& state) {
  Score(state, false);
}
void ScoreCoupled(benchmark::State& state) {
  Score(state, true);
}

// From decision values to probabilities, without the decision values.
void Couple(benchmark::State& state) {
  Model built(static_cast<int>(state.range(0)), true);
  const auto categories = static_cast<std::size_t>(state.range(0));
  std::vector<std::vector<double>> decisions;
  for (std::size_t c = 0; c < kCases; ++c) decisions.push_back(built.Numbers(built.machines));
  for (auto _ : state) {
    for (const std::vector<double>& values : decisions) {
      std::vector<double> percents(categories);
      std::vector<std::vector<double>> r(categories, percents);
      built.model.CalculateClassProbabilites(values, r);
      built.model.DoMultiProbLearn(r, percents);
      benchmark::DoNotOptimize(percents.data());
    }
  }
  Report(state);
}

BENCHMARK(Couple)->Arg(3)->Arg(10)->Arg(26);
BENCHMARK(ScoreCoupled)->Arg(3)->Arg(10)->Arg(26);
BENCHMARK(ScoreByVotes)->Arg(3)->Arg(10)->Arg(26);

}  // namespace

BENCHMARK_MAIN();
