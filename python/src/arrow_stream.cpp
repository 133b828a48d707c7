#include "arrow_stream.h"

#include <cmath>
#include <cstdint>
#include <cstring>

namespace svmscore::python {
namespace {

bool IsPresent(const std::uint8_t* bits, std::size_t bit) {
  return bits == nullptr || ((bits[bit / 8] >> (bit % 8)) & 1U) != 0;
}

// The bits of a half float say that it is not a number: all of the exponent's, and some below.
bool IsNotANumber(std::uint16_t half) {
  return (half & 0x7C00U) == 0x7C00U && (half & 0x3FFU) != 0;
}
bool IsNotANumber(float value) {
  return std::isnan(value);
}
bool IsNotANumber(double value) {
  return std::isnan(value);
}

// The array's bitmap without the values that are not a number; empty where there are none of them.
template <typename Number>
std::vector<std::uint8_t> BitmapOf(const ArrowArray& array) {
  const auto* numbers = static_cast<const Number*>(array.buffers[1]);
  const auto* bits = static_cast<const std::uint8_t*>(array.buffers[0]);
  const auto offset = static_cast<std::size_t>(array.offset);
  const auto length = static_cast<std::size_t>(array.length);
  std::vector<std::uint8_t> bitmap;
  for (std::size_t row = 0; row < length; ++row) {
    Number value;
    std::memcpy(&value, numbers + offset + row, sizeof value);
    if (!IsNotANumber(value)) continue;
    if (bitmap.empty()) {
      bitmap.assign((offset + length + 7) / 8, 0);
      for (std::size_t bit = 0; bit < offset + length; ++bit) {
        if (IsPresent(bits, bit)) bitmap[bit / 8] |= static_cast<std::uint8_t>(1U << (bit % 8));
      }
    }
    const std::size_t bit = offset + row;
    bitmap[bit / 8] = static_cast<std::uint8_t>(bitmap[bit / 8] & ~(1U << (bit % 8)));
  }
  return bitmap;
}

std::vector<std::uint8_t> BitmapOf(const ArrowSchema& schema, const ArrowArray& array) {
  if (schema.format == nullptr || schema.dictionary != nullptr || array.n_buffers != 2 ||
      array.buffers == nullptr || array.buffers[1] == nullptr || array.length < 0 ||
      array.offset < 0) {
    return {};
  }
  if (std::strcmp(schema.format, "g") == 0) return BitmapOf<double>(array);
  if (std::strcmp(schema.format, "f") == 0) return BitmapOf<float>(array);
  if (std::strcmp(schema.format, "e") == 0) return BitmapOf<std::uint16_t>(array);
  return {};
}

}  // namespace

BatchWithoutNotANumber::BatchWithoutNotANumber(const ArrowSchema& schema, const ArrowArray& batch)
    : root_(View(schema, batch)) {}

ArrowArray BatchWithoutNotANumber::View(const ArrowSchema& schema, const ArrowArray& array) {
  ArrowArray view = array;
  if (std::vector<std::uint8_t> bitmap = BitmapOf(schema, array); !bitmap.empty()) {
    std::vector<const void*>& buffers =
        buffers_.emplace_back(array.buffers, array.buffers + array.n_buffers);
    buffers[0] = bitmaps_.emplace_back(std::move(bitmap)).data();
    view.buffers = buffers.data();
    view.null_count = -1;
  }
  if (schema.dictionary != nullptr && array.dictionary != nullptr) {
    view.dictionary = &arrays_.emplace_back(View(*schema.dictionary, *array.dictionary));
  }
  if (array.children == nullptr || schema.children == nullptr ||
      schema.n_children != array.n_children) {
    return view;
  }
  std::vector<ArrowArray*>& children = children_.emplace_back();
  for (std::int64_t i = 0; i < array.n_children; ++i) {
    const ArrowArray* child = array.children[i];
    if (child == nullptr || schema.children[i] == nullptr) {
      children.push_back(nullptr);
      continue;
    }
    const ArrowArray of_child = View(*schema.children[i], *child);
    children.push_back(&arrays_.emplace_back(of_child));
  }
  view.children = children.data();
  return view;
}

ArrowArray BatchWithoutNotANumber::Rows(std::int64_t start, std::int64_t count) const {
  ArrowArray rows = root_;
  rows.offset += start;
  rows.length = count;
  if (rows.null_count != 0) rows.null_count = -1;
  return rows;
}

ArrowArrayStream StreamOfNoRows(Released<ArrowSchema>& schema) {
  ArrowArrayStream stream{};
  stream.private_data = &schema.value;
  stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
    auto* given = static_cast<ArrowSchema*>(self->private_data);
    *out = *given;
    given->release = nullptr;
    return 0;
  };
  stream.get_next = [](ArrowArrayStream*, ArrowArray* out) {
    *out = {};
    return 0;
  };
  stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
  stream.release = [](ArrowArrayStream* self) { self->release = nullptr; };
  return stream;
}

svmscore_column ColumnOfArray(int type, const ArrowArray& array) {
  svmscore_column column = SVMSCORE_INIT(svmscore_column);
  column.type = type;
  column.length = static_cast<std::size_t>(array.length);
  column.offset = static_cast<std::size_t>(array.offset);
  column.validity = static_cast<const std::uint8_t*>(array.buffers[0]);
  if (type == SVMSCORE_UTF8_64) {
    column.offsets = array.buffers[1];
    column.data = array.buffers[2];
  } else {
    column.data = array.buffers[1];
  }
  return column;
}

}  // namespace svmscore::python
