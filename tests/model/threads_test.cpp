// One model scored by many threads at once: the same bits as from one.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <thread>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

constexpr std::size_t kFields = 4;
constexpr int kCategories = 5;
constexpr std::size_t kCases = 400;

// Ten pairs with radial basis machines, sigmoids and coupling; some inputs missing.
std::unique_ptr<SVMModel> CoupledModel() {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> number(-1, 1);
  auto dictionary = std::make_unique<BaseDictionary>();
  dictionary->AddVar(TextVar("y", {"a", "b", "c", "d", "e"}));
  auto data = std::make_unique<SVMModelData>();
  data->SetFunctionName(true);
  data->SetClassificationMethod(false);
  data->SetCateNumOfTarget(kCategories);
  data->SetVEMAExtension(true);
  data->SetSVMKernelType(SVMConst::kRadialBasis);
  for (std::size_t f = 0; f < kFields; ++f) {
    dictionary->AddVar(NumberVar(Numbered("x", f)));
    data->AddFieldRef(Numbered("x", f), "");
  }
  for (std::size_t v = 0; v < 20; ++v) {
    data->AddVectorInstance(Numbered("s", v), {1, 2, 4},
                            {number(random), number(random), number(random)});
  }
  for (int i = 0; i < kCategories; ++i) {
    for (int j = i + 1; j < kCategories; ++j) {
      auto* machine = new Machine;
      for (std::size_t v = 0; v < 20; ++v) {
        machine->coefficients.push_back(number(random));
        machine->support_vectors.push_back(data->GetVectorInstance(Numbered("s", v)));
      }
      Extend(machine, -2, 0.1, i, j);
      data->AddSupportVectorMachine(machine);
    }
  }
  return Assemble(std::move(dictionary), std::move(data));
}

std::vector<std::unique_ptr<MapRecord>> Cases() {
  std::mt19937 random(4);
  std::uniform_real_distribution<double> number(-1, 1);
  std::vector<std::unique_ptr<MapRecord>> cases;
  for (std::size_t c = 0; c < kCases; ++c) {
    auto record = std::make_unique<MapRecord>(std::vector<std::pair<std::string, double>>{},
                                              /*by_position=*/true);
    for (std::size_t f = 0; f < kFields; ++f) {
      const bool missing = c % 7 == 6 && f == 2;
      record->Set(Numbered("x", f),
                  missing ? nullptr : std::make_unique<NumericValue>(number(random)));
    }
    cases.push_back(std::move(record));
  }
  return cases;
}

// The bits of everything that a case yields.
std::vector<std::uint64_t> Bits(const Decided& decided) {
  std::vector<double> numbers = decided.percents;
  numbers.push_back(decided.confidence);
  numbers.push_back(static_cast<double>(decided.code));
  std::vector<std::uint64_t> bits(numbers.size());
  std::memcpy(bits.data(), numbers.data(), numbers.size() * sizeof(double));
  return bits;
}

TEST(Threads, EightScoreAsOneDoes) {
  const auto model = CoupledModel();
  const auto cases = Cases();
  const auto score = [&](std::size_t c) {
    ScoreResult* result = nullptr;
    const MCStatus status = model->GetScore(cases[c].get(), result, false);
    const std::unique_ptr<ScoreResult> owned(result);
    return Bits(Read(status, result));
  };
  std::vector<std::vector<std::uint64_t>> alone(kCases);
  for (std::size_t c = 0; c < kCases; ++c) alone[c] = score(c);
  std::vector<std::vector<std::uint64_t>> together(kCases);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t c = t; c < kCases; c += 8) together[c] = score(c);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(together, alone);
  EXPECT_EQ(alone[0].size(), static_cast<std::size_t>(kCategories) + 2);
  EXPECT_EQ(alone[6].size(), 2u) << "a missing prediction";
}

}  // namespace
