#include "host/text/field_types.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace svmscore {
namespace {

struct NamedType {
  std::string_view name;
  DataType type;
};

constexpr std::array kTypes = {
    NamedType{"string", DataType::kString},
    NamedType{"integer", DataType::kInteger},
    NamedType{"float", DataType::kFloat},
    NamedType{"double", DataType::kDouble},
    NamedType{"boolean", DataType::kBoolean},
    NamedType{"date", DataType::kDate},
    NamedType{"time", DataType::kTime},
    NamedType{"dateTime", DataType::kDateTime},
    NamedType{"timeSeconds", DataType::kTimeSeconds},
    NamedType{"dateDaysSince", DataType::kDateDaysSince},
    NamedType{"dateTimeSecondsSince", DataType::kDateTimeSecondsSince},
};

// The base years that documents may name; the last four are written by some producers only.
constexpr std::array kBaseYears = {0, 1960, 1970, 1980, 1990, 2000, 2010, 2020};

}  // namespace

std::optional<FieldType> ParseDataType(std::string_view text) {
  if (text.starts_with("xs:")) text.remove_prefix(3);
  const std::size_t bracket = text.find('[');
  const std::string_view name = text.substr(0, bracket);
  const auto* found = std::find_if(kTypes.begin(), kTypes.end(),
                                   [name](const NamedType& type) { return type.name == name; });
  if (found == kTypes.end()) return std::nullopt;
  const bool since =
      found->type == DataType::kDateDaysSince || found->type == DataType::kDateTimeSecondsSince;
  if (since != (bracket != std::string_view::npos)) return std::nullopt;
  if (!since) return FieldType{found->type, 0};
  int year = -1;
  const char* first = text.data() + bracket + 1;
  const char* last = text.data() + text.size();
  const auto result = std::from_chars(first, last, year);
  if (result.ec != std::errc() || std::string_view(result.ptr, last) != "]" ||
      std::find(kBaseYears.begin(), kBaseYears.end(), year) == kBaseYears.end()) {
    return std::nullopt;
  }
  return FieldType{found->type, year};
}

std::optional<OpType> ParseOpType(std::string_view text) {
  if (text == "continuous") return OpType::kContinuous;
  if (text == "ordinal") return OpType::kOrdinal;
  if (text == "categorical") return OpType::kCategorical;
  return std::nullopt;
}

std::string_view DataTypeName(DataType type) {
  return std::find_if(kTypes.begin(), kTypes.end(),
                      [type](const NamedType& named) { return named.type == type; })
      ->name;
}

bool IsNumberStored(DataType type) {
  return type != DataType::kString;
}

}  // namespace svmscore
