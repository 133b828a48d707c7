// What an instruction set offers for certified votes.
#ifndef SVM_KERNEL_CERTIFIED_LEVEL_OPERATIONS_H_
#define SVM_KERNEL_CERTIFIED_LEVEL_OPERATIONS_H_

#include "svm/kernel/certified/level_view.h"

namespace MCSVM_700::certified {

template <class T>
struct LevelOperations {
  std::size_t tile = 0;    // cases of a tile
  std::size_t narrow = 0;  // of a narrow one, for the cases left over; 0 where there are none

  // Estimates of `count` >= 1 cases of a dense model in tiles, of which work has room for
  // (count + tile - 1) / tile.
  void (*tiles)(const LevelView<T>& view, CaseColumns cases, std::size_t count,
                const LevelWork<T>& work, Estimates out) = nullptr;
  void (*narrow_tiles)(const LevelView<T>& view, CaseColumns cases, std::size_t count,
                       const LevelWork<T>& work, Estimates out) = nullptr;
  // Of one case, x[fields], of a dense or a sparse model.
  void (*one)(const LevelView<T>& view, const double* x, const LevelWork<T>& work,
              Estimates out) = nullptr;
  // Of some of the first `count` cases of a sparse model, 1 <= count <= kListedCases. Returns how
  // many were taken, at least min(count, kFewListed / 2); their entries are then listed by case.
  std::size_t (*sparse)(const LevelView<T>& view, CaseColumns cases, std::size_t count,
                        const LevelWork<T>& work, Estimates out) = nullptr;
  // out[i] = 2^in[i] as the forms compute it, within Precision<T>::kExp2Error, for in[i] from
  // -125 (single precision) or -900 to 64.
  void (*exp2)(const T* in, T* out, std::size_t count) = nullptr;
};

struct Operations {
  LevelOperations<float> single;
  LevelOperations<double> twofold;  // `tiles` and `exp2` alone
  void (*linear)(const LinearView& view, CaseColumns cases, std::size_t count, Estimates out);
  void (*linear_one)(const LinearView& view, const double* x, Estimates out);
};

// Each defined in the file of its instruction set.
const Operations& Avx2Operations();
const Operations& Avx512Operations();

// Null where nothing can be certified: without fused multiply-add. REQUIRES: the CPU has the
// instruction set.
const Operations* OperationsOf(packed::Isa isa);

}  // namespace MCSVM_700::certified

#endif  // SVM_KERNEL_CERTIFIED_LEVEL_OPERATIONS_H_
