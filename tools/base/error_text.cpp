#include "tools/base/error_text.h"

#include <fmt/format.h>

namespace svmscore::tools {

std::string Explain(const MCZandor_850::SSException& error) {
  std::string text = fmt::format("[{}] {}", error.GetErrorCode(), error.what());
  std::string remedy = error.GetRemedy();
  if (remedy.empty()) return text;
  if (remedy[0] >= 'a' && remedy[0] <= 'z') remedy[0] = static_cast<char>(remedy[0] - 'a' + 'A');
  return fmt::format("{}{} {}.", text, text.ends_with('?') ? "" : ".", remedy);
}

}  // namespace svmscore::tools
