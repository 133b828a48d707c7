// Which encodings are read, and which are refused because their markup cannot be counted.
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/model/ss_exception.h"
#include "host/xml/document.h"
#include "host/xml/transcoder.h"
#include "tests/host/encoded_text.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;
using testing::HasSubstr;

// The text of the root, or the refusal.
std::string TextOf(const std::string& document) try {
  std::istringstream stream(document);
  const PmmlDocument read = PmmlDocument::FromStream(stream, "test.pmml");
  const PmmlDocument same = PmmlDocument::FromText(document, "test.pmml");
  EXPECT_EQ(ElementText(same.Dom()->getDocumentElement()),
            ElementText(read.Dom()->getDocumentElement()));
  return ElementText(read.Dom()->getDocumentElement());
} catch (const SSException& error) {
  return std::to_string(error.GetErrorCode()) + ' ' + error.what();
}

TEST(Encodings, AreReadAsDeclared) {
  const std::string blanks(7000, ' ');
  for (const char* encoding :
       {"UTF-8", "utf-8", "ISO-8859-1", "windows-1252", "IBM850", "UTF-16", "UTF-16LE", "UTF-16BE",
        "UTF-32LE", "UCS-4BE", "IBM037", "IBM500", "IBM1047", "CP1140"}) {
    const std::string name = encoding == std::string("UCS-4BE") ? "ISO-10646-UCS-4" : encoding;
    const std::string text = Declaring(name, "<a b='&lt;'>na\u00EFf +ADw- ~{<![CDATA[<b>]]></a>");
    EXPECT_EQ(TextOf(Encoded(encoding, text)), "na\u00EFf +ADw- ~{<b>") << encoding;
  }
  for (const char* encoding : {"Shift_JIS", "GB18030", "Big5", "EUC-JP", "GBK", "EUC-KR"}) {
    EXPECT_EQ(TextOf(InEncoding(encoding, "<a>\u4E2D<![CDATA[<b>\u6587]]></a>")), "\u4E2D<b>\u6587")
        << encoding;
  }
  EXPECT_EQ(TextOf("\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a>\u00EF</a>"), "\u00EF");
  EXPECT_EQ(TextOf(Declaring("UTF-16", "<a>\u00EF</a>")), "\u00EF");
  EXPECT_EQ(TextOf("<?xml version='1.0'" + blanks + "encoding = \"ISO-8859-1\" ?><a>\xEF</a>"),
            "\u00EF");
  EXPECT_EQ(TextOf("<?xml-stylesheet href='encoding'?><a>b</a>"), "b");
}

TEST(Encodings, ThatHideMarkupOrContradictTheirBytesAreRefused) {
  const std::string hidden =
      "260302 the document is not well-formed XML: markup cannot be recognised in "
      "the encoding ";
  const std::string contradicted =
      "260302 the document is not well-formed XML: it declares the encoding ";
  for (const char* encoding :
       {"UTF-7", "HZ", "IMAP-mailbox-name", "IBM037", "UTF16_PlatformEndian", "UTF-16,version=1"}) {
    EXPECT_THAT(TextOf(Declaring(encoding, "<a/>")), HasSubstr(hidden + encoding)) << encoding;
  }
  for (const char* encoding : {"ISO-8859-1", "UTF-8", "IBM930", "UTF-7"}) {
    EXPECT_THAT(TextOf(Encoded("IBM037", Declaring(encoding, "<a/>"))),
                HasSubstr(hidden + encoding))
        << encoding;
  }
  const std::pair<const char*, const char*> pairs[] = {
      {"UTF-16LE", "UTF-8"}, {"UTF-16LE", "UTF-16BE"}, {"UTF-16BE", "UTF-16LE"},
      {"UTF-16LE", "UTF-7"}, {"UTF-16BE", "UTF-32"},   {"UTF-32LE", "UTF-16"},
      {"UTF-32BE", "UTF-8"}};
  for (const auto& [real, declared] : pairs) {
    EXPECT_THAT(TextOf(Encoded(real, Declaring(declared, "<a/>"))),
                HasSubstr(contradicted + declared + ", but its bytes are those of " +
                          std::string(real).substr(0, 6)));
  }
  EXPECT_THAT(TextOf("\xEF\xBB\xBF" + Declaring("UTF-7", "<a/>")),
              HasSubstr(contradicted + "UTF-7"));
  EXPECT_THAT(TextOf("<?xml version='1.0'" + std::string(9000, ' ') + "?><a/>"),
              HasSubstr("its XML declaration does not end within 8192 characters"));
  EXPECT_THAT(TextOf(InEncoding("ISO-2022-JP", "<a>\u4E2D</a>")), HasSubstr("a control character"));
  EXPECT_THAT(TextOf(InEncoding("IBM037", "<a>\x0E</a>")), HasSubstr("a control character"));
  EXPECT_THAT(TextOf(Declaring("SCSU", "<a>\x0F\x01</a>")), HasSubstr("a control character"));
  EXPECT_THAT(TextOf(Declaring("no-such-name", "<a/>")), HasSubstr("NO-SUCH-NAME"));
}

}  // namespace
}  // namespace svmscore
