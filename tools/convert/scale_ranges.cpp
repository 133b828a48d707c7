#include "tools/convert/scale_ranges.h"

#include <cmath>
#include <string>

#include <fmt/format.h>

#include "tools/convert/libsvm_model.h"
#include "tools/convert/text_lines.h"

namespace svmscore::tools {
namespace {

constexpr const char* kScaleAgain = "give the file that svm-scale -s wrote";

TextLine NextLine(TextLines& lines, const char* what) {
  const std::optional<TextLine> line = lines.Next();
  if (!line) lines.RefuseEnd(fmt::format("the file ends before {}", what), kScaleAgain);
  return *line;
}

ScaleRange ReadRange(TextLine& line, const char* what) {
  ScaleRange range;
  range.from = line.Number(what);
  range.to = line.Number(what);
  line.End(what);
  if (!std::isfinite(range.to - range.from)) {
    line.Refuse(fmt::format("{} is wider than any number", what), "scale data without such values");
  }
  return range;
}

// What values become.
ScaleRange ReadScaled(TextLines& lines) {
  const char* what = "the range of scaled values";
  TextLine line = NextLine(lines, what);
  const ScaleRange range = ReadRange(line, what);
  if (!(range.from < range.to)) {
    line.Refuse("the lower end of scaled values is not below the upper one", kScaleAgain);
  }
  return range;
}

// What they were.
ScaleRange ReadSource(TextLine& line, const char* what) {
  const ScaleRange range = ReadRange(line, what);
  if (range.from > range.to) {
    line.Refuse(fmt::format("the smallest value of {} is above the largest", what), kScaleAgain);
  }
  return range;
}

}  // namespace

ScaleRanges ReadScaleRanges(std::string_view text) {
  TextLines lines(ConversionInput::kRanges, text);
  ScaleRanges ranges;
  TextLine section = NextLine(lines, "the line x");
  std::string_view name = section.Word();
  if (name == "y") {
    section.End("y");
    ranges.target.emplace();
    ranges.target->scaled = ReadScaled(lines);
    TextLine line = NextLine(lines, "the range of answers");
    ranges.target->source = ReadSource(line, "the range of answers");
    section = NextLine(lines, "the line x");
    name = section.Word();
  }
  if (name != "x") {
    section.Refuse(fmt::format("{} is where x or y should be", Quoted(name)), kScaleAgain);
  }
  section.End("x");
  ranges.scaled = ReadScaled(lines);
  std::int32_t last = 0;
  while (std::optional<TextLine> line = lines.Next()) {
    const auto index =
        static_cast<std::int32_t>(line->Whole("the number of a feature", 1, kMostFeatures));
    if (index <= last) {
      line->Refuse(fmt::format("feature {} comes after feature {}", index, last),
                   "write the features in rising order, each once");
    }
    last = index;
    const ScaleRange range = ReadSource(*line, "the range of a feature");
    if (range.from < range.to) ranges.features.emplace(index, range);
  }
  return ranges;
}

}  // namespace svmscore::tools
