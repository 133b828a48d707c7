// The time that one case's explanation takes on one thread: 1,000 vectors, 20 fields, and a
// background of 100 rows, unless the name says otherwise. SVMSCORE_ISA chooses the instruction set.
// Where the environment variable EXPLAIN_NUMBERS names a file, models are made of the doubles in it
// and values are written beside it: see shap_times.py.
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "svm/model/model.h"

namespace {

using MCZandor_850::SVMModel;
using MCZandor_850::SVMModelData;

struct Shape {
  SVMConst::KernelFunctionType kernel;
  double degree = 3;
  std::size_t fields = 20;
  std::size_t vectors = 1000;
  std::size_t rows = 100;
};

class Numbers {
 public:
  Numbers() {
    if (const char* path = std::getenv("EXPLAIN_NUMBERS")) file_.open(path, std::ios::binary);
  }
  std::vector<double> Next(std::size_t count) {
    std::vector<double> numbers(count);
    for (double& number : numbers) number = normal_(bits_);
    if (file_.is_open()) {
      file_.read(reinterpret_cast<char*>(numbers.data()),
                 static_cast<std::streamsize>(count * sizeof(double)));
    }
    return numbers;
  }

 private:
  std::ifstream file_;
  std::mt19937_64 bits_{1};
  std::normal_distribution<> normal_;
};

std::unique_ptr<SVMModel> MakeModel(const Shape& shape, Numbers& numbers) {
  auto data = std::make_unique<SVMModelData>();
  data->SetSVMKernelType(shape.kernel);
  data->SetSVMKernelTypeGamma(1.0 / static_cast<double>(shape.fields));
  data->SetSVMKernelTypeDegree(shape.degree);
  std::vector<int> indices;
  for (std::size_t e = 0; e < shape.fields; ++e) {
    data->AddFieldRef("x" + std::to_string(e), "");
    indices.push_back(static_cast<int>(e) + 1);
  }
  auto* machine = new SVMModelData::ST_SUPPORTVECTORMACHINE;
  machine->coefficients = numbers.Next(shape.vectors);
  for (std::size_t v = 0; v < shape.vectors; ++v) {
    const std::string id = "v" + std::to_string(v);
    data->AddVectorInstance(id, indices, numbers.Next(shape.fields));
    machine->support_vectors.push_back(data->GetVectorInstance(id));
  }
  data->AddSupportVectorMachine(machine);
  auto model = std::make_unique<SVMModel>();
  model->SetSupportVectorMachineModel(data.release());
  return model;
}

svmscore::ExplainerSetUp SetUpFor(const Shape& shape, const std::vector<double>& background) {
  svmscore::ExplainerSetUp setup;
  for (std::size_t e = 0; e < shape.fields; ++e) setup.players.push_back({e});
  setup.background = {background.data(), shape.rows, shape.rows};
  return setup;
}

void BM_Explain(benchmark::State& state, const Shape& shape) {
  Numbers numbers;
  const auto model = MakeModel(shape, numbers);
  const std::vector<double> background = numbers.Next(shape.fields * shape.rows);
  const auto explainer = model->MakeExplainer(SetUpFor(shape, background));
  const std::vector<double> x = numbers.Next(shape.fields);
  std::vector<double> values(shape.fields);
  svmscore::Explanations out;
  out.values = values.data();
  for (auto _ : state) {
    explainer->Explain({x.data(), 1, 1}, out);
    benchmark::DoNotOptimize(values.data());
  }
  if (const char* path = std::getenv("EXPLAIN_NUMBERS")) {
    std::ofstream file(std::string(path) + ".values", std::ios::binary);
    file.write(reinterpret_cast<const char*>(values.data()),
               static_cast<std::streamsize>(values.size() * sizeof(double)));
  }
}

// What is done once for all cases.
void BM_SetUp(benchmark::State& state, const Shape& shape) {
  Numbers numbers;
  const auto model = MakeModel(shape, numbers);
  const std::vector<double> background = numbers.Next(shape.fields * shape.rows);
  const svmscore::ExplainerSetUp setup = SetUpFor(shape, background);
  for (auto _ : state) benchmark::DoNotOptimize(model->MakeExplainer(setup));
}

void Register(const std::string& name, const Shape& shape) {
  benchmark::RegisterBenchmark(("explain/" + name).c_str(), [shape](benchmark::State& state) {
    BM_Explain(state, shape);
  })->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark(("set_up/" + name).c_str(), [shape](benchmark::State& state) {
    BM_SetUp(state, shape);
  })->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  Register("radial_basis", {SVMConst::kRadialBasis});
  Register("linear", {SVMConst::kLinear});
  Register("polynomial_3", {SVMConst::kPolynomial});
  Register("polynomial_5", {SVMConst::kPolynomial, 5});
  Register("sigmoid", {SVMConst::kSigmoid});
  Register("radial_basis_64_fields", {SVMConst::kRadialBasis, 3, 64});
  Register("polynomial_3_64_fields", {SVMConst::kPolynomial, 3, 64});
  Register("radial_basis_500_fields", {SVMConst::kRadialBasis, 3, 500, 100});
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
