// The cells of a column that lies in the caller's memory.
#ifndef CAPI_COLUMN_VIEW_H_
#define CAPI_COLUMN_VIEW_H_

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "capi/svmscore.h"

namespace svmscore::capi {

enum class CellType {
  kNull,
  kF64,
  kF32,
  kF16,
  kI64,
  kI32,
  kI16,
  kI8,
  kU64,
  kU32,
  kU16,
  kU8,
  kBit,
  kByte,  // a bool
  kText32,
  kText64,
  kTextView,
  kDictionary,
  kDate,      // i32, days since 1970-01-01
  kDate64,    // i64, `ticks` a second since 1970-01-01, of which the days count
  kTime32,    // i32, `ticks` a second since midnight
  kTime64,    // i64, likewise
  kDateTime,  // i64, `ticks` a second since 1970-01-01T00:00
  kUnread,    // of a type that is not read
};

// What a cell is once it has been read.
enum class CellClass { kNothing, kNumber, kWhole, kBool, kText, kMoment };
CellClass ClassOf(CellType type);
// Bytes of a value; 0 where values are no bytes of their own.
std::size_t WidthOf(CellType type);

// Read only; may be used on any number of threads once Check has returned. Lives: the memory it
// looks at, longer than it.
struct ColumnView {
  struct Buffer {
    const std::uint8_t* data;
    std::size_t size;
  };

  std::string name;
  std::string type_name;  // for messages
  CellType type = CellType::kNull;
  CellType code_type = CellType::kI32;  // of a dictionary
  std::size_t length = 0;
  const std::uint8_t* data = nullptr;
  std::size_t data_size = SVMSCORE_UNKNOWN_SIZE;
  std::size_t stride = 0;
  std::size_t offset = 0;  // of all but row_validity
  const std::uint8_t* validity = nullptr;
  std::size_t validity_size = SVMSCORE_UNKNOWN_SIZE;
  const std::uint8_t* row_validity = nullptr;  // of the table's rows
  std::size_t row_offset = 0;
  const std::uint8_t* offsets = nullptr;
  std::size_t offsets_size = SVMSCORE_UNKNOWN_SIZE;
  std::int64_t ticks = 1;       // of a moment, a second
  std::vector<Buffer> buffers;  // of kTextView
  std::shared_ptr<const ColumnView> dictionary;

  // Throws a Refusal that names the column where a buffer is too small or null, and where offsets,
  // codes or positions lead out of one.
  void Check() const;

  bool IsPresent(std::size_t row) const {
    return type != CellType::kNull && HasBit(validity, offset + row) &&
           HasBit(row_validity, row_offset + row);
  }
  bool HasMissing() const {
    return type == CellType::kNull || validity != nullptr || row_validity != nullptr;
  }
  // Days of a date, else seconds; and beyond them a fraction of a second, in ticks.
  struct Moment {
    std::int64_t whole;
    std::int64_t rest;
  };
  // Of a present cell of class kNumber, kWhole (but not of kU64), kBool, kText or kMoment, and of a
  // dictionary. REQUIRES: Check has returned.
  double NumberAt(std::size_t row) const;
  std::int64_t WholeAt(std::size_t row) const { return IntegerAt(type, row); }
  std::uint64_t UnsignedAt(std::size_t row) const { return Load<std::uint64_t>(row); }
  bool BoolAt(std::size_t row) const;
  std::string_view TextAt(std::size_t row) const;
  Moment MomentAt(std::size_t row) const;
  std::size_t CodeAt(std::size_t row) const {
    return static_cast<std::size_t>(IntegerAt(code_type, row));
  }

  template <typename T>
  T Load(std::size_t row) const {
    T value;
    std::memcpy(&value, data + (offset + row) * stride, sizeof value);
    return value;
  }

 private:
  static bool HasBit(const std::uint8_t* bits, std::size_t at) {
    return bits == nullptr || ((bits[at / 8] >> (at % 8)) & 1U) != 0;
  }
  std::int64_t IntegerAt(CellType of, std::size_t row) const;
  std::uint64_t OffsetAt(std::size_t position) const;
  [[noreturn]] void Refuse(const std::string& what) const;
  void CheckBuffer(const void* buffer, std::size_t size, std::size_t needed,
                   const char* which) const;
  void CheckTexts() const;
  void CheckTextViews() const;
  void CheckCodes() const;
};

// The view of a column of the caller's. Throws a Refusal for one that is not whole.
ColumnView ViewOf(const svmscore_column& given);
// The views of the columns of a table. Throws a Refusal, also for one that is not as long as the
// table. Null is allowed for no columns.
std::vector<ColumnView> ViewsOf(const svmscore_column* columns, std::size_t count,
                                std::size_t rows);

}  // namespace svmscore::capi

#endif  // CAPI_COLUMN_VIEW_H_
