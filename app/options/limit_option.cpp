#include "app/options/limit_option.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace svmscore::app {
namespace {

// Nothing where the text is no limit; else what is wrong with it.
void SetLimit(const std::string& text, Limits& limits) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string_view name = std::string_view(text).substr(0, equals);
  const auto names = LimitNames();
  const auto found = std::find_if(names.begin(), names.end(),
                                  [name](const LimitName& known) { return known.name == name; });
  if (found == names.end()) {
    std::string list;
    for (const LimitName& known : names) {
      list += fmt::format("{}{}", list.empty() ? "" : ", ", known.name);
    }
    throw CLI::ValidationError(
        "--limit", fmt::format("there is no limit \"{}\"; the limits are {}", name, list));
  }
  std::uint64_t number = 0;
  const char* first = text.data() + std::min(equals + 1, text.size());
  const char* last = text.data() + text.size();
  const auto [end, failure] = std::from_chars(first, last, number);
  if (failure != std::errc() || end != last) {
    throw CLI::ValidationError(
        "--limit",
        fmt::format("write {0}=NUMBER, where NUMBER is a whole number; \"{1}\" is not one",
                    found->name, text));
  }
  limits.*(found->limit) = number;
}

}  // namespace

void AddLimitOption(CLI::App& command, Limits& limits) {
  command
      .add_option_function<std::vector<std::string>>(
          "--limit",
          [&limits](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) SetLimit(text, limits);
          },
          "NAME=NUMBER: let more through before a file is refused; repeatable; "
          "docs/reliability.md lists the names")
      ->allow_extra_args(false);
}

}  // namespace svmscore::app
