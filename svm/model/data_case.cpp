#include "svm/model/data_case.h"

#include <cstddef>
#include <locale>
#include <ostream>

namespace MCSVM_700 {

namespace {

// The stream may have the process's locale, which would write numbers differently.
class ClassicLocale {
 public:
  explicit ClassicLocale(std::ostream& os) : os_(os), before_(os.imbue(std::locale::classic())) {}
  ~ClassicLocale() { os_.imbue(before_); }
  ClassicLocale(const ClassicLocale&) = delete;
  ClassicLocale& operator=(const ClassicLocale&) = delete;

 private:
  std::ostream& os_;
  std::locale before_;
};

}  // namespace

void SVMDataCase::Display(std::ostream& os) const {
  const ClassicLocale classic(os);
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
