#include "app/table/table_limit.h"

#include <fmt/format.h>

namespace svmscore::app {

std::string BeyondTableLimit(const Limits& limits, Limit limit) {
  const LimitName& name = LimitNameOf(limit);
  return fmt::format(
      "{} exceeds the limit of {}; if you trust the file, raise the limit: --limit {}=NUMBER",
      name.about, limits.*limit, name.name);
}

}  // namespace svmscore::app
