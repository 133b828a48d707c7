#include "host/model/instruction_set.h"

#include <gtest/gtest.h>

namespace svmscore {
namespace {

TEST(IsaChoice, TakesKnownNamesOnly) {
  for (const Isa isa : {Isa::kPlain, Isa::kSse2, Isa::kAvx2, Isa::kAvx512}) {
    const IsaChoice choice = ChooseIsa(NameOf(isa));
    EXPECT_EQ(choice.error == nullptr, CpuHas(isa)) << NameOf(isa);
    EXPECT_EQ(choice.isa == isa, CpuHas(isa) || isa == ChooseIsa(nullptr).isa);
  }
  for (const char* unknown : {"AVX2", "avx", "avx2 ", "neon"}) {
    EXPECT_EQ(ChooseIsa(unknown).isa, ChooseIsa(nullptr).isa);
    EXPECT_STREQ(ChooseIsa(unknown).error, "SVMSCORE_ISA must be sse2, avx2, avx512 or plain");
  }
  for (const char* unset : {"", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(ChooseIsa(unset).error, nullptr);
    EXPECT_NE(ChooseIsa(unset).isa, Isa::kPlain);
  }
}

}  // namespace
}  // namespace svmscore
