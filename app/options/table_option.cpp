#include "app/options/table_option.h"

#include <string_view>

#include <fmt/format.h>

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

void AddTableOptions(CLI::App& command, TableOptions& options) {
  const auto set_delimiter = [&options](const std::string& text) {
    const std::string why = ReadDelimiter(text, options.delimiter);
    if (!why.empty()) throw CLI::ValidationError("--delimiter", why);
  };
  command
      .add_option_function<std::string>("--delimiter", set_delimiter,
                                        "the character between the cells of the input, for "
                                        "example ';', or the word tab; default ,")
      ->type_name("C|tab");
  command.add_flag("--decimal-comma", options.decimal_comma,
                   "numbers of the input are written as 1,5; where cells are separated by commas "
                   "too, such cells must be quoted");
  command
      .add_option(
          "--missing-token", options.missing_tokens,
          "a cell of this text is missing, as an empty one is; repeatable; default NA and N/A, "
          "but not for an input that declares them as values")
      ->allow_extra_args(false);
}

}  // namespace svmscore::app
