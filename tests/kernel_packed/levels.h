// Runs a test once for every instruction set. Those that this CPU lacks are reported as skipped, by
// name.
#ifndef TESTS_KERNEL_PACKED_LEVELS_H_
#define TESTS_KERNEL_PACKED_LEVELS_H_

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "svm/kernel/packed/operations.h"
#include "tests/kernel_packed/wide.h"

struct Level {
  const char* name;
  bool available;
  const MCSVM_700::packed::Operations* operations;  // null for plain
};

inline std::vector<Level> AllLevels() {
  using namespace MCSVM_700::packed;
  using svmscore::CpuHas;
  using svmscore::NameOf;
  std::vector<Level> levels;
  for (const Isa isa : {Isa::kPlain, Isa::kSse2, Isa::kAvx2, Isa::kAvx512}) {
    levels.push_back({NameOf(isa), CpuHas(isa), CpuHas(isa) ? OperationsOf(isa) : nullptr});
  }
  levels.push_back({"avx512_by_avx2", CpuHas(Isa::kAvx2), &WideOperations()});
  return levels;
}

inline void PrintTo(const Level& level, std::ostream* out) {
  *out << level.name;
}

class LevelTest : public testing::TestWithParam<Level> {
 protected:
  void SetUp() override {
    if (!GetParam().available) GTEST_SKIP() << "this CPU lacks " << GetParam().name;
  }
  const MCSVM_700::packed::Operations* operations() const { return GetParam().operations; }
};

#define FOR_ALL_LEVELS(Suite)                                          \
  INSTANTIATE_TEST_SUITE_P(All, Suite, testing::ValuesIn(AllLevels()), \
                           [](const auto& level) { return std::string(level.param.name); })

#endif  // TESTS_KERNEL_PACKED_LEVELS_H_
