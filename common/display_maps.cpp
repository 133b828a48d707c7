#include <cstddef>

#include "common/display.h"
#include "common/display_format.h"

namespace MCDisplay_850 {
namespace {

using svmscore::display::WritePairs;

std::string MapNote(std::size_t size) {
  return " (map size = " + std::to_string(size) + ")" + (size == 0 ? " <empty>" : "");
}

}  // namespace

void DisplayIIM(std::string label, const std::map<int, int>& map) {
  DisplayText(1, label + MapNote(map.size()));
  WritePairs(map);
}

void DisplayDDM(std::string label, const std::map<double, double>& map) {
  DisplayText(1, label + MapNote(map.size()));
  WritePairs(map);
}

void DisplayVIM(std::string label, const std::map<int, int>& map) {
  DisplayText(1, map.empty() ? label + " <empty>" : label);
  WritePairs(map);
}

void DisplayIntVecIntMap(std::string label, const std::map<std::vector<int>, int>& map) {
  DisplayText(1, label + MapNote(map.size()));
  for (const auto& [key, value] : map) {
    DisplayIV("Map key", key);
    DisplayI("Map value", value);
  }
}

void DisplayIntVecDVecMap(std::string label,
                          const std::map<std::vector<int>, std::vector<double>>& map) {
  DisplayText(1, label + MapNote(map.size()));
  for (const auto& [key, value] : map) {
    DisplayIV("Map key", key);
    DisplayDV("Map value", value, false);
  }
}

void DisplaySLDM(std::string label, const std::map<std::list<std::string>, double>& map) {
  DisplayText(1, label + MapNote(map.size()));
  for (const auto& [key, value] : map) {
    std::string line = "Map's StringList:";
    for (const std::string& text : key) line += " " + text;
    DisplayText(1, line);
    DisplayD("Map's double", value);
  }
}

}  // namespace MCDisplay_850
