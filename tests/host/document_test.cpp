#include "host/xml/document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>

#include "host/model/ss_exception.h"
#include "host/xml/elements.h"
#include "host/xml/transcoder.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;
using testing::StartsWith;

// The code, place and sentence with which reading fails.
template <typename Read>
std::string Failure(Read read) {
  try {
    read();
  } catch (const SSException& error) {
    return std::to_string(error.GetErrorCode()) + " at " + error.GetPlace() + ": " + error.what();
  }
  return "no error";
}

TEST(PmmlDocument, SaysWhereItCannotBeRead) {
  const auto of_text = [](const std::string& text) {
    return Failure([&text] { PmmlDocument::FromText(text, "test.pmml"); });
  };
  EXPECT_THAT(of_text("<PMML>\n<a>\n</b></PMML>"), StartsWith("260302 at line 3, column 3: "));
  for (const std::string& text : {std::string(), std::string("\xff\xfe\x01"),
                                  std::string("<a>\0</a>", 8), std::string("<a/>\xe2\x82"),
                                  std::string("<a/>\0<b", 7), std::string("<\0a\0/\0>\0\n", 9)}) {
    EXPECT_THAT(of_text(text), StartsWith("260302 at "));
    EXPECT_THAT(Failure([&text] {
                  std::istringstream stream(text);
                  PmmlDocument::FromStream(stream, "test.pmml");
                }),
                StartsWith("260302 at "));
  }
  for (const char* file : {"/no/such/file.pmml", "/tmp"}) {
    const std::string failure = Failure([file] { PmmlDocument::FromFile(file); });
    EXPECT_THAT(failure, testing::AllOf(StartsWith("260301 at "), testing::HasSubstr(file)));
  }
  EXPECT_EQ(PmmlDocument::FromText("<PMML/>", "caf\xe9.pmml").Name(), "caf\xe9.pmml");
}

TEST(PmmlDocument, KnowsTheLineOfEveryElement) {
  const PmmlDocument document =
      PmmlDocument::FromText("<PMML>\n <a/>\n <b\n  x='1'>\n  <c/></b></PMML>", "t");
  const auto* root = document.Dom()->getDocumentElement();
  EXPECT_EQ(document.LineOf(root), 1);
  EXPECT_EQ(document.LineOf(FindChild(root, "a")), 2);
  EXPECT_EQ(document.LineOf(FindChild(root, "b")), 4);
  EXPECT_EQ(document.LineOf(FindChild(FindChild(root, "b"), "c")), 5);
  EXPECT_EQ(document.LineOf(nullptr), 0);
}

TEST(Transcoding, KeepsEveryCharacter) {
  const std::string text = "na\xc3\xafve \xe2\x82\xac \xf0\x9f\x8e\xb2 plain";
  EXPECT_EQ(ToUtf8(ToUtf16(text).c_str()), text);
  const PmmlDocument document = PmmlDocument::FromText(
      "<a>" + text + "<!-- gap --><![CDATA[<x>]]>&amp;<b>inner</b></a>", "t");
  EXPECT_EQ(ElementText(document.Dom()->getDocumentElement()), text + "<x>&inner");
}

}  // namespace
}  // namespace svmscore
