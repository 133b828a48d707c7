// Reads JSON (RFC 8259) piece by piece, in place, without building a tree.
#ifndef TOOLS_SERVE_JSON_SCANNER_H_
#define TOOLS_SERVE_JSON_SCANNER_H_

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::serve {

// A text that is not the JSON that is wanted; says what is wrong and where.
class JsonError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class JsonKind { kObject, kArray, kString, kNumber, kTrue, kFalse, kNull, kNan };

// The caller asks for what it expects, in the order of the text:
//   scanner.EnterObject();
//   while (scanner.NextKey(key)) { ... one value ... }
//   scanner.Finish();
// Refuses invalid UTF-8, unpaired surrogates, names that an object has twice, and nesting beyond
// kMostDepth. [one thread] Lives: `text`, whose strings are rewritten in place, longer than what is
// returned. Fails: JsonError; std::bad_alloc.
class JsonScanner {
 public:
  static constexpr std::size_t kMostDepth = 32;

  // With `takes_nan` the word NaN is a value too.
  explicit JsonScanner(std::string& text, bool takes_nan = false)
      : begin_(text.data()), next_(begin_), end_(begin_ + text.size()), takes_nan_(takes_nan) {}

  // What the next value is.
  JsonKind Peek();
  bool NextIs(JsonKind kind) { return Peek() == kind; }

  void EnterObject();
  // The next name of the innermost object; false at its end.
  bool NextKey(std::string_view& key);
  // Takes the next name where it is written as `quoted`, with its quotation marks; nothing where it
  // is another one, or the object ends. It is not compared with the object's other names.
  bool NextKeyIs(std::string_view quoted);
  // Takes the name that NextKey gave last out of the comparison with the object's other names: the
  // caller looks for it itself.
  void ForgetKey() { keys_.pop_back(); }
  void EnterArray();
  // Whether the innermost array goes on; false at its end.
  bool NextElement();

  std::string_view String();
  // The spelling of the number.
  std::string_view Number();
  // The same with its value, which is not finite where it is beyond a double's range.
  std::string_view Number(double& value);
  bool Bool();
  void Null();
  void Nan();
  // Passes over a value of any kind, checking it.
  void Skip();
  // After the last value: nothing but blanks may follow.
  void Finish();

  // Throws, with the present place, that `what` is expected here.
  [[noreturn]] void Expected(const std::string& what) const;
  [[noreturn]] void Fail(const std::string& what) const;

 private:
  struct Level {
    bool is_object;
    bool is_first;
    std::size_t first_key;  // in keys_
  };

  void SkipBlanks();
  void Enter(char bracket, bool is_object);
  void Leave();
  void Word(std::string_view word);
  void CheckKeys(std::size_t first) const;
  char* Unescape(const char*& from, char* to);
  unsigned HexAt(const char* at) const;

  char* begin_;
  char* next_;
  char* end_;
  bool takes_nan_;
  std::vector<Level> levels_;
  std::vector<std::string_view> keys_;
};

}  // namespace svmscore::serve

#endif  // TOOLS_SERVE_JSON_SCANNER_H_
