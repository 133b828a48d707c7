// Who frees what, and when. The faults that these tests are for show under the address sanitizer.
#include <gtest/gtest.h>

#include <cstdint>

#include "host/ss_exception.h"
#include "tests/translator/documents.h"
#include "tests/translator/reading.h"

namespace svmscore_test {
namespace {

using MCZandor_850::ScoreModel;
using MCZandor_850::SSException;
using MCZandor_850::SVMTranslator;
using svmscore::PmmlDocument;

std::unique_ptr<ScoreModel> Translate(SVMTranslator& translator, const std::string& text) {
  const PmmlDocument document = PmmlDocument::FromText(text, "test.pmml");
  return std::unique_ptr<ScoreModel>(translator.ParseFromTree(document.Dom(), "UTF-8"));
}

TEST(OwnershipTest, ModelAndTranslatorOutliveEachOther) {
  auto translator = std::make_unique<SVMTranslator>();
  std::unique_ptr<ScoreModel> model = Translate(*translator, Classification());
  translator.reset();
  ASSERT_NE(model->GetTargetVar(), nullptr);
  EXPECT_EQ(model->GetTargetVar()->GetName(), "cls");
  EXPECT_EQ(model->GetModelType(), 29);
}

TEST(OwnershipTest, ADocumentWithoutADictionaryMeetsTheLastOne) {
  SVMTranslator translator;
  Translate(translator, Classification()).reset();
  const std::string targets = R"($&<Targets><Target field="cls" optype="categorical"/></Targets>)";
  const std::string second = Edit(Edit(Classification(), "<DataDictionary>.*</DataDictionary>", ""),
                                  "</MiningSchema>", targets);
  EXPECT_THROW(Translate(translator, second), SSException);
  EXPECT_NE(Translate(translator, Classification()), nullptr);
}

// A Targets element that cannot be read shows whether it was: only with a dictionary at hand.
TEST(OwnershipTest, ADictionaryThatCannotBeReadLeavesNone) {
  const std::string without =
      Edit(Edit(Classification(), "<DataDictionary>.*</DataDictionary>", ""), "</MiningSchema>",
           R"($&<Targets><Target field="cls" optype="broken"/></Targets>)");
  const std::string unreadable = Edit(Classification(), "dataType=\"double\"", "dataType='odd'");
  const auto code_of = [](SVMTranslator& translator, const std::string& text) {
    try {
      Translate(translator, text);
      return 0;
    } catch (const SSException& error) {
      return error.GetErrorCode();
    }
  };
  SVMTranslator translator;
  EXPECT_EQ(code_of(translator, Classification()), 0);
  EXPECT_EQ(code_of(translator, without), 260153) << "read with the dictionary before";
  EXPECT_EQ(code_of(translator, unreadable), 260153);
  EXPECT_EQ(code_of(translator, without), 260221) << "not read, and the model has no target";
}

TEST(OwnershipTest, ManyInstancesAndMachines) {
  constexpr int kCount = 20000;
  std::string instances;
  std::string vectors;
  std::string coefficients;
  for (int i = 0; i < kCount; ++i) {
    const std::string number = std::to_string(i);
    instances += "<VectorInstance id='v" + number +
                 "'><REAL-SparseArray><Indices>1 2</Indices><REAL-Entries>" + number +
                 " 1</REAL-Entries></REAL-SparseArray></VectorInstance>";
    vectors += "<SupportVector vectorId='v" + number + "'/>";
    coefficients += "<Coefficient value='" + number + "'/>";
  }
  std::string text = Classification();
  text.insert(text.find("</VectorDictionary>"), instances);
  text.insert(text.find("</SupportVectors>"), vectors);
  text.insert(text.find("</Coefficients>"), coefficients);
  Reading reading(text);
  ASSERT_EQ(reading.Machine().coefficients.size(), kCount + 2u);
  EXPECT_EQ(reading.Machine().coefficients.back(), kCount - 1);
  EXPECT_EQ(reading.Machine().support_vectors.back()->values.front(), kCount - 1);
}

// A generator of its own, so that every run spoils the same documents.
class Random {
 public:
  std::size_t Below(std::size_t bound) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::size_t>(state_ >> 33) % bound;
  }

 private:
  std::uint64_t state_ = 1;
};

// Takes an element, an attribute or a value away, doubles an element, or garbles a value.
std::string Spoil(std::string text, Random& random) {
  const std::size_t at = random.Below(text.size());
  const bool markup = random.Below(2) == 0;
  const std::size_t begin = text.find(markup ? '<' : '"', at);
  if (begin == std::string::npos) return text;
  const std::size_t end = text.find(markup ? '>' : '"', begin + 1);
  if (end == std::string::npos) return text;
  if (!markup) {
    static constexpr const char* kValues[] = {"",     "NaN", "-1",  "1e999", "0x1p3",
                                              "true", "no",  "red", "2.1",   "\xc3\xa9"};
    return text.replace(begin + 1, end - begin - 1, kValues[random.Below(std::size(kValues))]);
  }
  const std::string tag = text.substr(begin, end - begin + 1);
  if (random.Below(2) == 0) return text.insert(begin, tag);
  const std::size_t space = tag.find(' ');
  if (space == std::string::npos) return text.erase(begin, tag.size());
  const std::size_t close = tag.find('"', tag.find('"') + 1);
  return text.erase(begin + space, close + 1 - space);
}

TEST(OwnershipTest, SpoiltDocumentsEndInAModelOrAnException) {
  const std::string bases[] = {Classification(), Regression(),
                               WithExtension(Classification(), kProbability)};
  Random random;
  SVMTranslator shared;
  int translated = 0;
  int refused = 0;
  int not_xml = 0;
  for (int i = 0; refused < 1000; ++i) {
    ASSERT_LT(i, 100000);
    std::string text = bases[random.Below(std::size(bases))];
    for (std::size_t n = 1 + random.Below(3); n > 0; --n) text = Spoil(std::move(text), random);
    SVMTranslator own;
    try {
      Translate(i % 2 == 0 ? shared : own, text);
      ++translated;
    } catch (const SSException& error) {
      ++(error.GetErrorCode() == 260302 ? not_xml : refused);
    }
  }
  EXPECT_GT(translated, 100);
  EXPECT_GT(not_xml, 100);
}

}  // namespace
}  // namespace svmscore_test
