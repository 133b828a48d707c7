#include "svm/model/data_case.h"

#include <cstddef>
#include <ostream>
#include <string>

#include "common/display_format.h"

namespace MCSVM_700 {

using svmscore::display::General;

void SVMDataCase::Display(std::ostream& os) const {
  os << "TVal=" << General(target_value) << ",";
  const bool paired = indices.size() == values.size();
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (paired) {
      os << "(" << std::to_string(indices[i]) << "," << General(values[i]) << ") ";
    } else {
      os << General(values[i]) << " ";
    }
  }
  os << std::endl;
}

}  // namespace MCSVM_700
