#include "tools/calibrate/calibration_date.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <stdexcept>

#include <fmt/chrono.h>
#include <fmt/format.h>

#include "host/text/number_text.h"

namespace svmscore::tools {

std::string DateOfCalibration() {
  std::int64_t seconds = std::chrono::duration_cast<std::chrono::seconds>(
                             std::chrono::system_clock::now().time_since_epoch())
                             .count();
  if (const char* asked = std::getenv("SOURCE_DATE_EPOCH")) {
    const std::optional<std::int64_t> given = ParseInteger(asked);
    // Years that have four digits.
    if (!given || *given < 0 || *given > 253402300799) {
      throw std::invalid_argument(
          fmt::format("SOURCE_DATE_EPOCH is \"{}\", which is no number of seconds since 1970; "
                      "correct it, or unset it",
                      asked));
    }
    seconds = *given;
  }
  return fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(static_cast<std::time_t>(seconds)));
}

}  // namespace svmscore::tools
