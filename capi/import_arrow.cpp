// Arrow's arrays as columns.
#include <array>
#include <limits>
#include <string_view>

#include <fmt/format.h>

#include "capi/arrow_columns.h"
#include "capi/call_error.h"

namespace svmscore::capi {
namespace {

struct Format {
  std::string_view letters;
  CellType type;
  const char* name;
  std::int64_t ticks = 1;
};

constexpr std::array kFormats = {
    Format{"n", CellType::kNull, "null"},
    Format{"b", CellType::kBit, "bool"},
    Format{"c", CellType::kI8, "int8"},
    Format{"C", CellType::kU8, "uint8"},
    Format{"s", CellType::kI16, "int16"},
    Format{"S", CellType::kU16, "uint16"},
    Format{"i", CellType::kI32, "int32"},
    Format{"I", CellType::kU32, "uint32"},
    Format{"l", CellType::kI64, "int64"},
    Format{"L", CellType::kU64, "uint64"},
    Format{"e", CellType::kF16, "float16"},
    Format{"f", CellType::kF32, "float32"},
    Format{"g", CellType::kF64, "float64"},
    Format{"u", CellType::kText32, "utf8"},
    Format{"U", CellType::kText64, "large_utf8"},
    Format{"vu", CellType::kTextView, "utf8_view"},
    Format{"tdD", CellType::kDate, "date32"},
    Format{"tdm", CellType::kDate64, "date64", 1000},
    Format{"tts", CellType::kTime32, "time32"},
    Format{"ttm", CellType::kTime32, "time32", 1000},
    Format{"ttu", CellType::kTime64, "time64", 1000000},
    Format{"ttn", CellType::kTime64, "time64", 1000000000},
    Format{"tss:", CellType::kDateTime, "timestamp"},
    Format{"tsm:", CellType::kDateTime, "timestamp", 1000},
    Format{"tsu:", CellType::kDateTime, "timestamp", 1000000},
    Format{"tsn:", CellType::kDateTime, "timestamp", 1000000000},
};

std::string_view ViewOfText(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

// Timestamps in UTC are read like those without a zone.
const Format* FindFormat(std::string_view letters) {
  for (const std::string_view utc : {"UTC", "Z", "+00:00"}) {
    if (letters.starts_with("ts") && letters.ends_with(utc)) letters.remove_suffix(utc.size());
  }
  for (const Format& format : kFormats) {
    if (format.letters == letters) return &format;
  }
  return nullptr;
}

// What formats of types that are not read are called in messages.
std::string NameOfFormat(std::string_view letters) {
  if (letters.starts_with("+w") || letters.starts_with("+l") || letters.starts_with("+L") ||
      letters.starts_with("+v")) {
    return "list";
  }
  if (letters.starts_with("+s")) return "struct";
  if (letters.starts_with("+m")) return "map";
  if (letters.starts_with("+u")) return "union";
  if (letters.starts_with("+r")) return "run_end_encoded";
  if (letters.starts_with("d:")) return "decimal";
  if (letters.starts_with("ts")) return "timestamp with a time zone";
  if (letters.starts_with("tD") || letters.starts_with("ti")) return "duration or interval";
  if (letters == "z" || letters == "Z" || letters == "vz" || letters.starts_with("w:")) {
    return "binary";
  }
  return fmt::format("with the format \"{}\"", letters);
}

ColumnView ColumnOf(const ArrowSchema& schema) {
  ColumnView column;
  column.name = ViewOfText(schema.name);
  const std::string_view letters = ViewOfText(schema.format);
  const Format* format = FindFormat(letters);
  if (format == nullptr) {
    column.type = CellType::kUnread;
    column.type_name = NameOfFormat(letters);
    return column;
  }
  column.type = format->type;
  column.type_name = format->name;
  column.ticks = format->ticks;
  if (schema.dictionary == nullptr) return column;
  ColumnView values = ColumnOf(*schema.dictionary);
  values.name = column.name;
  const bool readable = ClassOf(column.type) == CellClass::kWhole &&
                        values.type != CellType::kDictionary && values.type != CellType::kUnread;
  column.code_type = column.type;
  column.type = readable ? CellType::kDictionary : CellType::kUnread;
  column.type_name = "dictionary of " + values.type_name;
  if (readable) column.dictionary = std::make_shared<const ColumnView>(std::move(values));
  return column;
}

// How many buffers an array of the type has at least.
std::int64_t BufferCount(CellType type) {
  switch (type) {
    case CellType::kNull:
      return 0;
    case CellType::kText32:
    case CellType::kText64:
    case CellType::kTextView:
      return 3;
    default:
      return 2;
  }
}

const std::uint8_t* Bytes(const ArrowArray& array, std::int64_t buffer) {
  return static_cast<const std::uint8_t*>(array.buffers[buffer]);
}

std::size_t SizeFrom(std::int64_t number, const std::string& column, const char* what) {
  if (number < 0) RefuseColumn(column, fmt::format("its {} is {}", what, number));
  return static_cast<std::size_t>(number);
}

// The sizes of the buffers of text views stand in the last buffer.
void FillTextBuffers(const ArrowArray& array, ColumnView& column) {
  column.buffers.clear();
  const std::int64_t count = array.n_buffers - 3;
  if (count == 0) return;
  const auto* sizes = Bytes(array, array.n_buffers - 1);
  if (sizes == nullptr) RefuseColumn(column.name, "the sizes of its buffers are null");
  for (std::int64_t i = 0; i < count; ++i) {
    std::int64_t size = 0;
    std::memcpy(&size, sizes + i * 8, sizeof size);
    column.buffers.push_back({Bytes(array, 2 + i), SizeFrom(size, column.name, "buffer's size")});
    if (size > 0 && column.buffers.back().data == nullptr) {
      RefuseColumn(column.name, "one of its buffers is null");
    }
  }
}

// `first` and `length`: the rows of the column that are read.
void Fill(const ArrowArray& array, std::size_t first, std::size_t length, ColumnView& column) {
  if (array.release == nullptr) RefuseColumn(column.name, "its values have been released");
  const CellType codes = column.type == CellType::kDictionary ? column.code_type : column.type;
  if (array.n_buffers < BufferCount(codes) ||
      (array.buffers == nullptr && BufferCount(codes) > 0)) {
    RefuseColumn(column.name, fmt::format("it has {} buffers", array.n_buffers));
  }
  const std::size_t own = SizeFrom(array.offset, column.name, "offset");
  const std::size_t rows = SizeFrom(array.length, column.name, "length");
  if (first > rows || length > rows - first) {
    RefuseColumn(column.name, fmt::format("it has {} values, and the batch more rows", rows));
  }
  column.length = length;
  column.offset = own + first;
  column.stride = WidthOf(codes);
  if (column.type == CellType::kNull) return;
  column.validity = array.null_count == 0 ? nullptr : Bytes(array, 0);
  const bool by_offsets = codes == CellType::kText32 || codes == CellType::kText64;
  column.offsets = by_offsets ? Bytes(array, 1) : nullptr;
  column.data = Bytes(array, by_offsets ? 2 : 1);
  if (codes == CellType::kTextView) FillTextBuffers(array, column);
  if (column.type != CellType::kDictionary) return;
  if (array.dictionary == nullptr) RefuseColumn(column.name, "its dictionary is null");
  ColumnView values = *column.dictionary;
  Fill(*array.dictionary, 0, SizeFrom(array.dictionary->length, column.name, "dictionary's length"),
       values);
  column.dictionary = std::make_shared<const ColumnView>(std::move(values));
}

}  // namespace

std::vector<ColumnView> ColumnsOf(const ArrowSchema& schema) {
  if (schema.release == nullptr) RefuseArgument("the schema has been released", "schema");
  if (ViewOfText(schema.format) != "+s") {
    RefuseArgument("the schema is no struct", "schema",
                   "hand over a record batch: a struct whose children are the columns");
  }
  if (schema.n_children < 0 || (schema.n_children > 0 && schema.children == nullptr)) {
    RefuseArgument("the schema's children are missing", "schema");
  }
  std::vector<ColumnView> columns;
  for (std::int64_t i = 0; i < schema.n_children; ++i) {
    const ArrowSchema* child = schema.children[i];
    if (child == nullptr || child->release == nullptr) {
      RefuseArgument(fmt::format("column {} of the schema has been released", i), "schema");
    }
    columns.push_back(ColumnOf(*child));
  }
  return columns;
}

void FillColumns(const ArrowSchema& schema, const ArrowArray& batch,
                 std::vector<ColumnView>& columns) {
  if (batch.release == nullptr) RefuseArgument("the batch has been released", "batch");
  if (batch.n_children != schema.n_children ||
      (batch.n_children > 0 && batch.children == nullptr)) {
    RefuseArgument("the batch has not the columns of the schema", "batch");
  }
  if (batch.length < 0 || batch.offset < 0) {
    RefuseArgument("the batch's length or offset is negative", "batch");
  }
  const bool has_nulls = batch.n_buffers > 0 && batch.null_count != 0 && batch.buffers != nullptr;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    ColumnView& column = columns[i];
    if (batch.children[i] == nullptr) RefuseArgument("a column of the batch is null", "batch");
    if (column.type == CellType::kUnread) {
      column.length = static_cast<std::size_t>(batch.length);
      continue;
    }
    Fill(*batch.children[i], static_cast<std::size_t>(batch.offset),
         static_cast<std::size_t>(batch.length), column);
    column.row_validity = has_nulls ? Bytes(batch, 0) : nullptr;
    column.row_offset = static_cast<std::size_t>(batch.offset);
  }
}

}  // namespace svmscore::capi
