#include "app/table/table_options.h"

#include <string_view>

#include <fmt/format.h>

#include "app/base/messages.h"

namespace svmscore::app {
namespace {

// Empty for a character that can separate cells; else why it cannot.
std::string WhyNoDelimiter(std::string_view text) {
  if (text.empty()) return "it is empty; give one character, or the word tab";
  if ((static_cast<unsigned char>(text[0]) & 0x80U) != 0) {
    return fmt::format("\"{}\" is no ASCII character", text);
  }
  if (text.size() > 1) {
    return fmt::format("\"{}\" is more than one character; give one, or the word tab", text);
  }
  const char c = text[0];
  if (c == '"') return "a quotation mark begins a cell and cannot separate two";
  if (c == '\n' || c == '\r') return "a line end ends a row and cannot separate cells";
  const bool in_numbers = c == '.' || c == '-' || c == '+';
  const bool alphanumeric = (c >= '0' && c <= '9') || ((c | 0x20) >= 'a' && (c | 0x20) <= 'z');
  if (in_numbers || alphanumeric) {
    return fmt::format("\"{}\" is a part of numbers and names", c);
  }
  return c == '\t' || (c >= ' ' && c != '\x7F') ? "" : "it is a control character";
}

}  // namespace

std::string ReadDelimiter(const std::string& text, char& delimiter) {
  const std::string character = text == "tab" || text == "\\t" ? "\t" : text;
  std::string why = WhyNoDelimiter(character);
  if (why.empty()) delimiter = character[0];
  return why;
}

void TellOverruledValues(const tools::CellRules& cells, const LoadedModel& loaded) {
  for (const std::string& line : cells.OverruledValues(loaded)) Tell(line);
}

}  // namespace svmscore::app
