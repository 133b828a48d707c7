// JSON as it is written: no tree of values stands behind it.
#ifndef TOOLS_BASE_JSON_TEXT_H_
#define TOOLS_BASE_JSON_TEXT_H_

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::tools {

// Writes one value, indented by two blanks a level. The caller opens, fills and closes in order.
// [one thread] for each object. Fails: std::bad_alloc, wherever memory runs out: trees of the
// library end the process there, for theirs need memory to be freed.
class JsonText {
 public:
  void OpenObject() { Open('{'); }
  void CloseObject() { Close('}'); }
  void OpenArray() { Open('['); }
  void CloseArray() { Close(']'); }
  // The name of the next value of an object.
  JsonText& Key(std::string_view name);

  void Value(std::nullptr_t);
  void Value(std::same_as<bool> auto truth) { Put(truth ? "true" : "false"); }
  // Bytes that are not UTF-8 become U+FFFD.
  void Value(std::string_view text);
  void Value(const std::string& text) { Value(std::string_view(text)); }
  void Value(const char* text) { Value(std::string_view(text)); }
  // A number that is not finite is written as a text.
  void Value(std::same_as<double> auto number) { PutNumber(number); }
  template <std::integral T>
  requires(!std::same_as<T, bool>) void Value(T number) { Put(std::to_string(number)); }
  template <typename T>
  void Value(const std::optional<T>& value) {
    if (value) {
      Value(*value);
    } else {
      Value(nullptr);
    }
  }
  template <typename T>
  void Value(const std::vector<T>& values) {
    OpenArray();
    for (const T& value : values) Value(value);
    CloseArray();
  }
  template <typename T>
  void Member(std::string_view name, const T& value) {
    Key(name).Value(value);
  }

  // All that has been written, with a line end.
  std::string Finish();

 private:
  void Open(char bracket);
  void Close(char bracket);
  void Separate();
  void Put(std::string_view text);
  void PutNumber(double number);

  std::string text_;
  std::size_t depth_ = 0;
  bool is_first_ = true;  // of the innermost object or array
  bool has_key_ = false;
};

}  // namespace svmscore::tools

#endif  // TOOLS_BASE_JSON_TEXT_H_
