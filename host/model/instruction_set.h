// The instruction set that a process computes with.
#ifndef HOST_MODEL_INSTRUCTION_SET_H_
#define HOST_MODEL_INSTRUCTION_SET_H_

#include "host/text/api.h"

namespace svmscore {

// From least to most. kPlain is the definition itself, case by case.
enum class Isa { kPlain = 0, kSse2 = 1, kAvx2 = 2, kAvx512 = 3 };

// Whether this CPU and its operating system run it.
SVMSCORE_HOST_API bool CpuHas(Isa isa);
// "plain", "sse2", "avx2" or "avx512"
SVMSCORE_HOST_API const char* NameOf(Isa isa);

struct IsaChoice {
  Isa isa = Isa::kPlain;        // what can be had in any case
  const char* error = nullptr;  // a sentence where the name that was given cannot be had
};
// The one that `forced` names; the best of this CPU where that is null, "", or cannot be had.
SVMSCORE_HOST_API IsaChoice ChooseIsa(const char* forced);

// The choice of this process: that of the environment variable SVMSCORE_ISA, which is read when
// somebody first asks, and no more. Any thread.
SVMSCORE_HOST_API const IsaChoice& ChosenIsa();
// Throws an SSException (260317) where SVMSCORE_ISA names none that can be had.
SVMSCORE_HOST_API void RequireChosenIsa();
// For a program that chooses for itself: models that are made from now on compute with `isa`. No
// other thread may ask meanwhile. REQUIRES: CpuHas(isa).
SVMSCORE_HOST_API void UseIsa(Isa isa);

}  // namespace svmscore

#endif  // HOST_MODEL_INSTRUCTION_SET_H_
