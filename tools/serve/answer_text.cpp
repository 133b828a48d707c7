#include "tools/serve/answer_text.h"

#include <array>
#include <charconv>
#include <cmath>

#include "host/text/number_text.h"

namespace svmscore::serve {

void AppendNumber(std::string& out, double number) {
  std::array<char, kNumberTextSize> buffer;
  out.append(buffer.data(), FormatNumber(buffer.data(), number));
}

void AppendWhole(std::string& out, long number) {
  std::array<char, 24> buffer;
  out.append(buffer.data(),
             std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr);
}

void JsonSink::Number(double number) {
  if (std::isfinite(number)) {
    AppendNumber(out_, number);
  } else {
    Empty();
  }
}

std::string ErrorBody(std::string_view what, bool protocol) {
  std::string body = protocol ? "{\"error\":" : "{\"message\":";
  AppendJsonString(body, what);
  body += "}\n";
  return body;
}

}  // namespace svmscore::serve
