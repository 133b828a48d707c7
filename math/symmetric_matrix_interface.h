// MCMath_850::IMCSymMatrix: the operations of a symmetric matrix.
#ifndef MATH_SYMMETRIC_MATRIX_INTERFACE_H_
#define MATH_SYMMETRIC_MATRIX_INTERFACE_H_

#include <vector>

namespace MCMath_850 {

// Q is the matrix, n its order. The order of the virtual operations is part of the interface.
class IMCSymMatrix {
 public:
  virtual ~IMCSymMatrix() = default;

  // n; negative for a matrix that could not be allocated.
  virtual int GetNRows() const = 0;
  virtual bool IsValidMatrix() const = 0;
  // REQUIRES: 0 <= i, j < n.
  virtual double GetElem(int i, int j) const = 0;
  // out = Q v, from the first n entries of v; `out` gets n entries. False, and `out` is left alone,
  // when v has fewer. Each entry is summed in ascending order of the column.
  virtual bool ComputeSV(const std::vector<double>& v, std::vector<double>& out) const = 0;
  // v'Qv and v'Qw, summed row by row: w[i] times the sum of v[j] Q(i, j). 0.0 unless both vectors
  // have n entries.
  virtual double ComputeVSV(const std::vector<double>& v) const = 0;
  virtual double ComputeVSW(const std::vector<double>& v, const std::vector<double>& w) const = 0;
  // Sets (i, j) and (j, i); always true. REQUIRES: 0 <= i, j < n.
  virtual bool SetElem(int i, int j, double value) = 0;
  // Writes the matrix to the diagnostic stream.
  virtual void Display() const = 0;
};

}  // namespace MCMath_850

#endif  // MATH_SYMMETRIC_MATRIX_INTERFACE_H_
