#include "results.h"

#include <memory>

#include <nanobind/ndarray.h>

namespace nb = nanobind;

namespace svmscore::python {
namespace {

bool IsPresent(const svmscore_column& column, std::size_t row) {
  const std::size_t bit = column.offset + row;
  return column.validity == nullptr || ((column.validity[bit / 8] >> (bit % 8)) & 1U) != 0;
}

// Hands the values to an array that frees them.
template <typename Value>
nb::object ToArray(std::vector<Value>&& values) {
  auto owner = std::make_unique<std::vector<Value>>(std::move(values));
  std::vector<Value>* kept = owner.get();
  const nb::capsule capsule(owner.release(), [](void* pointer) noexcept {
    delete static_cast<std::vector<Value>*>(pointer);
  });
  return nb::cast(nb::ndarray<nb::numpy, Value>(kept->data(), {kept->size()}, capsule));
}

}  // namespace

void ResultColumn::Reserve(std::size_t rows) {
  if (type_ == SVMSCORE_F64) numbers_.reserve(rows);
  if (type_ == SVMSCORE_I64) wholes_.reserve(rows);
  if (type_ == SVMSCORE_DICTIONARY) codes_.reserve(rows);
  if (type_ == SVMSCORE_UTF8_64) ends_.reserve(rows);
}

void ResultColumn::Append(const svmscore_column& block) {
  if (type_ == SVMSCORE_F64) {
    const double* first = static_cast<const double*>(block.data) + block.offset;
    numbers_.insert(numbers_.end(), first, first + block.length);
    return;
  }
  if (type_ == SVMSCORE_DICTIONARY) {
    const std::int32_t* first = static_cast<const std::int32_t*>(block.data) + block.offset;
    for (std::size_t row = 0; row < block.length; ++row) {
      codes_.push_back(IsPresent(block, row) ? first[row] : -1);
    }
    return;
  }
  const std::size_t before = type_ == SVMSCORE_I64 ? wholes_.size() : ends_.size();
  for (std::size_t row = 0; row < block.length; ++row) {
    if (IsPresent(block, row)) continue;
    if (missing_.empty()) missing_.assign(before, false);
    missing_.resize(before + row, false);
    missing_.push_back(true);
  }
  if (!missing_.empty()) missing_.resize(before + block.length, false);
  if (type_ == SVMSCORE_I64) {
    const std::int64_t* first = static_cast<const std::int64_t*>(block.data) + block.offset;
    wholes_.insert(wholes_.end(), first, first + block.length);
    return;
  }
  const std::int64_t* offsets = static_cast<const std::int64_t*>(block.offsets) + block.offset;
  const char* data = static_cast<const char*>(block.data);
  for (std::size_t row = 0; row < block.length; ++row) {
    bytes_.append(data + offsets[row], static_cast<std::size_t>(offsets[row + 1] - offsets[row]));
    ends_.push_back(bytes_.size());
  }
}

nb::tuple ResultColumn::Take() {
  if (type_ == SVMSCORE_F64) return nb::make_tuple(ToArray(std::move(numbers_)), nb::none());
  if (type_ == SVMSCORE_DICTIONARY) return nb::make_tuple(ToArray(std::move(codes_)), nb::none());
  if (type_ == SVMSCORE_I64) {
    if (missing_.empty()) return nb::make_tuple(ToArray(std::move(wholes_)), nb::none());
    std::vector<std::uint8_t> missing(missing_.begin(), missing_.end());
    return nb::make_tuple(ToArray(std::move(wholes_)),
                          ToArray(std::move(missing)).attr("view")("bool"));
  }
  nb::list texts;
  std::size_t begin = 0;
  for (std::size_t row = 0; row < ends_.size(); ++row) {
    if (!missing_.empty() && missing_[row]) {
      texts.append(nb::none());
    } else {
      texts.append(nb::str(bytes_.data() + begin, ends_[row] - begin));
    }
    begin = ends_[row];
  }
  return nb::make_tuple(texts, nb::none());
}

}  // namespace svmscore::python
