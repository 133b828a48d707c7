// A table of Python's as columns of the C interface.
#ifndef PYTHON_SRC_COLUMNS_H_
#define PYTHON_SRC_COLUMNS_H_

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include <nanobind/nanobind.h>

#include <svmscore.h>

namespace svmscore::python {

// Columns of one length. Values of numbers are not copied: the arrays that hold them are kept
// alive. Not a number is a missing value here. The functions that add throw Python's TypeError and
// ValueError with the column's name. [one thread while columns are added, any number after]
class Columns {
 public:
  explicit Columns(std::size_t row_count) : row_count_(row_count) {}
  ~Columns();
  Columns(const Columns&) = delete;
  Columns& operator=(const Columns&) = delete;

  // An array of one axis, [rows], of numbers or bools in this machine's byte order, with any stride
  // that is not negative. `missing`: an array of bools that says which rows have no value, or None.
  void AddNumbers(nanobind::str name, nanobind::handle array, nanobind::handle missing);
  // An array of two axes, [rows, names], of numbers.
  void AddMatrix(nanobind::sequence names, nanobind::handle array);
  // Codes [rows], whole numbers; a negative one is a missing value. `values`: what they mean, an
  // array of numbers or a list as of AddObjects.
  void AddCodes(nanobind::str name, nanobind::handle codes, nanobind::handle values);
  // A list of Python's objects: texts, bools, numbers; None, NaN and what pandas calls NA or NaT
  // are missing values. A column of numbers alone is one of doubles, or of whole numbers; a mixed
  // one becomes texts, in which a bool is 1 or 0 where `counts_bools`, and else true or false.
  void AddObjects(nanobind::str name, nanobind::list values, bool counts_bools);
  // Texts as Arrow lays them out: `offsets` [rows + offset + 1] of 32 or 64 bits, bytes, and a
  // bitmap of which values are there, or None. All are objects with Python's buffer protocol.
  void AddTexts(nanobind::str name, nanobind::handle offsets, int offset_bits,
                nanobind::handle bytes, nanobind::handle validity, std::size_t offset);

  std::size_t RowCount() const { return row_count_; }
  // The columns from row `start` on, [count] of them.
  std::vector<svmscore_column> Rows(std::size_t start, std::size_t count) const;
  const std::vector<svmscore_column>& All() const { return columns_; }

 private:
  svmscore_column& Add(nanobind::handle name);
  const Py_buffer& Take(nanobind::handle object, nanobind::handle name);
  void SetNumbers(svmscore_column& column, const Py_buffer& buffer, int axis_of_rows,
                  std::size_t first, nanobind::handle name);
  void MarkNotANumber(svmscore_column& column);
  void SetObjects(svmscore_column& column, nanobind::tuple values, nanobind::handle name,
                  bool counts_bools);
  std::vector<std::uint8_t>& NewBitmap(std::size_t length);

  std::size_t row_count_;
  std::vector<svmscore_column> columns_;
  std::deque<svmscore_column> dictionaries_;
  std::deque<std::string> names_;
  std::deque<Py_buffer> buffers_;
  std::deque<std::vector<std::uint8_t>> bitmaps_;
  std::deque<std::string> bytes_;
  std::deque<std::vector<std::int64_t>> wholes_;
  std::deque<std::vector<double>> doubles_;
};

}  // namespace svmscore::python

#endif  // PYTHON_SRC_COLUMNS_H_
