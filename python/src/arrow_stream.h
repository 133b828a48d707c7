// A stream of Arrow's record batches, as the extension module scores it.
#ifndef PYTHON_SRC_ARROW_STREAM_H_
#define PYTHON_SRC_ARROW_STREAM_H_

#include <cstdint>
#include <deque>
#include <vector>

#include <svmscore.h>

namespace svmscore::python {

// Calls the release function of what the C data interface hands over, once.
template <typename Struct>
struct Released {
  Struct value{};
  Released() = default;
  Released(const Released&) = delete;
  Released& operator=(const Released&) = delete;
  ~Released() {
    if (value.release != nullptr) value.release(&value);
  }
};

// A record batch in which values that are not a number are missing: a view on another one, which it
// neither changes nor frees.
class BatchWithoutNotANumber {
 public:
  // Throws std::bad_alloc. Columns whose lengths or buffers do not make sense are left as they are,
  // for the library to refuse.
  BatchWithoutNotANumber(const ArrowSchema& schema, const ArrowArray& batch);
  // The rows from `start` on, [count] of them: a view on this one.
  ArrowArray Rows(std::int64_t start, std::int64_t count) const;

 private:
  ArrowArray View(const ArrowSchema& schema, const ArrowArray& array);

  std::deque<ArrowArray> arrays_;
  std::deque<std::vector<ArrowArray*>> children_;
  std::deque<std::vector<const void*>> buffers_;
  std::deque<std::vector<std::uint8_t>> bitmaps_;
  ArrowArray root_;
};

// A stream that has these columns, which it takes over, and no rows.
ArrowArrayStream StreamOfNoRows(Released<ArrowSchema>& schema);

// A column of a scored record batch, as one of the C interface.
svmscore_column ColumnOfArray(int type, const ArrowArray& array);

}  // namespace svmscore::python

#endif  // PYTHON_SRC_ARROW_STREAM_H_
