// What an instruction set offers.
#ifndef SVM_KERNEL_PACKED_OPERATIONS_H_
#define SVM_KERNEL_PACKED_OPERATIONS_H_

#include <cstddef>

#include "svm/kernel/packed/layout.h"

namespace MCSVM_700::packed {

struct Operations {
  Isa isa;
  std::size_t lanes;  // doubles of one vector register
  std::size_t tile;   // cases of one tile

  // Decision values of one case of finite entries, [machines]. False: the packed form cannot score
  // the case, and `decisions` holds nothing useful.
  bool (*decide_one)(const ModelView& model, const double* x, Work& work, double* decisions);
  // Decision values of some of the first `count` >= 1 cases. Returns how many were taken, at least
  // 1; work.rejects is not 0 for those of them that the packed form cannot score.
  std::size_t (*decide_many)(const ModelView& model, CaseColumns cases, std::size_t count,
                             Work& work, DecisionColumns decisions);

  // out[i] = f(in[i]). Null where the library's functions are called instead, as without FMA.
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

// Null for kPlain. REQUIRES: the CPU has the instruction set.
const Operations* OperationsOf(Isa isa);

}  // namespace MCSVM_700::packed

#endif  // SVM_KERNEL_PACKED_OPERATIONS_H_
