// Documents that keep the numbers of arrays in place of their texts, beside those that keep texts.
#include <sstream>

#include <gtest/gtest.h>

#include "host/xml/array_numbers.h"
#include "tests/intake/document_parts.h"

namespace svmscore_test {
namespace {

using svmscore::ArrayNumbers;
using svmscore::Arrays;
using svmscore::LoadChecks;
using svmscore::PmmlDocument;

std::string Instance(const std::string& id, const std::string& content) {
  return "<VectorInstance id='" + id + "'>" + content + "</VectorInstance>";
}

std::string Dense(const std::string& text, const std::string& attributes = "n='2' type='real'") {
  return "<Array " + attributes + ">" + text + "</Array>";
}

std::string Sparse(const std::string& indices, const std::string& entries,
                   const std::string& attributes = "n='2'") {
  return "<REAL-SparseArray " + attributes + "><Indices>" + indices + "</Indices><REAL-Entries>" +
         entries + "</REAL-Entries></REAL-SparseArray>";
}

std::string With(const std::string& array) {
  Parts parts;
  parts.vectors = Instance("a", array) + "\n" + Instance("b", Sparse("2", "0.1"));
  return parts.Text();
}

// Everything that a reading tells: findings and model, or the refusal.
std::string Told(const std::string& text, LoadChecks checks, Arrays arrays) try {
  static const svmscore::Plugin plugin(SVMSCORE_PLUGIN_FILE);
  const svmscore::LoadedModel loaded = svmscore::LoadModel(
      plugin, [&] { return PmmlDocument::FromText(text, "test", {}, arrays); }, checks);
  std::ostringstream told;
  for (const svmscore::Finding& finding : loaded.findings) {
    told << finding.Name() << ' ' << finding.place.element << ':' << finding.place.line << ' '
         << finding.detail << '\n';
  }
  loaded.model->Display(told);
  return told.str();
} catch (const MCZandor_850::SSException& error) {
  return std::string(error.what()) + " in " + error.GetPlace();
}

// The element of the first vector that holds the entries.
const svmscore::Element* FirstList(const PmmlDocument& document) {
  const svmscore::Element* dictionary =
      svmscore::FindChild(svmscore::FindModelElement(document.Dom()), "VectorDictionary");
  const svmscore::Element* array =
      svmscore::FirstElement(svmscore::FindChild(dictionary, "VectorInstance"));
  const svmscore::Element* entries = svmscore::FindChild(array, "REAL-Entries");
  return entries == nullptr ? array : entries;
}

struct Form {
  std::string array;
  bool kept;  // as numbers
};

const Form kForms[] = {
    {Dense("0.25 -1.5"), true},
    {Dense(" 1e300\n\t-0 "), true},
    {Dense("1234567890.12345678 5e-324"), true},
    {Dense("0.25 -1.5", "n='3' type='string'"), true},
    {Dense("0.25"), true},  // refused
    {Dense("1e-400 1E005"), true},
    {Dense("0.25 1e400"), false},
    {Dense("INF NaN"), false},
    {Dense("+1 2"), true},
    {Dense("1,5 2"), false},
    {Dense("0x10 1e"), false},
    {Dense("1 2\xC2\xA0"), false},
    {Dense("1 <!-- 2 --> 2"), false},
    {Dense("1 <?two 2?>2"), false},
    {Dense("<![CDATA[1 2]]>"), false},
    {Dense("1 <Extension/> 2"), false},
    {Dense(""), false},
    {Sparse("1 2", "0.25 -1.5"), true},
    {Sparse("1 2", "0.25 -1.5", "n='2' defaultValue='7'"), true},
    {Sparse("2", "0.25", "n='2' defaultValue='7'"), true},
    {Sparse("2 1", "0.25 -1.5"), true},
    {Sparse("2 2", "0.25 -1.5"), true},
    {Sparse("1 3", "0.25 -1.5"), true},
    {Sparse("01 1.0", "0.25 -1.5"), true},
    {Sparse("0 99999999999", "0.25 -1.5"), true},
    {Sparse("1 2", "0.25"), true},
    {Sparse("1 2", "0.25 x"), false},
    {Sparse("", ""), false},
    {"<INT-SparseArray n='2'><Indices>1 2</Indices><INT-Entries>3 4</INT-Entries>"
     "</INT-SparseArray>",
     false},
    {Dense("1 2") + Sparse("1", "3"), true},
};

TEST(ArrayNumbers, AreReadAsTheirTextsAre) {
  for (const Form& form : kForms) {
    const std::string text = With(form.array);
    for (const LoadChecks checks :
         {LoadChecks::kRefuse, LoadChecks::kTolerate, LoadChecks::kStrict, LoadChecks::kAsIs}) {
      EXPECT_EQ(Told(text, checks, Arrays::kAsNumbers), Told(text, checks, Arrays::kAsTexts))
          << form.array;
    }
    const PmmlDocument document = PmmlDocument::FromText(text, "test", {}, Arrays::kAsNumbers);
    const svmscore::Element* list = FirstList(document);
    const ArrayNumbers* numbers = ArrayNumbers::Of(list);
    ASSERT_NE(numbers, nullptr);
    EXPECT_EQ(numbers->Find(list) != nullptr && list->getFirstChild() == nullptr, form.kept)
        << form.array;
  }
}

TEST(ArrayNumbers, ComeBackAsTextsForReadersThatExpectThem) {
  const std::string text = With(Dense("0.25 -1.5"));
  Reading reading{PmmlDocument::FromText(text, "test", {}, Arrays::kAsNumbers), {}};
  reading.findings = MakeReadable(reading.document, svmscore::IntakeMode::kTolerate);
  const svmscore::Element* list = FirstList(reading.document);
  ArrayNumbers::Of(list)->PutBackAll();
  EXPECT_EQ(ArrayNumbers::Of(list)->Find(list), nullptr);
  EXPECT_EQ(reading.Show("VectorInstance"),
            "<VectorInstance id='a'><REAL-SparseArray n='2'><Indices>1 2 </Indices>"
            "<REAL-Entries>0.25 -1.5 </REAL-Entries></REAL-SparseArray></VectorInstance>");
  EXPECT_EQ(reading.Show("VectorInstance", 1),
            "<VectorInstance id='b'><REAL-SparseArray n='2'><Indices>2 </Indices>"
            "<REAL-Entries>0.1 </REAL-Entries></REAL-SparseArray></VectorInstance>");
}

TEST(ArrayNumbers, CountTowardsTheLimitOfEntries) {
  const std::string text = With(Dense("0.25 -1.5"));
  for (const Arrays arrays : {Arrays::kAsTexts, Arrays::kAsNumbers}) {
    for (const std::uint64_t most : {2, 3}) {
      svmscore::Limits limits;
      limits.entries = most;
      const svmscore::Plugin plugin(SVMSCORE_PLUGIN_FILE);
      const auto load = [&] {
        svmscore::LoadModel(plugin, PmmlDocument::FromText(text, "test", limits, arrays));
      };
      if (most == 3) {
        EXPECT_NO_THROW(load());
      } else {
        EXPECT_THROW(load(), MCZandor_850::SSException);
      }
    }
  }
}

}  // namespace
}  // namespace svmscore_test
