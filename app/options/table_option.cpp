#include "app/options/table_option.h"

namespace svmscore::app {

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
