#include "host/xml/raw_encoding.h"

#include <algorithm>
#include <array>
#include <memory>

#include <fmt/format.h>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>

namespace svmscore {
namespace {

constexpr std::string_view kOpening = "<?xml";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\n";

// The characters that have the same code in all code pages of EBCDIC, and these codes.
constexpr std::string_view kShared =
    "\t\r .<(+&*);-/,%_>?:'=\"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr std::string_view kSharedInEbcdic =
    "\x05\x0D\x40\x4B\x4C\x4D\x4E\x50\x5C\x5D\x5E\x60\x61\x6B\x6C\x6D\x6E\x6F\x7A\x7D\x7E\x7F"
    "\x81\x82\x83\x84\x85\x86\x87\x88\x89\x91\x92\x93\x94\x95\x96\x97\x98\x99"
    "\xA2\xA3\xA4\xA5\xA6\xA7\xA8\xA9\xC1\xC2\xC3\xC4\xC5\xC6\xC7\xC8\xC9"
    "\xD1\xD2\xD3\xD4\xD5\xD6\xD7\xD8\xD9\xE2\xE3\xE4\xE5\xE6\xE7\xE8\xE9"
    "\xF0\xF1\xF2\xF3\xF4\xF5\xF6\xF7\xF8\xF9";
static_assert(kShared.size() == kSharedInEbcdic.size());

// Guesses by the first bytes, as parsers do.
void DetectUnits(std::string_view bytes, RawEncoding& encoding) {
  if (bytes.size() < 4) return;
  const auto at = [bytes](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  if (bytes.starts_with("\x4C\x6F")) {  // "<?" in EBCDIC
    encoding.ebcdic = true;
    encoding.exact = false;
    return;
  }
  const bool zero_first = at(0) == 0;
  const bool little_mark = at(0) == 0xFF && at(1) == 0xFE;
  if ((zero_first && at(1) == 0) || (at(0) != 0 && at(1) == 0 && at(2) == 0) ||
      (little_mark && at(2) == 0 && at(3) == 0)) {
    encoding.unit = 4;
    encoding.big_endian = zero_first;
  } else if (zero_first || at(1) == 0 || (at(0) == 0xFE && at(1) == 0xFF) || little_mark) {
    encoding.unit = 2;
    encoding.big_endian = zero_first || at(0) == 0xFE;
  }
}

// The beginning as ASCII, without a byte order mark; DEL replaces everything that is not ASCII.
std::string Beginning(std::string_view bytes, const RawEncoding& encoding) {
  std::string text;
  bytes = bytes.substr(0, kLongestDeclaration);
  for (std::size_t i = 0; i + encoding.unit <= bytes.size(); i += encoding.unit) {
    char32_t c = 0;
    for (std::size_t k = 0; k < encoding.unit; ++k) {
      const std::size_t from = encoding.big_endian ? k : encoding.unit - 1 - k;
      c = c << 8U | static_cast<unsigned char>(bytes[i + from]);
    }
    if (i == 0 && c == 0xFEFF) continue;
    if (encoding.ebcdic) {
      if (c == 0x15 || c == 0x25) c = 0x40;  // line ends: code pages differ over which it is
      const std::size_t place = kSharedInEbcdic.find(static_cast<char>(c));
      text += place == std::string_view::npos ? '\x7F' : kShared[place];
    } else {
      text += c < 0x80 ? static_cast<char>(c) : '\x7F';
    }
  }
  if (bytes.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  return text;
}

// The encoding that a declaration names; empty where it names none or the text is no declaration.
std::string DeclaredEncoding(std::string_view text) {
  if (!text.starts_with(kOpening)) return {};
  text = text.substr(kOpening.size(), text.find("?>") - kOpening.size());
  while (true) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    const std::string_view name = text.substr(0, text.find_first_of(" \t\r\n="));
    const std::size_t open = text.find_first_of("\"'");
    if (open == std::string_view::npos) return {};
    const std::size_t close = text.find(text[open], open + 1);
    if (close == std::string_view::npos) return {};
    if (name == "encoding") return std::string(text.substr(open + 1, close - open - 1));
    text.remove_prefix(close + 1);
  }
}

bool StartsWithAny(std::string_view name, const auto& beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [name](std::string_view start) { return name.starts_with(start); });
}

// Whether the name fits units of that many bytes, and that byte order if it states one.
bool IsWide(std::string_view name, std::size_t unit, bool big_endian) {
  if (name.ends_with(big_endian ? "BE" : "LE")) name.remove_suffix(2);
  if (unit == 2) return name == "UTF-16" || name == "UCS-2" || name == "ISO-10646-UCS-2";
  return name == "UTF-32" || name == "UCS-4" || name == "ISO-10646-UCS-4";
}

// The parser ignores such a name where the bytes are those of ASCII: texts that a program kept in
// memory as UTF-16 are often written to files as UTF-8.
bool IsAnyWide(std::string_view name) {
  return IsWide(name, 2, true) || IsWide(name, 2, false) || IsWide(name, 4, true) ||
         IsWide(name, 4, false);
}

bool IsExact(std::string_view name) {
  constexpr std::array<std::string_view, 8> kExact = {
      "UTF-8", "UTF8", "US-ASCII", "ASCII", "ISO-8859-", "WINDOWS-125", "CP125", "KOI8-"};
  return StartsWithAny(name, kExact) && name.find_first_of(",=") == std::string_view::npos;
}

// Whether the encoding leaves markup characters where RawScan looks for them. The text tried begins
// with characters that start a shift in UTF-7, HZ and the encoding of mailbox names.
enum class Probe { kKept, kHidden, kUnknown };
Probe ProbeSigns(const std::string& name, bool ebcdic) try {
  std::string bytes(ebcdic ? kSharedInEbcdic : kShared);
  std::string signs(kShared);
  if (!ebcdic) {
    const std::string shifts = "~{<=\"'~} +ADw- &ADw- ";
    bytes = shifts + bytes;
    signs = shifts + signs;
  }
  xercesc::XMLTransService::Codes result = xercesc::XMLTransService::Ok;
  const std::unique_ptr<xercesc::XMLTranscoder> transcoder(
      xercesc::XMLPlatformUtils::fgTransService->makeNewTranscoderFor(name.c_str(), result, 1024));
  if (transcoder == nullptr) return Probe::kUnknown;
  std::array<XMLCh, 1024> text = {};
  std::array<unsigned char, 1024> sizes = {};
  XMLSize_t eaten = 0;
  const XMLSize_t count =
      transcoder->transcodeFrom(reinterpret_cast<const XMLByte*>(bytes.data()), bytes.size(),
                                text.data(), text.size(), eaten, sizes.data());
  if (count != signs.size() || eaten != bytes.size()) return Probe::kHidden;
  for (std::size_t i = 0; i < count; ++i) {
    if (text[i] == static_cast<unsigned char>(signs[i])) continue;
    if (signs[i] != '~' && signs[i] != '{' && signs[i] != '}') return Probe::kHidden;
  }
  return Probe::kKept;
} catch (const xercesc::XMLException&) {
  return Probe::kHidden;
}

}  // namespace

bool IsSharedInEbcdic(char c) {
  return kSharedInEbcdic.find(c) != std::string_view::npos;
}

bool IsBeginning(std::string_view bytes) {
  if (bytes.size() >= kLongestDeclaration) return true;
  if (bytes.size() < 4) return false;
  RawEncoding encoding;
  DetectUnits(bytes, encoding);
  const std::string text = Beginning(bytes, encoding);
  const std::size_t begun = std::min(text.size(), kOpening.size());
  return text.compare(0, begun, kOpening, 0, begun) != 0 || text.find("?>") != std::string::npos;
}

RawEncoding EncodingOf(std::string_view bytes) {
  RawEncoding encoding;
  DetectUnits(bytes, encoding);
  const std::string text = Beginning(bytes, encoding);
  if (text.starts_with(kOpening) && text.find("?>") == std::string::npos) {
    encoding.problem = fmt::format("its XML declaration does not end within {} characters",
                                   kLongestDeclaration / encoding.unit);
    return encoding;
  }
  const std::string declared = DeclaredEncoding(text);
  encoding.utf8 = declared.empty() && encoding.exact && encoding.unit == 1;
  if (declared.empty()) return encoding;
  std::string name = declared;
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return 'a' <= c && c <= 'z' ? static_cast<char>(c - 32) : c; });
  const bool exact = !encoding.ebcdic && (IsExact(name) || IsAnyWide(name));
  const bool belied = encoding.unit > 1 ? !IsWide(name, encoding.unit, encoding.big_endian)
                                        : bytes.starts_with(kByteOrderMark) && !exact;
  if (belied) {
    const std::string real =
        encoding.unit == 1 ? "UTF-8" : fmt::format("UTF-{}", 8 * encoding.unit);
    encoding.problem =
        fmt::format("it declares the encoding {}, but its bytes are those of {}{}", declared, real,
                    encoding.unit == 1    ? ""
                    : encoding.big_endian ? ", high bytes first"
                                          : ", low bytes first");
    return encoding;
  }
  encoding.utf8 = encoding.unit == 1 && exact && name.starts_with("UTF");
  if (encoding.unit > 1 || exact) return encoding;
  encoding.exact = false;
  if (ProbeSigns(declared, encoding.ebcdic) == Probe::kHidden) {
    encoding.problem = fmt::format(
        "markup cannot be recognised in the encoding {} that it declares; write it in UTF-8",
        declared);
  }
  return encoding;
}

}  // namespace svmscore
