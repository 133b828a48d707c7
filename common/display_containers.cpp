#include <algorithm>
#include <cstddef>

#include "common/display.h"
#include "common/display_format.h"

namespace MCDisplay_850 {
namespace {

using svmscore::display::FullOrMiss;
using svmscore::display::GeneralOrMiss;
using svmscore::display::kNumbersPerLine;
using svmscore::display::kWholeNumbersPerLine;
using svmscore::display::Lines;
using svmscore::display::SizeNote;
using svmscore::display::TextOf;
using svmscore::display::WritePairs;

template <typename Whole>
void WriteWholeNumbers(const std::vector<Whole>& values) {
  Lines lines(kWholeNumbersPerLine);
  for (const Whole value : values) lines.Add(" " + std::to_string(value));
  lines.End();
}

void WriteNumbers(const double* values, std::size_t size, std::string opening = {}) {
  Lines lines(kNumbersPerLine, std::move(opening));
  for (std::size_t i = 0; i < size; ++i) lines.Add(" " + GeneralOrMiss(values[i]));
  lines.End();
}

std::string BitsOf(const std::vector<bool>& bits) {
  std::string line;
  for (const bool bit : bits) line += bit ? " 1" : " 0";
  return line;
}

// A null array has no elements, whatever the size says.
std::size_t SizeOf(const double* values, int size) {
  return values == nullptr ? 0 : static_cast<std::size_t>(std::max(size, 0));
}

// `named`: each row is introduced by its number.
void WriteTriangle(const std::vector<double>& elements, int rows, bool named) {
  std::size_t begin = 0;
  for (int row = 0; row < rows && begin < elements.size(); ++row) {
    const std::size_t size = std::min(static_cast<std::size_t>(row) + 1, elements.size() - begin);
    WriteNumbers(elements.data() + begin, size, named ? "row " + TextOf(row) + ":" : std::string());
    begin += size;
  }
}

}  // namespace

void DisplayIV(std::string label, const std::vector<int>& values) {
  DisplayText(1, label + SizeNote(values.size()));
  WriteWholeNumbers(values);
}

void DisplayUV(std::string label, const std::vector<unsigned int>& values) {
  DisplayText(1, label + SizeNote(values.size()));
  WriteWholeNumbers(values);
}

void DisplayBV(std::string label, const std::vector<bool>& values) {
  DisplayText(1, label + SizeNote(values.size()));
  Lines lines(kWholeNumbersPerLine);
  for (const bool value : values) lines.Add(value ? " 1" : " 0");
  lines.End();
}

void DisplaySV(std::string label, const std::vector<std::string>& values) {
  DisplayText(1, label + SizeNote(values.size()));
  for (const std::string& value : values) DisplayText(1, " " + value);
}

void DisplayDV(std::string label, const std::vector<double>& values, bool full_precision) {
  DisplayDA(label, values.data(), static_cast<int>(values.size()), full_precision);
}

void DisplayDA(std::string label, const double* values, int size, bool full_precision) {
  const std::size_t count = SizeOf(values, size);
  DisplayText(1, label + SizeNote(count));
  if (!full_precision) {
    WriteNumbers(values, count);
    return;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const std::string text = FullOrMiss(values[i]);
    DisplayText(1, text == "miss" ? text : " = " + text);
  }
}

void DisplayDAS(const double* values, int size) {
  WriteNumbers(values, SizeOf(values, size));
}

void DisplayVPDI(std::string label, const std::vector<std::pair<double, int>>& pairs) {
  DisplayText(1, label + SizeNote(pairs.size()));
  WritePairs(pairs);
}

void DisplayVPD(std::string label, const std::vector<std::pair<double, double>>& pairs) {
  DisplayText(1, label + SizeNote(pairs.size()));
  WritePairs(pairs);
}

void DisplayVPII(std::string label, const std::vector<std::pair<int, int>>& pairs) {
  DisplayText(1, label + SizeNote(pairs.size()));
  WritePairs(pairs);
}

void DisplayDVTR(std::string label, const std::vector<double>& elements, int rows) {
  DisplayText(1, label + " (number of elements = " + std::to_string(elements.size()) +
                     ", number of rows = " + TextOf(rows) + ")");
  WriteTriangle(elements, rows, true);
}

void DisplayDVTRS(const std::vector<double>& elements, int rows) {
  WriteTriangle(elements, rows, false);
}

void DisplayDVV(std::string label, const std::vector<std::vector<double>>& lists) {
  DisplayText(1, label + SizeNote(lists.size()));
  for (std::size_t i = 0; i < lists.size(); ++i) {
    std::string line = "vec[" + std::to_string(i) + "]";
    for (const double value : lists[i]) line += " " + GeneralOrMiss(value);
    DisplayText(1, lists[i].empty() ? line + " <none>" : line);
  }
}

void DisplaySVV(std::string label, const std::vector<std::vector<std::string>>& lists) {
  DisplayText(1, label + SizeNote(lists.size()));
  for (std::size_t i = 0; i < lists.size(); ++i) {
    std::string line = "vec[" + std::to_string(i) + "]";
    for (const std::string& value : lists[i]) line += " " + value;
    DisplayText(1, lists[i].empty() ? line + " <none>" : line);
  }
}

void DisplayBVV(std::string label, const std::vector<std::vector<bool>>& rows) {
  const std::size_t columns = rows.empty() ? 0 : rows.front().size();
  DisplayText(1, label + " ( number of rows = " + std::to_string(rows.size()) +
                     ", number of columns = " + std::to_string(columns) + ")");
  for (const auto& row : rows) DisplayText(1, BitsOf(row));
}

}  // namespace MCDisplay_850
