// What an instruction set offers, and the one place that chooses between instruction sets.
#ifndef SVM_KERNEL_PACKED_OPERATIONS_H_
#define SVM_KERNEL_PACKED_OPERATIONS_H_

#include <cstddef>

#include "svm/kernel/packed/layout.h"

namespace MCSVM_700::packed {

struct Operations {
  Isa isa;
  std::size_t lanes;  // doubles of one vector register
  std::size_t tile;   // cases of one tile

  // Decision values of one case of finite entries, [machines]. False: the case is not one for the
  // packed form, and `decisions` holds nothing of use.
  bool (*decide_one)(const ModelView& model, const double* x, Work& work, double* decisions);
  // Decision values of some of the first `count` >= 1 cases; entry f of case c is
  // columns[f * stride + c], decision m of case c goes to decisions[m * decision_stride + c].
  // Returns how many were taken, at least 1; work.rejects tells which of them are not 0 and so
  // were not for the packed form.
  std::size_t (*decide_many)(const ModelView& model, const double* columns, std::size_t stride,
                             std::size_t count, Work& work, double* decisions,
                             std::size_t decision_stride);

  // out[i] = f(in[i]). Null where the library's functions are called, which is so without FMA.
  void (*exp)(const double* in, double* out, std::size_t count);
  void (*tanh)(const double* in, double* out, std::size_t count);
  // degree from 1 to kMaxWholeDegree
  void (*pow)(const double* in, int degree, double* out, std::size_t count);
};

constexpr int kMaxWholeDegree = 8;

// Each defined in the file of its instruction set.
const Operations& Sse2Operations();
const Operations& Avx2Operations();
const Operations& Avx512Operations();

// Null for kPlain. REQUIRES: CpuHas(isa).
const Operations* OperationsOf(Isa isa);
// Whether this CPU and its operating system run it.
bool CpuHas(Isa isa);
// "plain", "sse2", "avx2" or "avx512"
const char* NameOf(Isa isa);

struct IsaChoice {
  Isa isa = Isa::kPlain;
  const char* error = nullptr;  // a sentence where `forced` cannot be had; isa is kPlain then
};
// The best that this CPU has, or the one named by `forced`, where that is neither null nor "".
IsaChoice ChooseIsa(const char* forced);
// ChooseIsa of the environment variable SVMSCORE_ISA.
IsaChoice ChooseIsaFromEnvironment();

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_OPERATIONS_H_
