// What one case costs as models grow: Google Benchmark, with the time of one term (one field of one
// vector) or of one vector next to each time. Where cost grows linearly, the time per term is
// constant.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "svm/kernel/packed/packed_engine.h"

namespace {

using namespace MCSVM_700;
using packed::KernelFunctionType;

struct Model {
  Model(std::size_t vectors, std::size_t fields, std::size_t machines) {
    const auto number = [this] { return static_cast<double>(bits() >> 11) * 0x1p-52 - 1.0; };
    positions.resize(fields);
    for (std::size_t f = 0; f < fields; ++f) positions[f] = static_cast<int>(f);
    entries.resize(vectors);
    for (std::uint32_t v = 0; v < vectors; ++v) {
      for (std::size_t f = 0; f < fields; ++f) entries[v].push_back(number());
      input.vectors.push_back({&positions, &entries[v]});
      all.push_back(v);
      coefficients.push_back(number());
    }
    input.kernel.type = KernelFunctionType::kRadialBasis;
    input.kernel.gamma = 1.0 / static_cast<double>(fields);
    input.fields = fields;
    for (std::size_t m = 0; m < machines; ++m) input.machines.push_back({coefficients, all, 0.5});
    for (std::size_t i = 0; i < fields * kCases; ++i) cases.push_back(number());
    decisions.resize(machines * kCases);
  }

  static constexpr std::size_t kCases = 256;
  std::mt19937_64 bits{1};
  std::vector<int> positions;
  std::vector<std::vector<double>> entries;
  std::vector<std::uint32_t> all;
  std::vector<double> coefficients;
  PackedInput input;
  std::vector<double> cases;
  std::vector<double> decisions;
};

void Report(benchmark::State& state, double cases, const Model& model) {
  const double scored = cases * static_cast<double>(state.iterations());
  const double vectors = static_cast<double>(model.all.size());
  const auto inverse_rate = benchmark::Counter::kIsRate | benchmark::Counter::kInvert;
  state.counters["case"] = benchmark::Counter(scored, inverse_rate);
  state.counters["term"] =
      benchmark::Counter(scored * vectors * static_cast<double>(model.input.fields), inverse_rate);
}

// Arguments: vectors, fields, machines, cases at a time (0: one by one with the form for one).
void Decide(benchmark::State& state) {
  const auto argument = [&](std::size_t i) { return static_cast<std::size_t>(state.range(i)); };
  Model model(argument(0), argument(1), argument(2));
  const PackedEngine engine(model.input, packed::OperationsOf(svmscore::ChosenIsa().isa));
  PackedScratch scratch;
  const std::size_t count = argument(3);
  for (auto _ : state) {
    if (count == 0) {
      engine.Decide(model.cases.data(), scratch, model.decisions.data());
    } else {
      engine.DecideMany({model.cases.data(), Model::kCases}, count, scratch,
                        {model.decisions.data(), Model::kCases});
    }
    benchmark::DoNotOptimize(model.decisions.data());
  }
  state.SetLabel(svmscore::NameOf(engine.isa()));
  Report(state, count == 0 ? 1.0 : static_cast<double>(count), model);
}

void Sizes(benchmark::internal::Benchmark* sizes) {
  sizes->ArgNames({"vectors", "fields", "machines", "cases"});
  for (const int cases : {0, 256}) {
    for (const int vectors : {250, 500, 1000, 2000, 4000, 8000})
      sizes->Args({vectors, 50, 1, cases});
    for (const int fields : {5, 10, 20, 40, 80, 160}) sizes->Args({1000, fields, 1, cases});
    for (const int machines : {2, 4, 9, 18, 36}) sizes->Args({1000, 50, machines, cases});
  }
  for (const int cases : {1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 32, 64, 128}) {
    sizes->Args({1000, 50, 1, cases});
  }
}
BENCHMARK(Decide)->Apply(Sizes);

// One engine, read by all threads, each with its own cases.
void DecideOnThreads(benchmark::State& state) {
  static Model model(2000, 50, 1);
  static const PackedEngine engine(model.input, packed::OperationsOf(svmscore::ChosenIsa().isa));
  PackedScratch scratch;
  std::vector<double> decisions(Model::kCases);
  for (auto _ : state) {
    engine.DecideMany({model.cases.data(), Model::kCases}, Model::kCases, scratch,
                      {decisions.data(), Model::kCases});
    benchmark::DoNotOptimize(decisions.data());
  }
  Report(state, Model::kCases, model);
}
BENCHMARK(DecideOnThreads)->ThreadRange(1, 8)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
