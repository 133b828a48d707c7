#include "svm/model/data_case.h"

#include <cstddef>
#include <ostream>

namespace MCSVM_700 {

void SVMDataCase::Display(std::ostream& os) const {
  os << "TVal=" << target_value << ",";
  const bool paired = indices.size() == values.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (paired) {
      os << "(" << indices[i] << "," << values[i] << ") ";
    } else {
      os << values[i] << " ";
    }
  }
  os << std::endl;
}

}  // namespace MCSVM_700
