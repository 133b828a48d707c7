#include "tests/kernel_packed/sample.h"

#include <bit>
#include <memory>
#include <numeric>
#include <sstream>

namespace sample {

using namespace MCSVM_700;
using packed::KernelFunctionType;

namespace {

std::unique_ptr<SVMKernelFunction> PlainKernel(const Model& m) {
  if (m.form == KernelFunctionType::kLinear) return std::make_unique<SVMKFLinear>();
  if (m.form == KernelFunctionType::kRadialBasis) return std::make_unique<SVMKFRBF>(m.gamma);
  if (m.form == KernelFunctionType::kSigmoid)
    return std::make_unique<SVMKFSigmoid>(m.gamma, m.coef0);
  return std::make_unique<SVMKFPolynomial>(m.gamma, m.coef0, m.degree);
}

}  // namespace

PackedInput Model::Input() const {
  PackedInput input;
  input.kernel = {form, gamma, coef0, degree};
  input.fields = fields;
  input.storage = storage;
  for (std::size_t v = 0; v < positions.size(); ++v) {
    input.vectors.push_back({&positions[v], &entries[v]});
  }
  for (const Machine& machine : machines) {
    input.machines.push_back({machine.coefficients, machine.vectors, machine.offset});
  }
  return input;
}

Model RandomModel(KernelFunctionType form, std::size_t fields, std::size_t vectors, double fill,
                  Random& random) {
  Model model;
  model.form = form;
  model.fields = fields;
  for (std::size_t v = 0; v < vectors; ++v) {
    std::vector<int> at;
    std::vector<double> values;
    for (std::size_t f = 0; f < fields; ++f) {
      if (!random.Chance(fill)) continue;
      at.push_back(static_cast<int>(f));
      values.push_back(random.Within(-1.0, 1.0));
    }
    model.AddVector(at, values);
  }
  return model;
}

void AddMachineOfAll(Model& model, Random& random) {
  Machine& machine = model.machines.emplace_back();
  for (std::uint32_t v = 0; v < model.positions.size(); ++v) {
    machine.coefficients.push_back(random.Within(-2.0, 2.0));
    machine.vectors.push_back(v);
  }
  machine.offset = random.Within(-1.0, 1.0);
}

void AddPairwiseMachines(Model& model, std::size_t classes, double left_out, Random& random) {
  const std::size_t count = model.positions.size();
  const auto add_class = [&](Machine& machine, std::size_t which) {
    for (std::size_t v = which * count / classes; v < (which + 1) * count / classes; ++v) {
      if (random.Chance(left_out)) continue;
      machine.coefficients.push_back(random.Within(-2.0, 2.0));
      machine.vectors.push_back(static_cast<std::uint32_t>(v));
    }
  };
  for (std::size_t i = 0; i < classes; ++i) {
    for (std::size_t j = i + 1; j < classes; ++j) {
      Machine& machine = model.machines.emplace_back();
      add_class(machine, i);
      add_class(machine, j);
      machine.offset = random.Within(-1.0, 1.0);
    }
  }
}

std::vector<double> Cases::Case(std::size_t c) const {
  std::vector<double> x(fields);
  for (std::size_t f = 0; f < fields; ++f) x[f] = columns[f * count + c];
  return x;
}

Cases RandomCases(std::size_t fields, std::size_t count, double fill, Random& random) {
  Cases cases{fields, count, {}};
  for (std::size_t i = 0; i < fields * count; ++i) {
    cases.columns.push_back(random.Chance(fill) ? random.Within(-1.0, 1.0) : 0.0);
  }
  return cases;
}

std::vector<double> ByDefinition(const Model& model, const Cases& cases) {
  const auto kernel = PlainKernel(model);
  std::vector<int> all(model.fields);
  std::iota(all.begin(), all.end(), 0);
  std::vector<double> decisions(model.machines.size() * cases.count);
  for (std::size_t c = 0; c < cases.count; ++c) {
    const std::vector<double> x = cases.Case(c);
    std::vector<double> values;
    for (std::size_t v = 0; v < model.positions.size(); ++v) {
      values.push_back(kernel->Evaluate(all, x, model.positions[v], model.entries[v]));
    }
    for (std::size_t m = 0; m < model.machines.size(); ++m) {
      const Machine& machine = model.machines[m];
      double value = 0.0;
      for (std::size_t k = 0; k < machine.coefficients.size(); ++k) {
        value += machine.coefficients[k] * values[machine.vectors[k]];
      }
      decisions[m * cases.count + c] = value + machine.offset;
    }
  }
  return decisions;
}

std::string Difference(const std::vector<double>& expected, const std::vector<double>& found,
                       Nan nan) {
  using Bits = std::uint64_t;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const bool both_nan = expected[i] != expected[i] && found[i] != found[i];
    if (both_nan && nan == Nan::kAnyNan) continue;
    if (std::bit_cast<Bits>(expected[i]) == std::bit_cast<Bits>(found[i])) continue;
    std::ostringstream text;
    text << std::hexfloat << "value " << i << ": " << expected[i] << " became " << found[i];
    return text.str();
  }
  return "";
}

std::string EngineDifference(const Model& model, const Cases& cases,
                             const packed::Operations* operations) {
  return EngineDifference(model, cases, ByDefinition(model, cases), operations);
}

std::string EngineDifference(const Model& model, const Cases& cases,
                             const std::vector<double>& expected,
                             const packed::Operations* operations) {
  const PackedEngine engine(model.Input(), operations);
  if (operations != nullptr && engine.isa() != operations->isa) return "the engine went plain";
  PackedScratch scratch;
  std::vector<double> found(expected.size());
  engine.DecideMany({cases.columns.data(), cases.count}, cases.count, scratch,
                    {found.data(), cases.count});
  const std::string many = Difference(expected, found, Nan::kAnyNan);
  if (!many.empty()) return "many cases: " + many;
  std::vector<double> decisions(model.machines.size());
  for (std::size_t c = 0; c < cases.count; ++c) {
    engine.Decide(cases.Case(c).data(), scratch, decisions.data());
    for (std::size_t m = 0; m < decisions.size(); ++m) found[m * cases.count + c] = decisions[m];
  }
  const std::string one = Difference(expected, found, Nan::kAnyNan);
  return one.empty() ? "" : "one case: " + one;
}

}  // namespace sample
