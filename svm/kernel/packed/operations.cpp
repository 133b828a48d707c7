#include "svm/kernel/packed/operations.h"

#include <array>
#include <cstdlib>
#include <string_view>

namespace MCSVM_700::packed {
namespace {

constexpr std::array kNames = {"plain", "sse2", "avx2", "avx512"};

}  // namespace

const Operations* OperationsOf(Isa isa) {
  switch (isa) {
    case Isa::kSse2:
      return &Sse2Operations();
    case Isa::kAvx2:
      return &Avx2Operations();
    case Isa::kAvx512:
      return &Avx512Operations();
    case Isa::kPlain:
      break;
  }
  return nullptr;
}

bool CpuHas(Isa isa) {
  switch (isa) {
    case Isa::kPlain:
    case Isa::kSse2:
      return true;
    case Isa::kAvx2:
      return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    case Isa::kAvx512:
      return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
             __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("fma");
  }
  return false;
}

const char* NameOf(Isa isa) {
  return kNames[static_cast<std::size_t>(isa)];
}

IsaChoice ChooseIsa(const char* forced) {
  if (forced == nullptr || *forced == '\0') {
    for (const Isa isa : {Isa::kAvx512, Isa::kAvx2}) {
      if (CpuHas(isa)) return {isa, nullptr};
    }
    return {Isa::kSse2, nullptr};
  }
  for (const Isa isa : {Isa::kPlain, Isa::kSse2, Isa::kAvx2, Isa::kAvx512}) {
    if (std::string_view(forced) != NameOf(isa)) continue;
    if (!CpuHas(isa)) {
      return {Isa::kPlain, "SVMSCORE_ISA names an instruction set that this CPU does not have"};
    }
    return {isa, nullptr};
  }
  return {Isa::kPlain, "SVMSCORE_ISA must be sse2, avx2, avx512 or plain"};
}

IsaChoice ChooseIsaFromEnvironment() {
  return ChooseIsa(std::getenv("SVMSCORE_ISA"));
}

}  // namespace MCSVM_700::packed
