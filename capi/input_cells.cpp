#include "capi/input_cells.h"

#include <algorithm>

#include <fmt/format.h>

#include "capi/call_error.h"
#include "capi/caller_structs.h"
#include "host/model/score_dict_var.h"
#include "host/text/field_text.h"
#include "host/text/number_text.h"
#include "tools/score/put_value.h"

namespace svmscore::capi {
namespace {

using MCZandor_850::InputCaseRecord;
using MCZandor_850::ScoreDictVar;

bool IsMomentType(DataType type) {
  return type == DataType::kDate || type == DataType::kTime || type == DataType::kDateTime;
}

bool TakesMoments(DataType type) {
  return IsMomentType(type) || type == DataType::kString || type == DataType::kTimeSeconds ||
         type == DataType::kDateDaysSince || type == DataType::kDateTimeSecondsSince;
}

void CheckFits(const ColumnView& column, const ColumnView& values, DataType type) {
  if (values.type == CellType::kUnread) {
    RefuseColumn(column.name, fmt::format("values of type {} are not read", column.type_name),
                 "cast the column to numbers or texts");
  }
  const CellClass of = ClassOf(values.type);
  const bool numbers =
      of == CellClass::kNumber || of == CellClass::kWhole || of == CellClass::kBool;
  const bool fits = numbers ? !IsMomentType(type) : of != CellClass::kMoment || TakesMoments(type);
  if (fits) return;
  RefuseColumn(column.name,
               fmt::format("values of type {} do not fit the field, whose data type is {}",
                           column.type_name, DataTypeName(type)),
               numbers ? "give texts such as 2024-02-29 or 2024-02-29T12:00:00"
                       : "give numbers, counted as the model counts them");
}

const MissingTexts kNone;

DataType MomentType(CellType type) {
  if (type == CellType::kDate || type == CellType::kDate64) return DataType::kDate;
  return type == CellType::kDateTime ? DataType::kDateTime : DataType::kTime;
}

// In the notation of ISO 8601, to the last tick, which a double may not hold.
std::string MomentText(const ColumnView& column, std::size_t row) {
  const ColumnView::Moment moment = column.MomentAt(row);
  std::string text =
      FieldTextFromNumber(static_cast<double>(moment.whole), {MomentType(column.type), 0});
  // What is too far away to be written as a date is a number.
  if (moment.rest == 0 || text.find(':') == std::string::npos) return text;
  std::string fraction = std::to_string(column.ticks + moment.rest);  // 1 and its digits
  fraction[0] = '.';
  fraction.erase(fraction.find_last_not_of('0') + 1);
  return text + fraction;
}

}  // namespace

MissingTexts ReadMissingTexts(const svmscore_text* texts, std::size_t count) {
  if (texts == nullptr) return {""};
  MissingTexts read;
  for (std::size_t i = 0; i < count; ++i) read.emplace_back(ViewOf(texts[i]));
  return read;
}

InputCell::InputCell(const ColumnView& column, const ScoreDictVar& var, const MissingTexts& missing)
    : column_(&column), type_(var.GetFieldType().data), missing_(missing) {
  CheckFits(column, column.dictionary == nullptr ? column : *column.dictionary, type_);
}

InputCell::InputCell(const ScoreDictVar& var, const MissingTexts& missing)
    : column_(nullptr), type_(var.GetFieldType().data), missing_(missing) {}

InputCell::InputCell(const ColumnView& column)
    : column_(&column), type_(DataType::kString), missing_(kNone) {
  const ColumnView& values = column.dictionary == nullptr ? column : *column.dictionary;
  CheckFits(column, values, type_);
}

void InputCell::Set(InputCaseRecord& record, std::size_t position, std::size_t row) const {
  if (!column_->IsPresent(row)) {
    record.SetMissing(position);
  } else if (column_->type != CellType::kDictionary) {
    SetValue(record, position, *column_, row);
  } else {
    const ColumnView& dictionary = *column_->dictionary;
    const std::size_t code = column_->CodeAt(row);
    if (dictionary.IsPresent(code)) {
      SetValue(record, position, dictionary, code);
    } else {
      record.SetMissing(position);
    }
  }
}

void InputCell::SetValue(InputCaseRecord& record, std::size_t position, const ColumnView& column,
                         std::size_t row) const {
  switch (ClassOf(column.type)) {
    case CellClass::kNumber:
      return SetNumber(record, position, column.NumberAt(row));
    case CellClass::kText:
      return SetText(record, position, column.TextAt(row));
    case CellClass::kBool:
      return SetBool(record, position, column.BoolAt(row));
    case CellClass::kMoment:
      return SetMoment(record, position, column, row);
    case CellClass::kNothing:
      record.SetMissing(position);
      return;
    case CellClass::kWhole:
      break;
  }
  if (column.type == CellType::kU64 && column.WholeAt(row) < 0) {
    record.SetText(position, fmt::format_int(column.UnsignedAt(row)).c_str());
  } else {
    SetWhole(record, position, column.WholeAt(row));
  }
}

void InputCell::SetNumber(InputCaseRecord& record, std::size_t position, double number) const {
  tools::PutNumber(record, position, number);
}

void InputCell::SetWhole(InputCaseRecord& record, std::size_t position, std::int64_t number) const {
  tools::PutWhole(record, position, number);
}

bool InputCell::MeansMissing(std::string_view text) const {
  return std::find(missing_.begin(), missing_.end(), text) != missing_.end();
}

void InputCell::SetText(InputCaseRecord& record, std::size_t position,
                        std::string_view text) const {
  if (MeansMissing(text)) {
    record.SetMissing(position);
  } else {
    record.SetText(position, text);
  }
}

void InputCell::SetBool(InputCaseRecord& record, std::size_t position, bool truth) const {
  tools::PutBool(record, position, truth);
}

void InputCell::SetMoment(InputCaseRecord& record, std::size_t position, const ColumnView& column,
                          std::size_t row) const {
  record.SetText(position, MomentText(column, row));
}

bool InputCell::IsMissing(std::size_t row) const {
  const ColumnView* column = column_;
  if (!column->IsPresent(row)) return true;
  if (column->type == CellType::kDictionary) {
    row = column->CodeAt(row);
    column = column->dictionary.get();
    if (!column->IsPresent(row)) return true;
  }
  return ClassOf(column->type) == CellClass::kText && MeansMissing(column->TextAt(row));
}

std::string InputCell::TextAt(std::size_t row) const {
  const ColumnView* column = column_;
  if (!column->IsPresent(row)) return {};
  if (column->type == CellType::kDictionary) {
    row = column->CodeAt(row);
    column = column->dictionary.get();
    if (!column->IsPresent(row)) return {};
  }
  switch (ClassOf(column->type)) {
    case CellClass::kNumber:
      return FormatNumber(column->NumberAt(row));
    case CellClass::kText:
      return std::string(column->TextAt(row));
    case CellClass::kBool:
      if (type_ == DataType::kString) return column->BoolAt(row) ? "true" : "false";
      return column->BoolAt(row) ? "1" : "0";
    case CellClass::kMoment:
      return MomentText(*column, row);
    case CellClass::kNothing:
      return {};
    case CellClass::kWhole:
      break;
  }
  return column->type == CellType::kU64 ? std::to_string(column->UnsignedAt(row))
                                        : std::to_string(column->WholeAt(row));
}

const ColumnView* InputCell::PlainNumbers() const {
  if (column_ == nullptr || type_ != DataType::kDouble || column_->HasMissing()) return nullptr;
  const CellClass of = ClassOf(column_->type);
  return of == CellClass::kNumber || of == CellClass::kWhole ? column_ : nullptr;
}

}  // namespace svmscore::capi
