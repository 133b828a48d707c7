#include <cmath>
#include <limits>

#include "tests/kernel_packed/levels.h"
#include "tests/kernel_packed/sample.h"

namespace {

using namespace MCSVM_700;
using packed::KernelFunctionType;
using packed::Storage;
using sample::Cases;
using sample::EngineDifference;
using sample::Model;
using sample::Random;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class PackedBits : public LevelTest {
 protected:
  void Expect(const Model& model, const Cases& cases) {
    ASSERT_EQ(EngineDifference(model, cases, operations()), "")
        << "kernel " << static_cast<int>(model.form) << ", storage "
        << static_cast<int>(model.storage) << ", gamma " << model.gamma << ", degree "
        << model.degree << ", " << model.fields << " fields, " << model.positions.size()
        << " vectors, " << model.machines.size() << " machines, " << cases.count << " cases";
  }
};

// Each kernel in each storage, without machines.
std::vector<Model> RandomModels(std::size_t fields, std::size_t vectors, double fill,
                                Random& random) {
  std::vector<Model> models;
  for (const KernelFunctionType form :
       {KernelFunctionType::kLinear, KernelFunctionType::kPolynomial,
        KernelFunctionType::kRadialBasis, KernelFunctionType::kSigmoid}) {
    for (const Storage storage : {Storage::kDense, Storage::kSparse}) {
      models.push_back(RandomModel(form, fields, vectors, fill, random));
      models.back().storage = storage;
    }
  }
  return models;
}

// Lengths around the vector widths, the quads of a tile and the block, for one machine, which may
// use a vector twice, and for the pairs of three classes.
TEST_P(PackedBits, AtEverySize) {
  Random random(1);
  for (const std::size_t fields : {0u, 1u, 3u, 8u, 17u, 35u}) {
    for (std::size_t vectors = 0; vectors <= 101; vectors += vectors < 36 ? 1 : 13) {
      for (Model& model : RandomModels(fields, vectors, 0.8, random)) {
        const Cases cases = RandomCases(fields, 9, 0.8, random);
        AddMachineOfAll(model, random);
        if (vectors % 4 == 3) model.machines[0].vectors[vectors / 2] = 0;
        Expect(model, cases);
        model.machines.clear();
        AddPairwiseMachines(model, 3, 0.0, random);
        Expect(model, cases);
      }
    }
  }
}

TEST_P(PackedBits, ForEveryNumberOfCases) {
  Random random(2);
  Model model = RandomModel(KernelFunctionType::kRadialBasis, 11, 70, 0.9, random);
  AddMachineOfAll(model, random);
  AddMachineOfAll(model, random);
  // The last is more than one group of tiles.
  for (std::size_t count = 1; count <= 1100; count += count == 70 ? 1030 : 1) {
    for (const Storage storage : {Storage::kDense, Storage::kSparse}) {
      model.storage = storage;
      Expect(model, RandomCases(model.fields, count, 1.0, random));
    }
  }
}

// Machines that share vectors in one order or in contradicting orders, that omit vectors, use one
// twice, have none or have coefficients of 0.
TEST_P(PackedBits, HoweverMachinesShareVectors) {
  Random random(3);
  for (const double left_out : {0.0, 0.1, 0.5, 0.95}) {
    for (const std::size_t classes : {2u, 5u, 10u}) {
      for (Model& model : RandomModels(6, 83, 0.7, random)) {
        AddPairwiseMachines(model, classes, left_out, random);
        const Cases cases = RandomCases(model.fields, 37, 1.0, random);
        Expect(model, cases);
        model.machines.push_back({{0.5, 0.25, -1.0}, {40, 40, 2}, 0.125});
        model.machines.push_back({{1.0, 0.0, -0.0, 3.0}, {82, 3, 11, 0}, -0.0});
        model.machines.push_back({{}, {}, -0.0});
        Expect(model, cases);
      }
    }
  }
}

TEST_P(PackedBits, OfVectorsThatCannotBePacked) {
  Random random(5);
  for (Model& model : RandomModels(8, 30, 0.8, random)) {
    model.AddVector({}, {});
    model.AddVector({0, 8}, {0.5, 0.25});          // out of range
    model.AddVector({-1, 2}, {0.5, 0.25});         // before the first
    model.AddVector({1, 1, 3}, {0.5, 0.25, 1.0});  // repeated
    model.AddVector({5, 2, 3}, {0.5, 0.25, 1.0});  // unordered
    model.AddVector({2147483647}, {1.0});
    model.AddVector({0, 3}, {0.5, kInfinity});
    model.AddVector({0, 3}, {-kInfinity, 1.0});
    model.AddVector({1}, {0.5, 0.25});  // entries without a position
    AddPairwiseMachines(model, 4, 0.1, random);
    AddMachineOfAll(model, random);
    const Cases cases = RandomCases(model.fields, 45, 0.9, random);
    Expect(model, cases);
    model.AddVector({4}, {NAN});
    AddMachineOfAll(model, random);
    Expect(model, cases);
  }
}

// Each odd value in its own case between ordinary ones, so that a wrong lane would be detected.
TEST_P(PackedBits, OfCasesWithOddNumbers) {
  Random random(6);
  const double odd[] = {0.0, -0.0, 5e-324, -2e-310, 1e-160, 1e160, -1.7e308, kInfinity, -kInfinity};
  for (const double degree : {3.0, 2.5}) {
    for (Model& model : RandomModels(6, 37, 0.6, random)) {
      model.degree = degree;
      model.AddVector({0, 1, 2}, {-0.0, 5e-324, 1e-310});
      model.AddVector({0, 1, 2, 5}, {1.7e308, -1.7e308, 1e160, -0.0});
      AddPairwiseMachines(model, 3, 0.2, random);
      Cases cases = RandomCases(model.fields, 41, 0.8, random);
      for (std::size_t c = 0; c < cases.count; c += 2) {
        cases.columns[random.Below(6) * cases.count + c] = odd[c / 2 % std::size(odd)];
        cases.columns[random.Below(6) * cases.count + c] = odd[random.Below(std::size(odd))];
      }
      Expect(model, cases);
      cases.columns[3] = NAN;
      Expect(model, cases);
    }
  }
}

// No sum may become -0.0 or lose that sign.
TEST_P(PackedBits, OfNegativeZeros) {
  Random random(7);
  for (Model& model : RandomModels(3, 0, 0.0, random)) {
    model.coef0 = -0.0;
    for (int v = 0; v < 5; ++v) model.AddVector({1}, {v % 2 == 0 ? -0.0 : 0.0});
    model.machines.push_back({{-0.0, 0.0, -0.0, -0.0, -1.0}, {0, 1, 2, 3, 4}, -0.0});
    model.machines.push_back({{-1.0}, {2}, -0.0});
    Expect(model, {3, 9, std::vector<double>(27, -0.0)});
  }
}

TEST_P(PackedBits, OfOddParameters) {
  Random random(8);
  for (const double gamma : {0.0, -0.0, -0.7, 1e-300, 1e4, 1e300, kInfinity, double{NAN}}) {
    for (const double degree : {0.0, 1.0, 2.0, 8.0, 9.0, -2.0, 0.5, kInfinity}) {
      for (Model& model : RandomModels(5, 40, 1.0, random)) {
        if (model.form != KernelFunctionType::kPolynomial && degree != 0.0) continue;
        model.gamma = gamma;
        model.coef0 = random.Within(-1.0, 1.0);
        model.degree = degree;
        AddPairwiseMachines(model, 3, 0.3, random);
        Expect(model, RandomCases(5, 19, 1.0, random));
      }
    }
  }
}

FOR_ALL_LEVELS(PackedBits);

}  // namespace
