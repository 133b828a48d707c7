#include <ostream>

#include "svm/model/model.h"

namespace MCZandor_850 {

void SVMModel::Display(std::ostream& os) const {
  os << "\nBegin Display of SupportVectorMachineModel." << std::endl;
  // The label has nothing after it: the fields themselves are not listed.
  os << "Input Vector fields is: "
     << " Only prediction? ";
  os << (prediction_only_ ? "True." : "False.") << std::endl;
  os << "Target variable: ";
  if (target_var_ != nullptr) target_var_->Display(os);
  os << "Target categories: ";
  for (const std::string& name : target_category_names_) os << name;
  os << "End of SupportVectorMachineModel display." << std::endl;
}

}  // namespace MCZandor_850
