#include "capi/column_view.h"

#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "capi/call_error.h"
#include "capi/caller_structs.h"

namespace svmscore::capi {
namespace {

// IEEE 754 binary16, exactly.
double FromHalf(std::uint16_t half) {
  const int exponent = (half >> 10U) & 31U;
  const int fraction = half & 1023U;
  double value;
  if (exponent == 31) {
    value = fraction == 0 ? std::numeric_limits<double>::infinity()
                          : std::numeric_limits<double>::quiet_NaN();
  } else {
    value = exponent == 0 ? std::ldexp(fraction, -24) : std::ldexp(fraction + 1024, exponent - 25);
  }
  return (half & 0x8000U) != 0 ? -value : value;
}

bool IsUnsigned64(CellType type) {
  return type == CellType::kU64;
}

struct KnownType {
  int type;
  CellType cell;
  const char* name;
};

constexpr KnownType kTypes[] = {
    {SVMSCORE_NULL, CellType::kNull, "null"},
    {SVMSCORE_F64, CellType::kF64, "double"},
    {SVMSCORE_F32, CellType::kF32, "float"},
    {SVMSCORE_I64, CellType::kI64, "int64"},
    {SVMSCORE_I32, CellType::kI32, "int32"},
    {SVMSCORE_I16, CellType::kI16, "int16"},
    {SVMSCORE_I8, CellType::kI8, "int8"},
    {SVMSCORE_U64, CellType::kU64, "uint64"},
    {SVMSCORE_U32, CellType::kU32, "uint32"},
    {SVMSCORE_U16, CellType::kU16, "uint16"},
    {SVMSCORE_U8, CellType::kU8, "uint8"},
    {SVMSCORE_BOOL, CellType::kBit, "bool"},
    {SVMSCORE_BOOL8, CellType::kByte, "bool"},
    {SVMSCORE_UTF8, CellType::kText32, "text"},
    {SVMSCORE_UTF8_64, CellType::kText64, "text"},
    {SVMSCORE_DICTIONARY, CellType::kDictionary, "dictionary"},
};

const KnownType* FindType(int type) {
  for (const KnownType& known : kTypes) {
    if (known.type == type) return &known;
  }
  return nullptr;
}

}  // namespace

CellClass ClassOf(CellType type) {
  switch (type) {
    case CellType::kNull:
    case CellType::kDictionary:
    case CellType::kUnread:
      return CellClass::kNothing;
    case CellType::kF64:
    case CellType::kF32:
    case CellType::kF16:
      return CellClass::kNumber;
    case CellType::kBit:
    case CellType::kByte:
      return CellClass::kBool;
    case CellType::kText32:
    case CellType::kText64:
    case CellType::kTextView:
      return CellClass::kText;
    case CellType::kDate:
    case CellType::kDate64:
    case CellType::kTime32:
    case CellType::kTime64:
    case CellType::kDateTime:
      return CellClass::kMoment;
    default:
      return CellClass::kWhole;
  }
}

std::size_t WidthOf(CellType type) {
  switch (type) {
    case CellType::kF64:
    case CellType::kI64:
    case CellType::kU64:
    case CellType::kDate64:
    case CellType::kTime64:
    case CellType::kDateTime:
      return 8;
    case CellType::kF32:
    case CellType::kI32:
    case CellType::kU32:
    case CellType::kDate:
    case CellType::kTime32:
      return 4;
    case CellType::kF16:
    case CellType::kI16:
    case CellType::kU16:
      return 2;
    case CellType::kI8:
    case CellType::kU8:
    case CellType::kByte:
      return 1;
    case CellType::kTextView:
      return 16;
    default:
      return 0;
  }
}

void ColumnView::Refuse(const std::string& what) const {
  RefuseColumn(name, what);
}

// `needed` is what the values that are read take; SIZE_MAX where that is beyond all memory.
void ColumnView::CheckBuffer(const void* buffer, std::size_t size, std::size_t needed,
                             const char* which) const {
  if (needed == 0) return;
  if (buffer == nullptr) Refuse(fmt::format("{} is null", which));
  // An unknown size is as large as any.
  if (needed > size || needed == SVMSCORE_UNKNOWN_SIZE) {
    Refuse(fmt::format("{} has {} bytes, and {} values need {}", which, size, length, needed));
  }
}

void ColumnView::Check() const {
  if (length == 0 || type == CellType::kNull || type == CellType::kUnread) return;
  std::size_t end = 0;
  if (__builtin_add_overflow(offset, length, &end) || end > SIZE_MAX - 8) {
    Refuse("offset and length are beyond all memory");
  }
  CheckBuffer(validity, validity == nullptr ? 0 : validity_size,
              validity == nullptr ? 0 : (end + 7) / 8, "validity");
  if (type == CellType::kText32 || type == CellType::kText64) return CheckTexts();
  if (type == CellType::kBit) return CheckBuffer(data, data_size, (end + 7) / 8, "data");
  const std::size_t width = WidthOf(type == CellType::kDictionary ? code_type : type);
  std::size_t needed = 0;
  if (__builtin_mul_overflow(end - 1, stride, &needed) ||
      __builtin_add_overflow(needed, width, &needed)) {
    Refuse("stride and length are beyond all memory");
  }
  CheckBuffer(data, data_size, needed, "data");
  if (type == CellType::kTextView) CheckTextViews();
  if (type == CellType::kDictionary) CheckCodes();
}

std::uint64_t ColumnView::OffsetAt(std::size_t position) const {
  if (type == CellType::kText64) {
    std::uint64_t value = 0;
    std::memcpy(&value, offsets + position * 8, 8);
    return value;
  }
  std::uint32_t value = 0;
  std::memcpy(&value, offsets + position * 4, 4);
  return value;
}

void ColumnView::CheckTexts() const {
  const std::size_t width = type == CellType::kText64 ? 8 : 4;
  std::size_t needed = 0;
  if (__builtin_mul_overflow(offset + length + 1, width, &needed)) {
    Refuse("offset and length are beyond all memory");
  }
  CheckBuffer(offsets, offsets_size, needed, "offsets");
  const std::uint64_t most = type == CellType::kText64
                                 ? std::uint64_t{std::numeric_limits<std::int64_t>::max()}
                                 : std::uint64_t{std::numeric_limits<std::int32_t>::max()};
  std::uint64_t last = OffsetAt(offset);
  for (std::size_t i = 0; i <= length; ++i) {
    const std::uint64_t next = OffsetAt(offset + i);
    if (next < last || next > most) {
      Refuse(fmt::format("the text of row {} ends before it begins", i == 0 ? 0 : i - 1));
    }
    last = next;
  }
  CheckBuffer(data, data_size, last, "data");
}

void ColumnView::CheckTextViews() const {
  for (std::size_t row = 0; row < length; ++row) {
    if (!IsPresent(row)) continue;
    std::int32_t parts[4];
    std::memcpy(parts, data + (offset + row) * stride, sizeof parts);
    const auto [size, prefix, buffer, begin] = parts;
    static_cast<void>(prefix);
    if (size >= 0 && size <= 12) continue;
    const bool known =
        size > 0 && buffer >= 0 && begin >= 0 && static_cast<std::size_t>(buffer) < buffers.size();
    if (!known || static_cast<std::uint64_t>(begin) + static_cast<std::uint64_t>(size) >
                      buffers[static_cast<std::size_t>(buffer)].size) {
      Refuse(fmt::format("the text of row {} is outside its buffers", row));
    }
  }
}

void ColumnView::CheckCodes() const {
  for (std::size_t row = 0; row < length; ++row) {
    if (!IsPresent(row)) continue;
    const std::int64_t code = IntegerAt(code_type, row);
    if (code < 0 || static_cast<std::uint64_t>(code) >= dictionary->length) {
      Refuse(fmt::format("the code of row {} is {}, and the dictionary has {} texts", row, code,
                         dictionary->length));
    }
  }
  dictionary->Check();
}

double ColumnView::NumberAt(std::size_t row) const {
  switch (type) {
    case CellType::kF64:
      return Load<double>(row);
    case CellType::kF32:
      return static_cast<double>(Load<float>(row));
    case CellType::kF16:
      return FromHalf(Load<std::uint16_t>(row));
    default:
      return IsUnsigned64(type) ? static_cast<double>(Load<std::uint64_t>(row))
                                : static_cast<double>(WholeAt(row));
  }
}

// Of kU64 a code beyond 2^63 becomes a negative one.
std::int64_t ColumnView::IntegerAt(CellType of, std::size_t row) const {
  switch (of) {
    case CellType::kI32:
      return Load<std::int32_t>(row);
    case CellType::kI16:
      return Load<std::int16_t>(row);
    case CellType::kI8:
      return Load<std::int8_t>(row);
    case CellType::kU32:
      return Load<std::uint32_t>(row);
    case CellType::kU16:
      return Load<std::uint16_t>(row);
    case CellType::kU8:
      return Load<std::uint8_t>(row);
    default:
      return Load<std::int64_t>(row);
  }
}

bool ColumnView::BoolAt(std::size_t row) const {
  return type == CellType::kBit ? HasBit(data, offset + row) : Load<std::uint8_t>(row) != 0;
}

std::string_view ColumnView::TextAt(std::size_t row) const {
  if (type == CellType::kTextView) {
    const std::uint8_t* view = data + (offset + row) * stride;
    std::int32_t parts[4];
    std::memcpy(parts, view, sizeof parts);
    const auto size = static_cast<std::size_t>(parts[0]);
    const std::uint8_t* begin =
        size <= 12 ? view + 4 : buffers[static_cast<std::size_t>(parts[2])].data + parts[3];
    return {reinterpret_cast<const char*>(begin), size};
  }
  const std::uint64_t begin = OffsetAt(offset + row);
  const std::uint64_t end = OffsetAt(offset + row + 1);
  if (begin == end) return {};
  return {reinterpret_cast<const char*>(data) + begin, end - begin};
}

ColumnView::Moment ColumnView::MomentAt(std::size_t row) const {
  constexpr std::int64_t kSecondsPerDay = 86400;
  if (type == CellType::kDate) return {Load<std::int32_t>(row), 0};
  const std::int64_t count =
      type == CellType::kTime32 ? Load<std::int32_t>(row) : Load<std::int64_t>(row);
  const std::int64_t unit = type == CellType::kDate64 ? ticks * kSecondsPerDay : ticks;
  const std::int64_t below = count % unit < 0 ? 1 : 0;
  const Moment moment{count / unit - below, count % unit + below * unit};
  return type == CellType::kDate64 ? Moment{moment.whole, 0} : moment;
}

ColumnView ViewOf(const svmscore_column& given) {
  ColumnView view;
  view.name = ViewOf(given.name, given.name_length);
  const KnownType* type = FindType(given.type);
  if (type == nullptr) {
    RefuseColumn(view.name, fmt::format("{} is no enum svmscore_type", given.type));
  }
  view.type = type->cell;
  view.type_name = type->name;
  view.length = given.length;
  view.data = static_cast<const std::uint8_t*>(given.data);
  view.data_size = given.data_size;
  view.offset = given.offset;
  view.validity = given.validity;
  view.validity_size = given.validity_size;
  view.offsets = static_cast<const std::uint8_t*>(given.offsets);
  view.offsets_size = given.offsets_size;
  if (view.type == CellType::kDictionary) {
    const KnownType* codes = FindType(given.code_type);
    if (codes == nullptr || ClassOf(codes->cell) != CellClass::kWhole) {
      RefuseColumn(view.name, "code_type is no integer type");
    }
    view.code_type = codes->cell;
    if (given.dictionary == nullptr) RefuseColumn(view.name, "dictionary is null");
    const svmscore_column dictionary = Read(given.dictionary, "column.dictionary");
    if (dictionary.type == SVMSCORE_DICTIONARY) {
      RefuseColumn(view.name, "the dictionary is a DICTIONARY itself");
    }
    ColumnView values = ViewOf(dictionary);
    values.name = view.name;
    view.dictionary = std::make_shared<const ColumnView>(std::move(values));
  }
  const std::size_t width =
      WidthOf(view.type == CellType::kDictionary ? view.code_type : view.type);
  if (width == 0 && given.stride != 0) RefuseColumn(view.name, "texts and bits have no stride");
  view.stride = given.stride == 0 ? width : given.stride;
  return view;
}

std::vector<ColumnView> ViewsOf(const svmscore_column* columns, std::size_t count,
                                std::size_t rows) {
  std::vector<ColumnView> views;
  if (count == 0) return views;
  Require(columns, "columns");
  const std::size_t size = SizeOf(columns);
  CheckSize(size, sizeof(svmscore_column), "columns[0]");
  for (std::size_t i = 0; i < count; ++i) {
    const void* at = reinterpret_cast<const char*>(columns) + i * size;
    if (SizeOf(at) != size) {
      RefuseArgument(fmt::format("columns[{}].size is not that of the first", i), "columns");
    }
    views.push_back(ViewOf(Read(static_cast<const svmscore_column*>(at), "columns[]")));
    if (views.back().length != rows) {
      RefuseColumn(views.back().name, fmt::format("it has {} values, and the table {} rows",
                                                  views.back().length, rows));
    }
  }
  return views;
}

}  // namespace svmscore::capi
