#include "tools/calibrate/calibrated_text.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "tools/base/bad_input.h"
#include "tools/base/document_bytes.h"

namespace svmscore::tools {
namespace {

std::string Escaped(const std::string& text) {
  const auto escaped = EscapeToAscii(text);
  if (!escaped) throw BadDocument("a category has a character that XML cannot hold");
  return *escaped;
}

// Walks the bytes of a document character by character, as far as these are ASCII.
class Bytes {
 public:
  explicit Bytes(const std::string& document) : document_(document), width_(WidthOf(document)) {}

  std::string Ascii(std::string_view text) const { return Widen(text, width_); }
  std::size_t Unit() const { return width_ == ByteWidth::kOne ? 1 : 2; }
  bool IsBlankAt(std::size_t at) const {
    const std::string_view unit = std::string_view(document_).substr(at, Unit());
    return std::any_of(kBlanks.begin(), kBlanks.end(), [&](char blank) {
      return unit == Ascii({&blank, 1});
    });
  }
  // The blanks from there on, before anything else.
  std::string_view BlanksFrom(std::size_t at) const {
    const std::size_t begin = at;
    while (at + Unit() <= document_.size() && IsBlankAt(at)) at += Unit();
    return std::string_view(document_).substr(begin, at - begin);
  }
  // Where the blanks before `at` begin, at `least` or after.
  std::size_t BlanksBefore(std::size_t at, std::size_t least) const {
    while (at >= least + Unit() && IsBlankAt(at - Unit())) at -= Unit();
    return at;
  }
  std::string_view Part(std::size_t begin, std::size_t end) const {
    return std::string_view(document_).substr(begin, end - begin);
  }

 private:
  static constexpr std::string_view kBlanks = " \t\r\n";

  const std::string& document_;
  ByteWidth width_;
};

// The element with `added` as its first child and without those children that are `own`.
std::string WithChild(const Bytes& bytes, const ElementPlace& place, const std::string& name,
                      const std::string& added) {
  std::string text;
  if (place.inside == place.end) {  // <E .../>
    text = bytes.Part(place.begin, place.end - 2 * bytes.Unit());
    return text + bytes.Ascii(">" + added + "</" + place.prefix + name + ">");
  }
  text = bytes.Part(place.begin, place.inside);
  text += bytes.BlanksFrom(place.inside);
  text += bytes.Ascii(added);
  std::size_t next = place.inside;
  for (const ElementPlace& own : place.own) {
    text += bytes.Part(next, bytes.BlanksBefore(own.begin, next));
    next = own.end;
  }
  return text.append(bytes.Part(next, place.end));
}

}  // namespace

std::string ExtensionText(const MachineCalibration& calibration, bool classification,
                          const std::string& prefix) {
  if (!classification) {
    return fmt::format(
        "<{0}Extension extender=\"svmscore\"><{0}StandardDeviation>{1}</{0}StandardDeviation>"
        "</{0}Extension>",
        prefix, FormatNumber(calibration.deviation));
  }
  return fmt::format(
      "<{0}Extension extender=\"svmscore\"><{0}ResponseCategory response=\"{1}\" "
      "nonResponse=\"{2}\"/><{0}ProbabilityParameters A=\"{3}\" B=\"{4}\"/></{0}Extension>",
      prefix, Escaped(calibration.response), Escaped(calibration.other),
      FormatNumber(calibration.sigmoid.a), FormatNumber(calibration.sigmoid.b));
}

std::string CalibratedText(const std::string& document, const DocumentPlaces& places,
                           const std::vector<MachineCalibration>& machines, bool classification,
                           const std::string& note) {
  struct Edit {
    std::size_t begin;
    std::size_t end;
    std::string text;
  };
  const Bytes bytes(document);
  std::vector<Edit> edits;
  const std::string& prefix = places.header ? places.header->prefix : places.root.prefix;
  const std::string noted =
      fmt::format("<{}Extension extender=\"svmscore\" name=\"calibration\" value=\"{}\"/>", prefix,
                  Escaped(note));
  if (places.header) {
    edits.push_back({places.header->begin, places.header->end,
                     WithChild(bytes, *places.header, "Header", noted)});
  } else {
    edits.push_back({places.root.inside, places.root.inside,
                     bytes.Ascii(fmt::format("\n<{0}Header>{1}</{0}Header>", prefix, noted))});
  }
  for (std::size_t slot = 0; slot < machines.size(); ++slot) {
    const ElementPlace& place = places.machines[machines[slot].machine];
    edits.push_back({places.machines[slot].begin, places.machines[slot].end,
                     WithChild(bytes, place, "SupportVectorMachine",
                               ExtensionText(machines[slot], classification, place.prefix))});
  }
  std::sort(edits.begin(), edits.end(),
            [](const Edit& one, const Edit& other) { return one.begin < other.begin; });
  std::string text;
  std::size_t size = document.size();
  for (const Edit& edit : edits) size += edit.text.size() - (edit.end - edit.begin);
  text.reserve(size);  // documents may be large: no room is taken twice
  std::size_t next = 0;
  for (const Edit& edit : edits) {
    text += bytes.Part(next, edit.begin);
    text += edit.text;
    next = edit.end;
  }
  return text.append(bytes.Part(next, document.size()));
}

}  // namespace svmscore::tools
