#include "svm/kernel/packed/operations.h"

namespace MCSVM_700::packed {

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

}  // namespace MCSVM_700::packed
