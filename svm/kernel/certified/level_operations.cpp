#include "svm/kernel/certified/level_operations.h"

namespace MCSVM_700::certified {

const Operations* OperationsOf(packed::Isa isa) {
  switch (isa) {
    case packed::Isa::kAvx2:
      return &Avx2Operations();
    case packed::Isa::kAvx512:
      return &Avx512Operations();
    case packed::Isa::kSse2:
    case packed::Isa::kPlain:
      break;
  }
  return nullptr;
}

}  // namespace MCSVM_700::certified
