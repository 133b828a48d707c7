// Texts from elsewhere on a page.
#include <gmock/gmock.h>

#include "app/report/html_text.h"
#include "app/report/page_parts.h"
#include "app/report/svg_picture.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ReportHtml, NothingFromElsewhereBecomesMarkup) {
  const struct {
    std::string text;
    std::string html;
  } cases[] = {{"<script>alert(1)</script>", "&lt;script&gt;alert(1)&lt;/script&gt;"},
               {"\" onload='x' &amp;", "&quot; onload=&#39;x&#39; &amp;amp;"},
               {"]]>", "]]&gt;"},
               {"a\nb\tc\x01", "a\\nb\\tc\\x01"},
               {"\xE2\x80\xAE"
                "abc",
                "\\u202Eabc"},
               {"\xFF\xC3", "\\xFF\\xC3"},
               {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
               {"\xD7\x90\xD7\x91", "\xD7\x90\xD7\x91"}};
  for (const auto& [text, html] : cases) {
    EXPECT_EQ(Escaped(text), html);
    EXPECT_EQ(Name(text), "<bdi>" + html + "</bdi>");
    EXPECT_EQ(Brief(text, 80), html);
  }
}

TEST(ReportHtml, LongNamesAreShortenedAndWholeInTheirTitles) {
  const std::string name = std::string(100, 'a') + "\"<" + std::string(100, 'b');
  EXPECT_EQ(Name(name),
            "<bdi title=\"" + Escaped(name) + "\">" + Name(name).substr(Name(name).find('>') + 1));
  EXPECT_THAT(Name(name), Not(HasSubstr("\"<")));
  EXPECT_LT(Name(std::string(1000000, '&')).size(), 5 * kTitleShown + 1000);
  EXPECT_LT(Name(std::string(1000000, '&'), 400).size(), 5 * (kTitleShown + 400) + 1000);
  EXPECT_THAT(Name(std::string(450, 'a') + "\u6F22" + std::string(450, 'b')),
              Not(HasSubstr("\\x")));
  EXPECT_EQ(Brief("species", 8), "species");
  EXPECT_EQ(Brief("speciesspecies", 8), "specie\u2026");
  // Wide characters take more room, and none is cut apart.
  EXPECT_EQ(Brief("\u6F22\u5B57\u6F22\u5B57", 6), "\u6F22\u5B57\u2026");
  EXPECT_LT(Brief(std::string(40, 'W'), 20).size(), Brief(std::string(40, 'n'), 20).size());
  EXPECT_LT(Brief(std::string(1000000, '<'), 10).size(), 60U);
}

TEST(ReportHtml, NumbersReadAsPeopleWriteThem) {
  EXPECT_EQ(Number(-0.12345), "\u22120.1235");
  EXPECT_EQ(Number(-0.0), "0");
  EXPECT_EQ(Number(2.2250738585072014e-308), "0");
  EXPECT_EQ(Number(1e-7), "1e\u221207");
  EXPECT_EQ(Fixed(-0.001, 2), "0.00");
  EXPECT_EQ(Percent(0.9412), "94.1\u00A0%");
  EXPECT_EQ(Count(9999), "9999");
  EXPECT_EQ(Count(10000), "10\u202F000");
  EXPECT_EQ(Count(123456789), "123\u202F456\u202F789");
  EXPECT_EQ(Counted(1, "case"), "1 case");
  for (const std::uint64_t count : {0U, 999U, 1000U, 9949U, 9950U, 99999U, 999499U, 999500U}) {
    EXPECT_LE(ShortCount(count).size(), 4U) << count;
  }
  EXPECT_EQ(Length(-0.04), "0");
  EXPECT_EQ(Length(12.34), "12.3");
}

TEST(ReportHtml, PicturesHaveNames) {
  SvgPicture picture(10, 20, "A & B", "what \"it\" shows");
  picture.Text({1, 2}, Escaped("<x>"), "tick", Anchor::kEnd);
  const std::string svg = std::move(picture).Finish();
  EXPECT_THAT(svg, HasSubstr("role=\"img\" aria-label=\"A &amp; B. what &quot;it&quot; shows\""));
  EXPECT_THAT(svg, HasSubstr("<title>A &amp; B</title><desc>what &quot;it&quot; shows</desc>"));
  EXPECT_THAT(svg, HasSubstr("text-anchor=\"end\">&lt;x&gt;</text>"));
}

TEST(ReportHtml, ColumnsThatSayNothingAreLeftOut) {
  const std::string html = Table(
      {"n", "c", {"A", "B", "C"}, {false, true, true}, {{"1", kDash, "2"}, {"3", kDash, kDash}}});
  EXPECT_THAT(html, Not(HasSubstr(">B<")));
  EXPECT_THAT(html, HasSubstr("<th scope=\"col\" class=\"number\">C</th>"));
}

}  // namespace
}  // namespace svmscore::app
