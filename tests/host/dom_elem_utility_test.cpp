#include "host/translate/dom_elem_utility.h"

#include <limits>

#include <gtest/gtest.h>

#include "host/model/ss_exception.h"
#include "host/xml/document.h"

namespace MCZandor_850 {
namespace {

// The code of the exception, and its parts.
template <typename Call>
std::string Failure(Call call) {
  try {
    call();
  } catch (const SSException& error) {
    std::string text = std::to_string(error.GetErrorCode());
    for (const std::string& part : error.GetMessageParts()) text += ',' + part;
    return text;
  }
  return "no error";
}

TEST(DOMElemUtility, FindsOrMissesItemsAsAsked) {
  const auto document = svmscore::PmmlDocument::FromText(
      "<r a='x' n='2.5' i='99999999999' e=''>t<c k='1'/><d><c k='2'/></d><c k='3'/></r>", "t");
  PMMLTranslator translator("");
  DOMElemUtility utility(&translator, nullptr);
  xercesc::DOMElement* root = document.Dom()->getDocumentElement();
  EXPECT_EQ(utility.GetAttributeToString(root, "z", false), "");
  EXPECT_EQ(utility.GetAttributeToDouble(root, "z", false), -1.0);
  EXPECT_EQ(utility.GetAttributeToInt(root, "z", false), -1);
  EXPECT_EQ(utility.GetChildElemByName(root, "z", false), nullptr);
  EXPECT_EQ(utility.GetNodeListLength(root, "z", false), 0U);
  EXPECT_EQ(utility.GetElemFromNodeList(root, "c", 9, false), nullptr);
  EXPECT_EQ(utility.GetAttributeToString(nullptr, "a", false), "");

  EXPECT_EQ(Failure([&] { utility.GetAttributeToString(root, "z", true); }), "260120,z,r");
  EXPECT_EQ(Failure([&] { utility.GetChildElemByName(root, "z", true); }), "260115,z,r");
  EXPECT_EQ(Failure([&] { utility.GetNodeListLength(root, "z", true); }), "260115,z,r");
  EXPECT_EQ(Failure([&] { utility.GetAttributeToDouble(root, "a", false); }), "260153,x,a,r");
  EXPECT_EQ(Failure([&] { utility.GetAttributeToDouble(root, "e", false); }), "260153,,e,r");

  EXPECT_EQ(utility.GetAttributeToString(root, "e", true), "");
  EXPECT_EQ(utility.GetAttributeToInt(root, "i", true), std::numeric_limits<int>::max());
  EXPECT_EQ(utility.GetAttributeToInt(root, "n", true), 2);
  // Children are counted, and descendants are found.
  EXPECT_EQ(utility.GetNodeListLength(root, "c", true), 2U);
  auto* second = utility.GetElemFromNodeList(root, "c", 1, true);
  EXPECT_EQ(utility.GetAttributeToString(second, "k", true), "2");
  EXPECT_EQ(translator.GetLastElement(), second);
}

TEST(BaseTranslator, ComparesNamesInFull) {
  EXPECT_TRUE(BaseTranslator::IsEqual(u"abc", "abc"));
  EXPECT_FALSE(BaseTranslator::IsEqual(u"ab", "abc"));
  EXPECT_FALSE(BaseTranslator::IsEqual(u"abcd", "abc"));
  EXPECT_FALSE(BaseTranslator::IsEqual(nullptr, ""));
  EXPECT_TRUE(BaseTranslator::IsEqual(u"n\u00e4", "n\xc3\xa4"));
  EXPECT_EQ(BaseTranslator::VerifyDouble(u" 0.5 "), 0.5);
  EXPECT_EQ(Failure([] { BaseTranslator::VerifyDouble(u"half"); }), "260153,half");
}

}  // namespace
}  // namespace MCZandor_850
