// Columns of scores on their way from the C interface to NumPy.
#ifndef PYTHON_SRC_RESULTS_H_
#define PYTHON_SRC_RESULTS_H_

#include <cstdint>
#include <string>
#include <vector>

#include <nanobind/nanobind.h>

#include <svmscore.h>

namespace svmscore::python {

// One column of scores, put together from blocks of rows.
class ResultColumn {
 public:
  // `type`: SVMSCORE_F64, I64, UTF8_64 or DICTIONARY.
  explicit ResultColumn(int type) : type_(type) {}

  void Reserve(std::size_t rows);
  // Copies the values of a column of that type. Needs no interpreter lock.
  void Append(const svmscore_column& block);
  // The column as Python sees it, once; (values, missing):
  // F64: float64, NaN where there is no value; None. I64: int64; bools, or None where none is
  // missing. DICTIONARY: int32 codes, -1 where there is no value; None. UTF8_64: a list of str and
  // None; None.
  nanobind::tuple Take();

 private:
  int type_;
  std::vector<double> numbers_;
  std::vector<std::int64_t> wholes_;
  std::vector<std::int32_t> codes_;
  std::vector<bool> missing_;  // of wholes and texts; empty until one is
  std::string bytes_;
  std::vector<std::size_t> ends_;  // of each text in bytes_
};

}  // namespace svmscore::python

#endif  // PYTHON_SRC_RESULTS_H_
