#include "columns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

#include "call.h"
#include "object_values.h"

namespace nb = nanobind;

namespace svmscore::python {
namespace {

// The type of the C interface that has the format of Python's buffers; SVMSCORE_NULL where none
// has.
template <typename Whole>
constexpr int WholeType() {
  constexpr bool kSigned = std::is_signed_v<Whole>;
  switch (sizeof(Whole)) {
    case 1:
      return kSigned ? SVMSCORE_I8 : SVMSCORE_U8;
    case 2:
      return kSigned ? SVMSCORE_I16 : SVMSCORE_U16;
    case 4:
      return kSigned ? SVMSCORE_I32 : SVMSCORE_U32;
    default:
      return kSigned ? SVMSCORE_I64 : SVMSCORE_U64;
  }
}

int TypeOfFormat(const char* format) {
  if (format == nullptr) return SVMSCORE_U8;
  if (*format == '@' || *format == '=') ++format;
  if (format[0] == '\0' || format[1] != '\0') return SVMSCORE_NULL;
  switch (format[0]) {
    case 'd':
      return SVMSCORE_F64;
    case 'f':
      return SVMSCORE_F32;
    case '?':
      return SVMSCORE_BOOL8;
    case 'b':
      return WholeType<signed char>();
    case 'B':
      return WholeType<unsigned char>();
    case 'h':
      return WholeType<short>();
    case 'H':
      return WholeType<unsigned short>();
    case 'i':
      return WholeType<int>();
    case 'I':
      return WholeType<unsigned int>();
    case 'l':
      return WholeType<long>();
    case 'L':
      return WholeType<unsigned long>();
    case 'q':
      return WholeType<long long>();
    case 'Q':
      return WholeType<unsigned long long>();
    default:
      return SVMSCORE_NULL;
  }
}

void Clear(std::vector<std::uint8_t>& bitmap, std::size_t bit) {
  bitmap[bit / 8] = static_cast<std::uint8_t>(bitmap[bit / 8] & ~(1U << (bit % 8)));
}

template <typename Number>
Number At(const void* data, std::size_t stride, std::size_t row) {
  Number value;
  std::memcpy(&value, static_cast<const char*>(data) + row * stride, sizeof value);
  return value;
}

template <typename Number, typename Mark>
void ForEachNotANumber(const svmscore_column& column, std::size_t rows, const Mark& mark) {
  // Most columns have none: look through a block at a time before rows are looked at one by one.
  constexpr std::size_t kBlock = 1024;
  for (std::size_t begin = 0; begin < rows; begin += kBlock) {
    const std::size_t end = std::min(rows, begin + kBlock);
    bool any = false;
    for (std::size_t row = begin; row < end; ++row) {
      any |= std::isnan(At<Number>(column.data, column.stride, row));
    }
    for (std::size_t row = begin; any && row < end; ++row) {
      if (std::isnan(At<Number>(column.data, column.stride, row))) mark(row);
    }
  }
}

template <typename Whole>
void ClearNegative(const svmscore_column& column, std::vector<std::uint8_t>& bitmap,
                   std::size_t rows) {
  for (std::size_t row = 0; row < rows; ++row) {
    if (At<Whole>(column.data, column.stride, row) < 0) Clear(bitmap, row);
  }
}

}  // namespace

Columns::~Columns() {
  for (Py_buffer& buffer : buffers_) PyBuffer_Release(&buffer);
}

svmscore_column& Columns::Add(nb::handle name) {
  names_.emplace_back(Utf8(name));
  svmscore_column column = SVMSCORE_INIT(svmscore_column);
  column.name = names_.back().data();
  column.name_length = names_.back().size();
  column.length = row_count_;
  column.data_size = SVMSCORE_UNKNOWN_SIZE;
  column.validity_size = SVMSCORE_UNKNOWN_SIZE;
  column.offsets_size = SVMSCORE_UNKNOWN_SIZE;
  return columns_.emplace_back(column);
}

const Py_buffer& Columns::Take(nb::handle object, nb::handle name) {
  Py_buffer& buffer = buffers_.emplace_back();
  if (PyObject_GetBuffer(object.ptr(), &buffer, PyBUF_STRIDED_RO | PyBUF_FORMAT) != 0) {
    buffers_.pop_back();
    PyErr_Clear();
    RaiseOfColumn(PyExc_TypeError, name, "values of this type are not read");
  }
  return buffer;
}

std::vector<std::uint8_t>& Columns::NewBitmap(std::size_t length) {
  return bitmaps_.emplace_back((length + 7) / 8, std::uint8_t{0xFF});
}

void Columns::SetNumbers(svmscore_column& column, const Py_buffer& buffer, int axis_of_rows,
                         std::size_t first, nb::handle name) {
  column.type = TypeOfFormat(buffer.format);
  const Py_ssize_t stride = buffer.strides[axis_of_rows];
  if (column.type == SVMSCORE_NULL) {
    RaiseOfColumn(PyExc_TypeError, name, "values of this type are not read");
  }
  if (stride < 0 || (stride == 0 && row_count_ > 1)) {
    RaiseOfColumn(PyExc_ValueError, name, "a stride below 1 cannot be read; copy the array");
  }
  column.data = static_cast<const char*>(buffer.buf) + first;
  column.stride =
      stride == 0 ? static_cast<std::size_t>(buffer.itemsize) : static_cast<std::size_t>(stride);
}

void Columns::MarkNotANumber(svmscore_column& column) {
  std::vector<std::uint8_t>* bitmap = nullptr;
  const auto mark = [&](std::size_t row) {
    if (bitmap == nullptr) bitmap = &NewBitmap(column.length);
    Clear(*bitmap, row);
  };
  if (column.type == SVMSCORE_F64) ForEachNotANumber<double>(column, column.length, mark);
  if (column.type == SVMSCORE_F32) ForEachNotANumber<float>(column, column.length, mark);
  if (bitmap != nullptr) column.validity = bitmap->data();
}

void Columns::AddNumbers(nb::str name, nb::handle array, nb::handle missing) {
  const Py_buffer& buffer = Take(array, name);
  if (buffer.ndim != 1 || static_cast<std::size_t>(buffer.shape[0]) != row_count_) {
    RaiseOfColumn(PyExc_ValueError, name, "a column must have one value for each row");
  }
  svmscore_column& column = Add(name);
  SetNumbers(column, buffer, 0, 0, name);
  MarkNotANumber(column);
  if (missing.is_none()) return;
  const Py_buffer& mask = Take(missing, name);
  if (mask.ndim != 1 || static_cast<std::size_t>(mask.shape[0]) != row_count_ ||
      mask.itemsize != 1) {
    RaiseOfColumn(PyExc_ValueError, name, "the mask must have one bool for each row");
  }
  std::vector<std::uint8_t>* bitmap =
      column.validity == nullptr ? &NewBitmap(row_count_) : &bitmaps_.back();
  column.validity = bitmap->data();
  for (std::size_t row = 0; row < row_count_; ++row) {
    const Py_ssize_t at = static_cast<Py_ssize_t>(row) * mask.strides[0];
    if (static_cast<const char*>(mask.buf)[at] != 0) Clear(*bitmap, row);
  }
}

void Columns::AddMatrix(nb::sequence names, nb::handle array) {
  const nb::str whole("of the array");
  const Py_buffer& buffer = Take(array, whole);
  if (buffer.ndim != 2 || static_cast<std::size_t>(buffer.shape[0]) != row_count_ ||
      static_cast<std::size_t>(buffer.shape[1]) != nb::len(names)) {
    throw nb::value_error("the array must have a row for each case and a column for each name");
  }
  if (buffer.strides[1] < 0) throw nb::value_error("a stride below 0 cannot be read");
  const auto step = static_cast<std::size_t>(buffer.strides[1]);
  std::size_t index = 0;
  for (nb::handle name : names) {
    svmscore_column& column = Add(name);
    SetNumbers(column, buffer, 0, index * step, name);
    MarkNotANumber(column);
    ++index;
  }
}

void Columns::AddCodes(nb::str name, nb::handle codes, nb::handle values) {
  const Py_buffer& buffer = Take(codes, name);
  if (buffer.ndim != 1 || static_cast<std::size_t>(buffer.shape[0]) != row_count_) {
    RaiseOfColumn(PyExc_ValueError, name, "a column must have one value for each row");
  }
  svmscore_column dictionary = SVMSCORE_INIT(svmscore_column);
  dictionary.data_size = dictionary.validity_size = dictionary.offsets_size = SVMSCORE_UNKNOWN_SIZE;
  if (PyList_Check(values.ptr())) {
    const nb::tuple kept(nb::borrow<nb::list>(values));
    dictionary.length = kept.size();
    SetObjects(dictionary, kept, name, false);
  } else {
    const Py_buffer& numbers = Take(values, name);
    dictionary.type = TypeOfFormat(numbers.format);
    if (numbers.ndim != 1 || dictionary.type == SVMSCORE_NULL || numbers.strides[0] <= 0) {
      RaiseOfColumn(PyExc_TypeError, name, "categories of this type are not read");
    }
    dictionary.length = static_cast<std::size_t>(numbers.shape[0]);
    dictionary.data = numbers.buf;
    dictionary.stride = static_cast<std::size_t>(numbers.strides[0]);
    MarkNotANumber(dictionary);
  }
  svmscore_column& column = Add(name);
  SetNumbers(column, buffer, 0, 0, name);
  column.code_type = column.type;
  column.dictionary = &dictionaries_.emplace_back(dictionary);
  std::vector<std::uint8_t>& bitmap = NewBitmap(row_count_);
  switch (column.type) {
    case SVMSCORE_I8:
      ClearNegative<std::int8_t>(column, bitmap, row_count_);
      break;
    case SVMSCORE_I16:
      ClearNegative<std::int16_t>(column, bitmap, row_count_);
      break;
    case SVMSCORE_I32:
      ClearNegative<std::int32_t>(column, bitmap, row_count_);
      break;
    case SVMSCORE_I64:
      ClearNegative<std::int64_t>(column, bitmap, row_count_);
      break;
    default:
      RaiseOfColumn(PyExc_TypeError, name, "codes must be signed whole numbers");
  }
  column.validity = bitmap.data();
  column.type = SVMSCORE_DICTIONARY;
}

void Columns::AddObjects(nb::str name, nb::list values, bool counts_bools) {
  // What a value's own conversion to a number does, or another thread, may change the list.
  const nb::tuple kept(values);
  if (kept.size() != row_count_) {
    RaiseOfColumn(PyExc_ValueError, name, "a column must have one value for each row");
  }
  svmscore_column& column = Add(name);
  SetObjects(column, kept, name, counts_bools);
}

void Columns::SetObjects(svmscore_column& column, nb::tuple values, nb::handle name,
                         bool counts_bools) {
  const std::size_t rows = column.length;
  std::vector<ObjectKind> kinds(rows);
  std::array<bool, 6> has{};
  for (std::size_t row = 0; row < rows; ++row) {
    kinds[row] = KindOf(values[row].ptr(), name, row);
    has[static_cast<std::size_t>(kinds[row])] = true;
  }
  const auto any = [&has](ObjectKind kind) { return has[static_cast<std::size_t>(kind)]; };
  const bool texts = any(ObjectKind::kText) || any(ObjectKind::kMoment);
  const bool numbers = any(ObjectKind::kNumber) || any(ObjectKind::kWhole);

  if (any(ObjectKind::kMissing)) {
    std::vector<std::uint8_t>& bitmap = NewBitmap(rows);
    for (std::size_t row = 0; row < rows; ++row) {
      if (kinds[row] == ObjectKind::kMissing) Clear(bitmap, row);
    }
    column.validity = bitmap.data();
  }
  if (!texts && !numbers && !any(ObjectKind::kBool)) {
    column.type = SVMSCORE_NULL;
    return;
  }
  if (!texts && !numbers) {
    std::string& bytes = bytes_.emplace_back(rows, '\0');
    for (std::size_t row = 0; row < rows; ++row) {
      if (kinds[row] == ObjectKind::kBool) bytes[row] = PyObject_IsTrue(values[row].ptr()) == 1;
    }
    column.type = SVMSCORE_BOOL8;
    column.data = bytes.data();
    return;
  }
  if (!texts && !any(ObjectKind::kBool) && !any(ObjectKind::kWhole)) {
    std::vector<double>& doubles = doubles_.emplace_back(rows, 0.0);
    for (std::size_t row = 0; row < rows; ++row) {
      if (kinds[row] == ObjectKind::kNumber) doubles[row] = NumberOf(values[row].ptr());
    }
    column.type = SVMSCORE_F64;
    column.data = doubles.data();
    return;
  }
  if (!texts && !any(ObjectKind::kBool) && !any(ObjectKind::kNumber)) {
    std::vector<std::int64_t>& wholes = wholes_.emplace_back(rows, 0);
    bool fit = true;
    for (std::size_t row = 0; fit && row < rows; ++row) {
      if (kinds[row] != ObjectKind::kWhole) continue;
      int overflow = 0;
      wholes[row] = PyLong_AsLongLongAndOverflow(WholeOf(values[row].ptr()).ptr(), &overflow);
      fit = overflow == 0;
    }
    if (fit) {
      column.type = SVMSCORE_I64;
      column.data = wholes.data();
      return;
    }
  }
  std::string& bytes = bytes_.emplace_back();
  std::vector<std::int64_t>& offsets = wholes_.emplace_back(rows + 1, 0);
  for (std::size_t row = 0; row < rows; ++row) {
    if (kinds[row] != ObjectKind::kMissing) {
      const nb::str text = TextOf(values[row].ptr(), kinds[row], name, counts_bools);
      Py_ssize_t length = 0;
      const char* data = PyUnicode_AsUTF8AndSize(text.ptr(), &length);
      if (data == nullptr) {
        PyErr_Clear();
        PyErr_Format(PyExc_ValueError, "column %R, row %zu: the text holds half a character",
                     name.ptr(), row);
        throw nb::python_error();
      }
      bytes.append(data, static_cast<std::size_t>(length));
    }
    offsets[row + 1] = static_cast<std::int64_t>(bytes.size());
  }
  column.type = SVMSCORE_UTF8_64;
  column.data = bytes.data();
  column.data_size = bytes.size();
  column.offsets = offsets.data();
}

void Columns::AddTexts(nb::str name, nb::handle offsets, int offset_bits, nb::handle bytes,
                       nb::handle validity, std::size_t offset) {
  const Py_buffer& places = Take(offsets, name);
  const Py_buffer& data = Take(bytes, name);
  svmscore_column& column = Add(name);
  column.type = offset_bits == 64 ? SVMSCORE_UTF8_64 : SVMSCORE_UTF8;
  column.offset = offset;
  column.data = data.buf;
  column.data_size = static_cast<std::size_t>(data.len);
  column.offsets = places.buf;
  column.offsets_size = static_cast<std::size_t>(places.len);
  if (validity.is_none()) return;
  const Py_buffer& bits = Take(validity, name);
  column.validity = static_cast<const std::uint8_t*>(bits.buf);
  column.validity_size = static_cast<std::size_t>(bits.len);
}

std::vector<svmscore_column> Columns::Rows(std::size_t start, std::size_t count) const {
  std::vector<svmscore_column> part = columns_;
  for (svmscore_column& column : part) {
    column.offset += start;
    column.length = count;
  }
  return part;
}

}  // namespace svmscore::python
