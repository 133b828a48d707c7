#include "svm/kernel/explain/operations.h"

namespace MCSVM_700::explain {

const Operations& OperationsOf(svmscore::Isa isa) {
  switch (isa) {
    case svmscore::Isa::kAvx512:
      return Avx512Operations();
    case svmscore::Isa::kAvx2:
      return Avx2Operations();
    case svmscore::Isa::kSse2:
    case svmscore::Isa::kPlain:
      break;
  }
  return Sse2Operations();
}

}  // namespace MCSVM_700::explain
