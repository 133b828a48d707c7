// The ranges by which svm-scale scales features, as its option -s writes them.
#ifndef TOOLS_CONVERT_SCALE_RANGES_H_
#define TOOLS_CONVERT_SCALE_RANGES_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>

namespace svmscore::tools {

struct ScaleRange {
  double from = 0.0;
  double to = 0.0;
};

// A value of `source` becomes lower + (upper - lower) * (value - min) / (max - min) in `scaled`,
// computed from the left; min and max become lower and upper themselves.
struct ScaleRanges {
  ScaleRange scaled;
  std::map<std::int32_t, ScaleRange> features;  // from != to; any other feature becomes 0
  struct Target {
    ScaleRange scaled;
    ScaleRange source;
  };
  std::optional<Target> target;  // of a regression whose answers were scaled too
};

// [any thread] Fails: ConversionError of the ranges, std::bad_alloc.
ScaleRanges ReadScaleRanges(std::string_view text);

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_SCALE_RANGES_H_
