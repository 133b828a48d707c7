#include "tests/transform/call_text.h"

#include <stdexcept>

namespace svmscore::transform {
namespace {

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  std::string ReadAll() {
    std::string xml = Read();
    SkipBlanks();
    if (!text_.empty()) throw std::invalid_argument("trailing: " + std::string(text_));
    return xml;
  }

 private:
  void SkipBlanks() {
    while (text_.starts_with(' ')) text_.remove_prefix(1);
  }

  std::string Read() {
    SkipBlanks();
    const std::size_t end = text_.find_first_of("(),'");
    std::string word(text_.substr(0, end));
    while (word.ends_with(' ')) word.pop_back();
    text_.remove_prefix(end == std::string_view::npos ? text_.size() : end);
    if (text_.starts_with('(')) return ReadCall(word);
    if (text_.starts_with('\'')) {
      return "<Constant dataType='" + (word.empty() ? "string" : word) + "'><![CDATA[" +
             ReadQuoted() + "]]></Constant>";
    }
    if (word == "missing") return "<Constant missing='true'/>";
    if (word == "true" || word == "false") {
      return "<Constant dataType='boolean'>" + word + "</Constant>";
    }
    if (word.find_first_of("0123456789") == 0 || word.starts_with('-')) {
      return "<Constant>" + word + "</Constant>";
    }
    return "<FieldRef field='" + word + "'/>";
  }

  std::string ReadQuoted() {
    std::string quoted;
    text_.remove_prefix(1);
    while (!text_.starts_with('\'') || text_.starts_with("''")) {
      if (text_.starts_with('\'')) text_.remove_prefix(1);
      quoted += text_.at(0);
      text_.remove_prefix(1);
    }
    text_.remove_prefix(1);
    return quoted;
  }

  std::string ReadCall(const std::string& function) {
    std::string xml = "<Apply function='" + function + "'>";
    do {
      text_.remove_prefix(1);
      SkipBlanks();
      if (text_.starts_with(')')) break;
      xml += Read();
      SkipBlanks();
    } while (text_.starts_with(','));
    if (!text_.starts_with(')')) throw std::invalid_argument("no end of " + function);
    text_.remove_prefix(1);
    return xml + "</Apply>";
  }

  std::string_view text_;
};

}  // namespace

std::string CallToXml(std::string_view text) {
  return Reader(text).ReadAll();
}

}  // namespace svmscore::transform
