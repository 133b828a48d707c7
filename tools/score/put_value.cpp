#include "tools/score/put_value.h"

#include <array>
#include <charconv>
#include <cmath>

#include "host/model/score_dict_var.h"
#include "host/text/number_text.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::InputCaseRecord;

// Whole numbers up to here are doubles.
constexpr double kExact = 9007199254740992.0;

DataType TypeAt(const InputCaseRecord& record, std::size_t position) {
  return record.Variable(position).GetFieldType().data;
}

}  // namespace

void PutNumber(InputCaseRecord& record, std::size_t position, double number) {
  switch (TypeAt(record, position)) {
    case DataType::kDouble:
    case DataType::kDateDaysSince:
    case DataType::kDateTimeSecondsSince:
      record.SetNumber(position, number);
      return;
    case DataType::kFloat:
      record.SetNumber(position, static_cast<double>(static_cast<float>(number)));
      return;
    case DataType::kInteger:
      if (std::fabs(number) <= kExact && number == std::trunc(number)) {
        record.SetNumber(position, number + 0.0);  // no -0
        return;
      }
      break;
    case DataType::kBoolean:
      if (number == 0.0 || number == 1.0) {
        record.SetNumber(position, number + 0.0);
        return;
      }
      break;
    case DataType::kTimeSeconds:
      if (number >= 0.0) {
        record.SetNumber(position, number);
        return;
      }
      break;
    default:
      break;
  }
  std::array<char, kNumberTextSize> buffer;
  const char* end = FormatNumber(buffer.data(), number);
  record.SetText(position, {buffer.data(), static_cast<std::size_t>(end - buffer.data())});
}

void PutWhole(InputCaseRecord& record, std::size_t position, std::int64_t number) {
  const double same = static_cast<double>(number);
  if (TypeAt(record, position) != DataType::kString && std::fabs(same) < kExact) {
    return PutNumber(record, position, same);
  }
  std::array<char, 24> buffer;
  const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  record.SetText(position, {buffer.data(), static_cast<std::size_t>(written.ptr - buffer.data())});
}

void PutBool(InputCaseRecord& record, std::size_t position, bool truth) {
  if (TypeAt(record, position) == DataType::kString) {
    record.SetText(position, truth ? "true" : "false");
  } else {
    PutNumber(record, position, truth ? 1.0 : 0.0);
  }
}

}  // namespace svmscore::tools
