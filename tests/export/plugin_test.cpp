// The plug-in as a host sees it: loaded from its file, with two exported names.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/model/ss_exception.h"
#include "host/translate/translator.h"
#include "host/xml/document.h"
#include "svm/constants/messages.h"

namespace {

using MCZandor_850::BaseTranslator;
namespace messages = MCZandor_850::SVMModelMsgTags;

class PluginTest : public testing::Test {
 protected:
  void SetUp() override {
    void* library = dlopen(SVMSCORE_PLUGIN_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    give_ = reinterpret_cast<MCZandor_850::GiveMyTranslatorFunction>(
        dlsym(library, "GiveMyTranslator"));
    dll_main_ = reinterpret_cast<int (*)()>(dlsym(library, "DllMain"));
    ASSERT_NE(give_, nullptr);
    ASSERT_NE(dll_main_, nullptr);
  }

  MCZandor_850::GiveMyTranslatorFunction give_ = nullptr;
  int (*dll_main_)() = nullptr;
};

TEST_F(PluginTest, GivesAFreshTranslatorEachTime) {
  EXPECT_EQ(dll_main_(), 1);
  std::unique_ptr<BaseTranslator> one(give_());
  std::unique_ptr<BaseTranslator> two(give_());
  EXPECT_NE(one, nullptr);
  EXPECT_NE(one, two);
  EXPECT_EQ(dll_main_(), 1);
}

TEST_F(PluginTest, ItsExceptionsAreTheHosts) {
  const auto document = svmscore::PmmlDocument::FromText(
      "<PMML version='4.1'><SupportVectorMachineModel functionName='x'/></PMML>", "test.pmml");
  std::unique_ptr<BaseTranslator> translator(give_());
  try {
    translator->ParseFromTree(document.Dom(), "UTF-8");
    FAIL() << "translated";
  } catch (const MCZandor_850::SSException& error) {
    EXPECT_EQ(error.GetErrorCode(), 260153);
    EXPECT_NE(std::string(error.what()), "");
  }
}

// The blanks and the wording are intended.
TEST(MessagesTest, TextsAreExactlyThese) {
  const std::string classification = "functionName could be either classification" +
                                     std::string(12, ' ') +
                                     "or regression depending on the SVM type";
  const std::string kernel =
      "Can't find any type of kernel for" + std::string(30, ' ') + "Support Vector Machine Model";
  EXPECT_EQ(messages::E_VALIDATION_FUNCTIONNAME, classification);
  EXPECT_EQ(classification.size(), 94u);
  EXPECT_EQ(messages::E_INVALID_KERNELTYPE, kernel);
  EXPECT_EQ(kernel.size(), 91u);
  EXPECT_EQ(messages::E_INVALID_SVMMODEL, "Invalid a Support Vector Machine Model");
  EXPECT_EQ(messages::E_REQUIRED_REALARRAY_ENTRIES, "REAL-Entries is required");
  EXPECT_EQ(messages::E_REQUIRED_REALARRAY_NOTMATCH, "This sparse array is not matching.");
  EXPECT_EQ(messages::E_INVALID_FIELDREFS, "The FieldRef couldn't match the predictor variables");
}

}  // namespace
