// MCMath_850::MCSymMatrix: a dense symmetric matrix in packed storage.
#ifndef MATH_SYMMETRIC_MATRIX_H_
#define MATH_SYMMETRIC_MATRIX_H_

#include <cstddef>
#include <vector>

#include "math/symmetric_matrix_interface.h"

namespace MCMath_850 {

// Holds the lower triangle row by row: (0,0), (1,0), (1,1), (2,0), ... Reading is safe from any
// number of threads; Display is not.
class MCSymMatrix : public IMCSymMatrix {
 public:
  // Order n (0 for a negative n). With `zero` every element is set to 0.0. If memory runs out the
  // matrix is invalid; nothing is thrown.
  MCSymMatrix(int n, bool zero);

  // Resizes `elements` to the n(n+1)/2 entries of a packed triangle, keeping those at the front and
  // appending zeros. Empties it for n <= 0. If it cannot grow, empties it, sets n to -1 and returns
  // false. Also returns false for a negative n.
  static bool ResizeNRows(std::vector<double>& elements, int& n);

  int GetNRows() const override { return rows_; }
  bool IsValidMatrix() const override { return rows_ >= 0; }
  double GetElem(int i, int j) const override { return elements_[Position(i, j)]; }
  bool ComputeSV(const std::vector<double>& v, std::vector<double>& out) const override;
  double ComputeVSV(const std::vector<double>& v) const override;
  double ComputeVSW(const std::vector<double>& v, const std::vector<double>& w) const override;
  bool SetElem(int i, int j, double value) override;
  // Sets the element at packed position k; false, and nothing is stored, if there is no such
  // position.
  bool SetElem(int k, double value);
  void Display() const override;

 private:
  static std::size_t Position(int i, int j);

  int rows_;
  int blocks_ = 1;
  int block_size_;
  std::vector<double> elements_;
};

}  // namespace MCMath_850

#endif  // MATH_SYMMETRIC_MATRIX_H_
