#include "tools/base/json_text.h"

#include <cmath>

#include <nlohmann/json.hpp>

#include "host/text/number_text.h"

namespace svmscore::tools {
namespace {

using Json = nlohmann::json;

// Single numbers and texts are freed without memory.
std::string SpellingOf(const Json& scalar) {
  return scalar.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void JsonText::Separate() {
  if (has_key_) {
    has_key_ = false;
    return;
  }
  if (!is_first_) text_ += ',';
  if (depth_ > 0) text_ += '\n' + std::string(2 * depth_, ' ');
  is_first_ = false;
}

JsonText& JsonText::Key(std::string_view name) {
  Value(name);
  text_ += ": ";
  has_key_ = true;
  return *this;
}

void JsonText::Put(std::string_view text) {
  Separate();
  text_ += text;
}

void JsonText::Value(std::nullptr_t) {
  Put("null");
}

void JsonText::Value(std::string_view text) {
  Put(SpellingOf(Json(text)));
}

void JsonText::PutNumber(double number) {
  if (std::isfinite(number)) {
    Put(SpellingOf(Json(number)));
  } else {
    Value(FormatNumber(number));
  }
}

void JsonText::Open(char bracket) {
  Separate();
  text_ += bracket;
  ++depth_;
  is_first_ = true;
}

void JsonText::Close(char bracket) {
  --depth_;
  if (!is_first_) text_ += '\n' + std::string(2 * depth_, ' ');
  text_ += bracket;
  is_first_ = false;
}

std::string JsonText::Finish() {
  text_ += '\n';
  return std::move(text_);
}

}  // namespace svmscore::tools
