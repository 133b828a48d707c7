// How a process computes: its instruction set, and whether votes are certified.
#ifndef HOST_MODEL_INSTRUCTION_SET_H_
#define HOST_MODEL_INSTRUCTION_SET_H_

#include "host/text/api.h"

namespace svmscore {

// From least to most. kPlain is the definition itself, case by case.
enum class Isa { kPlain = 0, kSse2 = 1, kAvx2 = 2, kAvx512 = 3 };

// Whether this CPU and its operating system support it. [any thread] Fails: never.
SVMSCORE_HOST_API bool CpuHas(Isa isa);
// "plain", "sse2", "avx2" or "avx512". [any thread] Lives: as long as the process. Fails: never.
SVMSCORE_HOST_API const char* NameOf(Isa isa);

struct IsaChoice {
  Isa isa = Isa::kPlain;        // always one that this CPU supports
  const char* error = nullptr;  // why the name that was given cannot be used; null otherwise
};
// The one that `forced` names; the best of this CPU where that is null, "", or cannot be used.
// [any thread] Lives: the error, as long as the process. Fails: by `error`.
SVMSCORE_HOST_API IsaChoice ChooseIsa(const char* forced);

// The choice of this process, by the environment variable SVMSCORE_ISA, which is read once, at the
// first call. [any thread] Lives: as long as the process. Fails: by `error`.
SVMSCORE_HOST_API const IsaChoice& ChosenIsa();
// Checks that the choices of this process are what SVMSCORE_ISA and SVMSCORE_CERTIFY ask for.
// [any thread] Fails: SSException (260317) where the first names an instruction set that is
// unknown or that this CPU lacks, or the second is neither "on" nor "off"; std::bad_alloc.
SVMSCORE_HOST_API void RequireChosenIsa();
// For a program that chooses for itself: models that are made from now on compute with `isa`.
// REQUIRES: CpuHas(isa), and no other thread calls functions of this file or makes a model.
// [one thread] of the process. Fails: never.
SVMSCORE_HOST_API void UseIsa(Isa isa);

// Whether votes may be decided by estimates within proven bounds, which changes no result: unless
// the environment variable SVMSCORE_CERTIFY is "off". It is read once, at the first call.
// [any thread] Fails: never.
SVMSCORE_HOST_API bool CertifiesVotes();
// For a program that chooses for itself: of models that are made from now on. As UseIsa.
SVMSCORE_HOST_API void UseCertifiedVotes(bool certifies);

}  // namespace svmscore

#endif  // HOST_MODEL_INSTRUCTION_SET_H_
