#include "svm/kernel/packed/packed_engine.h"

#include <gmock/gmock.h>

#include <thread>

#include "svm/kernel/packed/pool.h"
#include "tests/kernel_packed/levels.h"
#include "tests/kernel_packed/sample.h"

namespace {

using namespace MCSVM_700;
using packed::Isa;
using packed::KernelFunctionType;
using sample::Cases;
using sample::Model;
using sample::Random;

class Engine : public LevelTest {};

Model ThreeClasses(Random& random) {
  Model model = RandomModel(KernelFunctionType::kRadialBasis, 12, 150, 0.9, random);
  AddPairwiseMachines(model, 3, 0.1, random);
  return model;
}

TEST_P(Engine, RunsTheCodeOfItsInstructionSet) {
  Random random(1);
  const Model model = ThreeClasses(random);
  const Cases cases = RandomCases(12, 64, 1.0, random);
  const PackedEngine engine(model.Input(), operations());
  const std::size_t packed_cases = operations() != nullptr ? 64 : 0;
  EXPECT_EQ(engine.isa(), operations() != nullptr ? operations()->isa : Isa::kPlain);
  PackedScratch scratch;
  std::vector<double> decisions(3 * 64);
  engine.Decide(cases.Case(0).data(), scratch, decisions.data());
  EXPECT_EQ(scratch.last_isa(), engine.isa());
  engine.DecideMany({cases.columns.data(), 64}, 64, scratch, {decisions.data(), 64});
  EXPECT_EQ(scratch.counts().alone, packed_cases / 64);
  EXPECT_EQ(scratch.counts().tiled, packed_cases);
  EXPECT_EQ(scratch.counts().plain, 65 - packed_cases / 64 - packed_cases);
}

// Packed code that is wrong in one bit must not be used.
TEST_P(Engine, GoesPlainWhereTheSelfCheckFails) {
  if (operations() == nullptr) GTEST_SKIP() << "nothing to check";
  static const packed::Operations* right;
  right = operations();
  packed::Operations wrong = *right;
  wrong.decide_one = [](const packed::ModelView& model, const double* x, packed::Work& work,
                        double* decisions) {
    const bool taken = right->decide_one(model, x, work, decisions);
    decisions[0] = std::nextafter(decisions[0], 1e300);
    return taken;
  };
  Random random(2);
  const Model model = ThreeClasses(random);
  EXPECT_EQ(PackedEngine(model.Input(), &wrong).isa(), Isa::kPlain);
  EXPECT_EQ(PackedEngine(model.Input(), right).isa(), right->isa);
}

TEST_P(Engine, ServesManyThreads) {
  Random random(3);
  Model model = ThreeClasses(random);
  model.AddVector({5, 2}, {0.5, 0.25});  // so that the plain kernels are used as well
  AddMachineOfAll(model, random);
  const Cases cases = RandomCases(12, 101, 1.0, random);
  const std::vector<double> expected = ByDefinition(model, cases);
  const PackedEngine engine(model.Input(), operations());
  std::vector<std::vector<double>> found(8, std::vector<double>(expected.size()));
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < found.size(); ++t) {
    threads.emplace_back([&, t] {
      PackedScratch scratch;
      for (std::size_t begin = 0; begin < cases.count; begin += 10 + t) {
        const std::size_t here = std::min(10 + t, cases.count - begin);
        engine.DecideMany({cases.columns.data() + begin, cases.count}, here, scratch,
                          {found[t].data() + begin, cases.count});
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& decisions : found) EXPECT_EQ(sample::Difference(expected, decisions), "");
}

// One scratch is used by several engines, larger and smaller, dense, sparse and with chains.
TEST_P(Engine, SharesAScratchWithOthers) {
  Random random(4);
  PackedScratch scratch;
  for (const std::size_t vectors : {3u, 200u, 40u, 333u, 1u}) {
    for (const packed::Storage storage : {packed::Storage::kSparse, packed::Storage::kDense}) {
      Model model =
          RandomModel(KernelFunctionType::kLinear, vectors % 50 + 1, vectors, 0.5, random);
      model.storage = storage;
      AddMachineOfAll(model, random);
      if (vectors % 2 == 1) model.machines[0].vectors.back() = 0;
      const Cases cases = RandomCases(model.fields, 50, 0.5, random);
      std::vector<double> found(50);
      PackedEngine(model.Input(), operations())
          .DecideMany({cases.columns.data(), 50}, 50, scratch, {found.data(), 50});
      EXPECT_EQ(sample::Difference(ByDefinition(model, cases), found), "") << vectors;
    }
  }
}

FOR_ALL_LEVELS(Engine);

TEST(Storage, FollowsTheFill) {
  Random random(5);
  const auto sparse = [&](std::size_t fields, double fill) {
    Model model = RandomModel(KernelFunctionType::kLinear, fields, 100, fill, random);
    AddMachineOfAll(model, random);
    return PackedEngine(model.Input(), packed::OperationsOf(Isa::kSse2)).sparse();
  };
  EXPECT_TRUE(sparse(1000, 0.01));
  EXPECT_FALSE(sparse(1000, 0.5));
  EXPECT_FALSE(sparse(5, 0.01));
}

// Vectors of two machines in the order that both need, which is found although the first machine
// alone would place 3 last; and what happens where there is no such order.
TEST(Pool, KeepsTheOrderOfEveryMachine) {
  using testing::ElementsAre;
  const std::vector<double> ones(4, 1.0);
  const std::vector<std::uint32_t> first = {7, 5, 9};
  const auto pool = [&](const std::vector<std::uint32_t>& second) {
    std::vector<packed::MachineView> machines;
    for (const auto* vectors : {&first, &second}) {
      machines.push_back({std::span(ones).first(vectors->size()), *vectors, 0.0});
    }
    return packed::MakePool(machines, 10);
  };
  const packed::Pool agreeing = pool({7, 3, 5});
  EXPECT_THAT(agreeing.vectors, ElementsAre(7, 3, 5, 9));
  EXPECT_THAT(agreeing.ascending, ElementsAre(true, true));
  const packed::Pool contradicting = pool({9, 7});
  EXPECT_THAT(contradicting.vectors, ElementsAre(7, 5, 9));
  EXPECT_THAT(contradicting.ascending, ElementsAre(true, false));
}

}  // namespace
