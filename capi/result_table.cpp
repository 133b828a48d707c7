#include "capi/result_table.h"

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <limits>
#include <new>

#include "capi/call_error.h"
#include "host/model/score_status.h"
#include "host/text/number_text.h"

namespace svmscore::capi {

using tools::CellKind;

static_assert(std::endian::native == std::endian::little, "bitmaps are written as words");
static_assert(ResultTable::kBlockRows % 64 == 0);

namespace {

int TypeOf(CellKind kind, bool category_codes) {
  switch (kind) {
    case CellKind::kNumber:
      return SVMSCORE_F64;
    case CellKind::kWhole:
      return SVMSCORE_I64;
    case CellKind::kCategory:
      return category_codes ? SVMSCORE_DICTIONARY : SVMSCORE_UTF8_64;
    case CellKind::kText:
    case CellKind::kAny:
      break;
  }
  return SVMSCORE_UTF8_64;
}

bool IsText(CellKind kind) {
  return kind == CellKind::kText || kind == CellKind::kAny;
}

}  // namespace

ResultTable::ResultTable(const tools::ResultColumns& results, SharedModel model,
                         bool category_codes)
    : model_(std::move(model)), category_offsets_{0} {
  for (const auto& result : results) {
    Column& column = columns_.emplace_back();
    column.name = result->Name();
    column.kind = result->Kind();
    column.type = TypeOf(column.kind, category_codes);
    // An output field of the document may have its name; the last one is the case's.
    if (column.name == "status" && column.kind == CellKind::kWhole) status_ = columns_.size() - 1;
  }
  for (std::size_t i = 0; i < Categories().size(); ++i) {
    category_text_.append(Categories()[i].data, Categories()[i].length);
    category_offsets_.push_back(static_cast<std::int64_t>(category_text_.size()));
  }
  dictionary_.size = sizeof dictionary_;
  dictionary_.name = "";
  dictionary_.type = SVMSCORE_UTF8_64;
  dictionary_.length = Categories().size();
  dictionary_.data = category_text_.data();
  dictionary_.data_size = category_text_.size();
  dictionary_.offsets = category_offsets_.data();
  dictionary_.offsets_size = category_offsets_.size() * sizeof(std::int64_t);
}

void ResultTable::Start(std::size_t rows) {
  // What no vector can hold would be another exception.
  if (rows > PTRDIFF_MAX / sizeof(double)) throw std::bad_alloc();
  rows_ = rows;
  views_.clear();
  for (Column& column : columns_) {
    column.validity.assign((rows + 63) / 64, 0);
    if (column.kind == CellKind::kNumber) {
      column.numbers.assign(rows, std::numeric_limits<double>::quiet_NaN());
    } else if (column.kind == CellKind::kWhole) {
      column.wholes.assign(rows, 0);
    } else if (column.kind == CellKind::kCategory) {
      column.codes.assign(rows, 0);
    }
    if (!IsText(column.kind)) continue;
    column.offsets.assign(rows + 1, 0);
    column.pieces.assign((rows + kBlockRows - 1) / kBlockRows, {});
  }
}

void ResultTable::FinishText(Column& column) const {
  for (std::size_t row = 0; row < rows_; ++row) column.offsets[row + 1] += column.offsets[row];
  column.text.clear();
  column.text.reserve(static_cast<std::size_t>(column.offsets[rows_]));
  for (std::string& piece : column.pieces) {
    column.text += piece;
    std::string().swap(piece);
  }
}

void ResultTable::FinishCategories(Column& column) const {
  column.offsets.assign(rows_ + 1, 0);
  column.text.clear();
  for (std::size_t row = 0; row < rows_; ++row) {
    if (((column.validity[row / 64] >> (row % 64)) & 1U) != 0) {
      const svmscore_text& text = Categories()[static_cast<std::size_t>(column.codes[row])];
      column.text.append(text.data, text.length);
    }
    column.offsets[row + 1] = static_cast<std::int64_t>(column.text.size());
  }
}

void ResultTable::Finish() {
  for (Column& column : columns_) {
    std::size_t present = 0;
    for (const std::uint64_t word : column.validity) {
      present += static_cast<std::size_t>(std::popcount(word));
    }
    column.missing = rows_ - present;
    if (IsText(column.kind)) FinishText(column);
    if (column.type == SVMSCORE_UTF8_64 && column.kind == CellKind::kCategory) {
      FinishCategories(column);
    }
    views_.push_back(ViewOf(column));
  }
  scored_ = missing_ = invalid_ = 0;
  for (const std::int64_t status : columns_[status_].wholes) {
    scored_ += status == 0;
    invalid_ += status == MCScore::kInvalidValue;
  }
  missing_ = rows_ - scored_ - invalid_;
}

svmscore_column ResultTable::ViewOf(const Column& column) const {
  svmscore_column view{};
  view.size = sizeof view;
  view.name = column.name.data();
  view.name_length = column.name.size();
  view.type = column.type;
  view.length = rows_;
  switch (column.type) {
    case SVMSCORE_F64:
      view.data = column.numbers.data();
      view.data_size = rows_ * sizeof(double);
      view.stride = sizeof(double);
      break;
    case SVMSCORE_I64:
      view.data = column.wholes.data();
      view.data_size = rows_ * sizeof(std::int64_t);
      view.stride = sizeof(std::int64_t);
      break;
    case SVMSCORE_DICTIONARY:
      view.data = column.codes.data();
      view.data_size = rows_ * sizeof(std::int32_t);
      view.stride = sizeof(std::int32_t);
      view.code_type = SVMSCORE_I32;
      view.dictionary = &dictionary_;
      break;
    default:
      view.data = column.text.data();
      view.data_size = column.text.size();
      view.offsets = column.offsets.data();
      view.offsets_size = (rows_ + 1) * sizeof(std::int64_t);
  }
  if (column.missing > 0) {
    view.validity = reinterpret_cast<const std::uint8_t*>(column.validity.data());
    view.validity_size = column.validity.size() * sizeof(std::uint64_t);
  }
  return view;
}

svmscore_table ResultTable::View() const {
  svmscore_table view{};
  view.row_count = rows_;
  view.column_count = columns_.size();
  view.columns = views_.data();
  view.status = columns_[status_].wholes.data();
  view.scored = scored_;
  view.missing = missing_;
  view.invalid = invalid_;
  return view;
}

void ResultTable::Sink::Text(std::string_view text) {
  if (!IsText(column_->kind)) return;
  column_->pieces[row_ / kBlockRows] += text;
  column_->offsets[row_ + 1] = static_cast<std::int64_t>(text.size());
  MarkPresent();
}

void ResultTable::Sink::Category(int category, std::string_view text) {
  if (column_->kind != CellKind::kCategory) return Text(text);
  column_->codes[row_] = category;
  MarkPresent();
}

void ResultTable::Sink::Number(double number) {
  if (column_->kind == CellKind::kNumber) {
    column_->numbers[row_] = number;
    MarkPresent();
  } else {
    std::array<char, kNumberTextSize> buffer;
    const char* end = FormatNumber(buffer.data(), number);
    Text({buffer.data(), static_cast<std::size_t>(end - buffer.data())});
  }
}

void ResultTable::Sink::Whole(long number) {
  if (column_->kind == CellKind::kWhole) {
    column_->wholes[row_] = number;
    MarkPresent();
  } else {
    std::array<char, 24> buffer;
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    Text({buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data())});
  }
}

}  // namespace svmscore::capi
