#include "host/dom_elem_utility.h"

#include <limits>

#include <gtest/gtest.h>

#include "host/message_codes.h"
#include "host/pmml/document.h"
#include "host/ss_exception.h"

namespace MCZandor_850 {
namespace {

namespace code = svmscore::code;

class DOMElemUtilityTest : public testing::Test {
 protected:
  template <typename Call>
  std::vector<std::string> PartsOf(int expected, Call call) {
    try {
      call();
    } catch (const SSException& error) {
      EXPECT_EQ(error.GetErrorCode(), expected);
      return error.GetMessageParts();
    }
    ADD_FAILURE() << "no error";
    return {};
  }

  svmscore::PmmlDocument document_ = svmscore::PmmlDocument::FromText(
      "<r a='x' n='2.5' i='99999999999' e=''>t<c k='1'/><d><c k='2'/></d><c k='3'/></r>", "t");
  PMMLTranslator translator_{""};
  DOMElemUtility utility_{&translator_, nullptr};
  xercesc::DOMElement* root_ = document_.Dom()->getDocumentElement();
};

TEST_F(DOMElemUtilityTest, AbsentOptionalItemsHaveFixedValues) {
  EXPECT_EQ(utility_.GetAttributeToString(root_, "z", false), "");
  EXPECT_EQ(utility_.GetAttributeToDouble(root_, "z", false), -1.0);
  EXPECT_EQ(utility_.GetAttributeToInt(root_, "z", false), -1);
  EXPECT_EQ(utility_.GetChildElemByName(root_, "z", false), nullptr);
  EXPECT_EQ(utility_.GetNodeListLength(root_, "z", false), 0U);
  EXPECT_EQ(utility_.GetElemFromNodeList(root_, "c", 9, false), nullptr);
  EXPECT_EQ(utility_.GetAttributeToString(nullptr, "a", false), "");
}

TEST_F(DOMElemUtilityTest, AbsentRequiredItemsAreThrown) {
  using Parts = std::vector<std::string>;
  EXPECT_EQ(
      PartsOf(code::kAttributeMissing, [&] { utility_.GetAttributeToString(root_, "z", true); }),
      (Parts{"z", "r"}));
  EXPECT_EQ(PartsOf(code::kChildMissing, [&] { utility_.GetChildElemByName(root_, "z", true); }),
            (Parts{"z", "r"}));
  EXPECT_EQ(PartsOf(code::kChildMissing, [&] { utility_.GetNodeListLength(root_, "z", true); }),
            (Parts{"z", "r"}));
  EXPECT_EQ(PartsOf(code::kBadValue, [&] { utility_.GetAttributeToDouble(root_, "a", false); }),
            (Parts{"x", "a", "r"}));
  EXPECT_EQ(PartsOf(code::kBadValue, [&] { utility_.GetAttributeToDouble(root_, "e", false); }),
            (Parts{"", "e", "r"}));
}

TEST_F(DOMElemUtilityTest, ChildrenAreCountedAndDescendantsAreFound) {
  EXPECT_EQ(utility_.GetAttributeToString(root_, "e", true), "");
  EXPECT_EQ(utility_.GetAttributeToInt(root_, "i", true), std::numeric_limits<int>::max());
  EXPECT_EQ(utility_.GetAttributeToInt(root_, "n", true), 2);
  EXPECT_EQ(utility_.GetNodeListLength(root_, "c", true), 2U);
  auto* second = utility_.GetElemFromNodeList(root_, "c", 1, true);
  EXPECT_EQ(utility_.GetAttributeToString(second, "k", true), "2");
  EXPECT_EQ(translator_.GetLastElement(), second);
}

TEST_F(DOMElemUtilityTest, NamesCompareInFull) {
  EXPECT_TRUE(BaseTranslator::IsEqual(u"abc", "abc"));
  EXPECT_FALSE(BaseTranslator::IsEqual(u"ab", "abc"));
  EXPECT_FALSE(BaseTranslator::IsEqual(u"abcd", "abc"));
  EXPECT_FALSE(BaseTranslator::IsEqual(nullptr, ""));
  EXPECT_TRUE(BaseTranslator::IsEqual(u"n\u00e4", "n\xc3\xa4"));
  EXPECT_EQ(BaseTranslator::VerifyDouble(u" 0.5 "), 0.5);
  EXPECT_THROW(BaseTranslator::VerifyDouble(u"half"), SSException);
}

}  // namespace
}  // namespace MCZandor_850
