#include "math/symmetric_matrix.h"

#include <algorithm>
#include <exception>

#include "common/display.h"

namespace MCMath_850 {
namespace {

std::size_t PackedSize(int n) {
  const auto order = static_cast<std::size_t>(n);
  return order * (order + 1) / 2;
}

}  // namespace

std::size_t MCSymMatrix::Position(int i, int j) {
  const auto row = static_cast<std::size_t>(std::max(i, j));
  const auto column = static_cast<std::size_t>(std::min(i, j));
  return row * (row + 1) / 2 + column;
}

MCSymMatrix::MCSymMatrix(int n, bool zero) : rows_(std::max(n, 0)), block_size_(std::max(n, 0)) {
  if (ResizeNRows(elements_, rows_) && zero) std::fill(elements_.begin(), elements_.end(), 0.0);
}

bool MCSymMatrix::ResizeNRows(std::vector<double>& elements, int& n) {
  if (n > 0) {
    try {
      elements.resize(PackedSize(n));
    } catch (const std::exception&) {
      n = -1;
    }
  }
  if (n <= 0) elements.clear();
  return n >= 0;
}

bool MCSymMatrix::ComputeSV(const std::vector<double>& v, std::vector<double>& out) const {
  if (rows_ < 1) return true;
  const auto n = static_cast<std::size_t>(rows_);
  if (v.size() < n) return false;
  out.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    double sum = 0.0;
    std::size_t position = i * (i + 1) / 2;  // of (i, 0)
    for (std::size_t j = 0; j < n; ++j) {
      sum += elements_[position] * v[j];
      position += j < i ? 1 : j + 1;  // along the row, then down the column
    }
    out[i] = sum;
  }
  return true;
}

double MCSymMatrix::ComputeVSV(const std::vector<double>& v) const {
  return ComputeVSW(v, v);
}

double MCSymMatrix::ComputeVSW(const std::vector<double>& v, const std::vector<double>& w) const {
  if (rows_ < 1) return 0.0;
  const auto n = static_cast<std::size_t>(rows_);
  if (v.size() != n || w.size() != n) return 0.0;
  double total = 0.0;
  for (std::size_t i = 0; i < n; ++i) {
    double sum = 0.0;
    std::size_t position = i * (i + 1) / 2;
    for (std::size_t j = 0; j < n; ++j) {
      sum += v[j] * elements_[position];
      position += j < i ? 1 : j + 1;
    }
    total += w[i] * sum;
  }
  return total;
}

bool MCSymMatrix::SetElem(int i, int j, double value) {
  elements_[Position(i, j)] = value;
  return true;
}

bool MCSymMatrix::SetElem(int k, double value) {
  if (k < 0 || rows_ < 1 || static_cast<std::size_t>(k) >= PackedSize(rows_)) return false;
  elements_[static_cast<std::size_t>(k)] = value;
  return true;
}

void MCSymMatrix::Display() const {
  MCDisplay_850::DisplayText(1, "MCSymMatrix display start");
  MCDisplay_850::DisplayI("The number of rows", rows_);
  MCDisplay_850::DisplayI("The number of blocks", blocks_);
  MCDisplay_850::DisplayI("The block size", block_size_);
  MCDisplay_850::DisplayDVTR("Lower triangular", elements_, rows_);
  MCDisplay_850::DisplayText(1, "MCSymMatrix display end");
}

}  // namespace MCMath_850
