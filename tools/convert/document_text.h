// A document as it is written, element by element.
#ifndef TOOLS_CONVERT_DOCUMENT_TEXT_H_
#define TOOLS_CONVERT_DOCUMENT_TEXT_H_

#include <concepts>
#include <string>
#include <string_view>
#include <vector>

namespace svmscore::tools {

// Each element begins a line, indented by one blank a level. Texts are escaped; they must be UTF-8
// without the characters that XML has not: IsXmlText. Numbers are the shortest texts that read back
// to the same bits. [one thread] Lives: element names, as long as this object. Fails:
// std::bad_alloc.
class DocumentText {
 public:
  DocumentText() : text_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>") {}

  // Begins an element, whose attributes follow, then Open, Close or Content.
  DocumentText& Element(std::string_view name);
  DocumentText& Attribute(std::string_view name, std::string_view value);
  DocumentText& Attribute(std::string_view name, const std::string& value) {
    return Attribute(name, std::string_view(value));
  }
  DocumentText& Attribute(std::string_view name, const char* value) {
    return Attribute(name, std::string_view(value));
  }
  DocumentText& Attribute(std::string_view name, std::same_as<double> auto number) {
    return NumberAttribute(name, number);
  }
  DocumentText& Attribute(std::string_view name, std::integral auto number) {
    return Attribute(name, std::string_view(std::to_string(number)));
  }
  // The elements up to the End of this one are in it.
  void Open();
  void End();
  // Nothing is in it.
  void Close() { text_ += "/>"; }
  // Numbers are in it, and it ends on its line.
  template <typename Numbers>
  void Content(const Numbers& numbers) {
    text_ += '>';
    const char* separator = "";
    for (const auto number : numbers) {
      text_ += separator;
      separator = " ";
      Add(number);
    }
    text_ += "</";
    text_ += name_;
    text_ += '>';
  }
  // All that was written, with a line end.
  std::string Finish();

 private:
  DocumentText& NumberAttribute(std::string_view name, double number);
  void Add(std::same_as<double> auto number) { AddNumber(number); }
  void Add(std::integral auto number) { text_ += std::to_string(number); }
  void AddNumber(double number);

  std::string text_;
  std::string_view name_;               // of the element that is being written
  std::vector<std::string_view> open_;  // the elements around it
};

// Whether the text is UTF-8 and holds only characters that a document can hold.
bool IsXmlText(std::string_view text);

}  // namespace svmscore::tools

#endif  // TOOLS_CONVERT_DOCUMENT_TEXT_H_
