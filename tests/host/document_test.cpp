#include "host/pmml/document.h"

#include <sstream>

#include <gtest/gtest.h>
#include <xercesc/dom/DOM.hpp>

#include "host/message_codes.h"
#include "host/pmml/elements.h"
#include "host/transcoder.h"

namespace svmscore {
namespace {

using MCZandor_850::SSException;

SSException Failure(const std::string& text) {
  try {
    PmmlDocument::FromText(text, "test.pmml");
  } catch (const SSException& error) {
    return error;
  }
  ADD_FAILURE() << "no error";
  return SSException(nullptr);
}

TEST(PmmlDocument, ParseErrorsNameLineAndColumn) {
  const SSException error = Failure("<PMML>\n<a>\n</b></PMML>");
  EXPECT_EQ(error.GetErrorCode(), code::kNotWellFormed);
  EXPECT_EQ(error.GetPlace(), "line 3, column 3");
  EXPECT_EQ(Failure("").GetErrorCode(), code::kNotWellFormed);
  EXPECT_EQ(Failure("\xff\xfe\x01").GetErrorCode(), code::kNotWellFormed);
  EXPECT_EQ(Failure(std::string("<a>\0</a>", 8)).GetErrorCode(), code::kNotWellFormed);
}

TEST(PmmlDocument, MissingFileIsNamed) {
  try {
    PmmlDocument::FromFile("/no/such/file.pmml");
    FAIL();
  } catch (const SSException& error) {
    EXPECT_EQ(error.GetErrorCode(), code::kFileUnreadable);
    EXPECT_NE(std::string(error.what()).find("/no/such/file.pmml"), std::string::npos);
  }
}

TEST(PmmlDocument, AFolderIsNoDocument) {
  EXPECT_THROW(PmmlDocument::FromFile("/tmp"), SSException);
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

TEST(Document, MayComeFromAFileOfAnyName) {
  EXPECT_EQ(svmscore::PmmlDocument::FromText("<PMML/>", "caf\xe9.pmml").Name(), "caf\xe9.pmml");
}

}  // namespace
}  // namespace svmscore
