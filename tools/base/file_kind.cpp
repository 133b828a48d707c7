#include "tools/base/file_kind.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "host/text/number_text.h"
#include "host/text/printable.h"

namespace svmscore::tools {
namespace {

// Of the first line of a text.
constexpr std::size_t kShownBytes = 40;
constexpr std::string_view kBlanks = " \t\r\n";
constexpr const char* kDecompress = "decompress it first; only gzip and zstd are read as they are";
constexpr const char* kExport = "export it as CSV in UTF-8";

struct Kind {
  std::string_view mark;
  const char* what;
  const char* for_table;
};
// Bytes with which no text begins.
constexpr std::array kBinaryKinds = {
    Kind{"PK\x03\x04", "a ZIP archive, as Excel workbooks (.xlsx) are",
         "save the sheet as CSV in UTF-8, or unpack the archive"},
    Kind{"\xD0\xCF\x11\xE0", "an Excel workbook of the old kind (.xls)",
         "save the sheet as CSV in UTF-8"},
    Kind{"PAR1\x15", "a Parquet file", kExport},
    Kind{"ARROW1", "an Arrow file", kExport},
    Kind{"%PDF-", "a PDF document", kExport},
    Kind{"\xFD\x37zXZ", "compressed by xz", kDecompress},
    Kind{"BZh91AY&SY", "compressed by bzip2", kDecompress},
    Kind{"7z\xBC\xAF\x27\x1C", "a 7z archive", "unpack it"},
    Kind{"\x04\x22\x4D\x18", "compressed by lz4", kDecompress},
    Kind{"\x80\x02", "a Python pickle", kExport},
    Kind{"\x80\x03", "a Python pickle", kExport},
    Kind{"\x80\x04", "a Python pickle", kExport},
    Kind{"\x80\x05", "a Python pickle", kExport},
};

const Kind* BinaryKind(std::string_view beginning) {
  const auto* found = std::find_if(kBinaryKinds.begin(), kBinaryKinds.end(), [=](const Kind& kind) {
    return beginning.starts_with(kind.mark);
  });
  return found == kBinaryKinds.end() ? nullptr : found;
}

// UTF-16 or UTF-32 by its byte-order mark, or by the zeros that Latin letters have there.
const char* WideEncoding(std::string_view beginning) {
  using namespace std::string_view_literals;
  if (beginning.starts_with("\xFF\xFE\0\0"sv) || beginning.starts_with("\0\0\xFE\xFF"sv)) {
    return "UTF-32";
  }
  if (beginning.starts_with("\xFF\xFE") || beginning.starts_with("\xFE\xFF")) return "UTF-16";
  if (beginning.size() < 4) return nullptr;
  const bool low_first = beginning[1] == '\0' && beginning[3] == '\0';
  const bool high_first = beginning[0] == '\0' && beginning[2] == '\0';
  return low_first != high_first ? "UTF-16" : nullptr;
}

std::string_view WithoutBlanks(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text;
}

// An object, or a list of objects, lists or texts.
bool IsJson(std::string_view text) {
  if (text.empty() || (text[0] != '{' && text[0] != '[')) return false;
  const std::string_view rest = text.substr(1);
  const std::size_t next = rest.find_first_not_of(kBlanks);
  if (next == std::string_view::npos) return rest.find('\n') != std::string_view::npos;
  return rest[next] == '"' || (text[0] == '[' && (rest[next] == '{' || rest[next] == '['));
}

// `mark` in lower case.
bool BeginsLike(std::string_view text, std::string_view mark) {
  return text.size() >= mark.size() &&
         std::equal(mark.begin(), mark.end(), text.begin(), [](char small, char c) {
           return small == (c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c);
         });
}

bool IsHtml(std::string_view text) {
  return BeginsLike(text, "<!doctype html") || BeginsLike(text, "<html");
}

// A line of LIBSVM's sparse form, its end perhaps not seen: a label, and at least two entries such
// as 3:0.5.
bool IsLibsvmRow(std::string_view text) {
  std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  for (int words = 0; words < 3; ++words) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
    std::string_view number = line.substr(0, line.find_first_of(" \t"));
    line.remove_prefix(number.size());
    if (words > 0) {
      const std::size_t index = number.find_first_not_of("0123456789");
      if (index == 0 || index >= number.size() || number[index] != ':') return false;
      number.remove_prefix(index + 1);
    }
    if (!ParseNumber(number)) return false;
  }
  return true;
}

// In the declaration with which a document begins.
bool HasTypographicQuotes(std::string_view text) {
  const std::string_view declaration = text.substr(0, text.find('>'));
  constexpr std::array<std::string_view, 5> kQuotes = {"\u201C", "\u201D", "\u201E", "=\x93",
                                                       "=\x94"};
  return std::any_of(kQuotes.begin(), kQuotes.end(), [declaration](std::string_view quote) {
    return declaration.find(quote) != std::string_view::npos;
  });
}

}  // namespace

std::string WhyNoTable(std::string_view beginning) {
  if (const Kind* kind = BinaryKind(beginning)) {
    return fmt::format("it is no table of text but {}; {}", kind->what, kind->for_table);
  }
  if (const char* encoding = WideEncoding(beginning)) {
    return fmt::format(
        "its encoding is {}, and tables are read in UTF-8; save it as CSV in UTF-8, or convert it: "
        "iconv -f {} -t UTF-8",
        encoding, encoding);
  }
  const std::string_view text = WithoutBlanks(beginning);
  if (IsHtml(text))
    return "it is no table of text but a page of HTML, perhaps one that reports an error";
  if (text.starts_with("<?xml") || text.starts_with("<PMML") || text.starts_with("<!DOCTYPE")) {
    return "it is no table of text but XML; if it is the model, that comes before the cases: MODEL "
           "CASES";
  }
  const char* other = IsJson(text)                    ? "JSON"
                      : IsLibsvmRow(text)             ? "LIBSVM's sparse format"
                      : BeginsLike(text, "@relation") ? "the ARFF format"
                                                      : nullptr;
  if (other != nullptr) {
    return fmt::format(
        "it is no table of text but {}; write it as CSV, with a header line of the names", other);
  }
  return {};
}

NoDocument WhyNoDocument(std::string_view beginning) {
  const char* give_model = "give the PMML document of the model";
  const std::string_view text = WithoutBlanks(beginning);
  if (text.empty()) return {"the file is empty", give_model};
  if (const Kind* kind = BinaryKind(beginning)) {
    const bool packed = kind->for_table == kDecompress;
    return {fmt::format("the file is {}", kind->what), packed ? kDecompress : give_model};
  }
  if (IsHtml(text)) return {"the file is a page of HTML, perhaps of an error", give_model};
  if (text[0] == '<' && HasTypographicQuotes(text)) {
    return {"its quotation marks are typographic ones, such as \u201D",
            "write \" in their place, or export the document again"};
  }
  if (text[0] == '<' || WideEncoding(beginning) != nullptr) return {};
  if (text.starts_with("&lt;")) {
    return {"its tags are written as &lt;, as in the source of a web page",
            "save the document itself, not a page that shows it"};
  }
  if (IsJson(text)) return {"the file is JSON", give_model};
  if (text.starts_with("svm_type ")) {
    return {"the file is a model in LIBSVM's format",
            "make a document of it: svmscore convert MODEL -o MODEL.pmml"};
  }
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  if (const std::size_t document = std::min(text.find("<?xml"), text.find("<PMML"));
      document != std::string_view::npos) {
    return {fmt::format("the document follows other text: it begins with \"{}\"",
                        Shortened(line, kShownBytes)),
            "remove what is in front of it"};
  }
  const bool is_text = std::none_of(line.begin(), line.end(), [](char c) {
    return static_cast<unsigned char>(c) < 0x20 && c != '\t';
  });
  if (!is_text) return {"the file begins with bytes that are no text", give_model};
  if (line.find('<') == std::string_view::npos &&
      line.find_first_of(",;\t|") != std::string_view::npos) {
    return {"the file seems to be a table of cases", "the model comes first: MODEL CASES"};
  }
  return {fmt::format("it begins with \"{}\"", Shortened(line, kShownBytes)), give_model};
}

}  // namespace svmscore::tools
