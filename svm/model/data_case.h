// MCSVM_700::SVMDataCase: one support vector, stored sparse.
#ifndef SVM_MODEL_DATA_CASE_H_
#define SVM_MODEL_DATA_CASE_H_

#include <iosfwd>
#include <vector>

namespace MCSVM_700 {

// Indices and values are parallel: 0-based positions in the vector fields, and the entries there,
// in the document's order.
class SVMDataCase {
 public:
  // Writes one line: the target value, then "(index,value) " for each entry, or the bare values
  // where the lists differ in length. Numbers have the stream's flags and precision. Flushes.
  void Display(std::ostream& os) const;

  double target_value = -1.0;
  std::vector<int> indices;
  std::vector<double> values;
};

}  // namespace MCSVM_700

#endif  // SVM_MODEL_DATA_CASE_H_
