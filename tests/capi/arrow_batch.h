// A hand-written producer of the Arrow C Data Interface, which counts what is released.
#ifndef TESTS_CAPI_ARROW_BATCH_H_
#define TESTS_CAPI_ARROW_BATCH_H_

#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <vector>

#include "capi/svmscore.h"
#include "tests/capi/columns.h"

namespace svmscore_test {

// Cells as a record batch. Every struct must outlive those who read it; releasing one frees nothing
// but is counted.
class ArrowBatch {
 public:
  // How the cells of a column are spelled: a format of the interface, or "dictionary".
  struct Layout {
    std::string format;
    std::int64_t before = 0;  // values of the column before its first
  };

  // One layout for all columns; cells that it cannot hold are texts, "u". `skipped`: rows of the
  // batch before its first. Empty cells are missing.
  ArrowBatch(const Rows& rows, const Layout& layout, std::int64_t skipped = 0);
  ArrowBatch(const ArrowBatch&) = delete;
  ArrowBatch& operator=(const ArrowBatch&) = delete;

  ArrowSchema schema{};
  ArrowArray array{};
  std::deque<ArrowSchema> schemas;  // of the columns, then of dictionaries
  std::deque<ArrowArray> arrays;    // likewise
  int released = 0;                 // structs

  // The column of that name.
  std::size_t Find(const std::string& name) const;

 private:
  template <typename T>
  T* Keep(std::size_t count) {
    auto& words = kept_.emplace_back(count * sizeof(T) / 8 + 2);
    return reinterpret_cast<T*>(words.data());
  }
  ArrowSchema NewSchema(const char* format, const char* name);
  ArrowArray NewArray(std::int64_t length, std::int64_t offset, std::vector<const void*> buffers);
  void AddColumn(const std::string& name, const std::vector<std::string>& cells,
                 const Layout& layout);
  // The buffers of texts, of the format u, U or vu, from the second on.
  std::vector<const void*> TextBuffers(const std::vector<std::string>& cells,
                                       const std::string& format);

  std::deque<std::vector<std::uint64_t>> kept_;
  std::deque<std::vector<const void*>> buffers_;
  std::deque<std::string> names_;
  std::vector<ArrowSchema*> schema_pointers_;
  std::vector<ArrowArray*> array_pointers_;
};

// The names and cells of a struct that the library made.
Rows RowsOf(const ArrowSchema& schema, const ArrowArray& array);

// A stream of batches. Ends with an error, with the message "the source is broken", where `fails`.
ArrowArrayStream StreamOf(std::vector<ArrowBatch*> batches, bool fails, int* released);

}  // namespace svmscore_test

#endif  // TESTS_CAPI_ARROW_BATCH_H_
