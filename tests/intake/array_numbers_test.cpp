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

std::string VectorOf(const std::string& id, const std::string& content) {
  return "<VectorInstance id='" + id + "'>" + content + "</VectorInstance>";
}

std::string DenseArray(const std::string& text,
                       const std::string& attributes = "n='2' type='real'") {
  return "<Array " + attributes + ">" + text + "</Array>";
}

std::string SparseArray(const std::string& indices, const std::string& entries,
                        const std::string& attributes = "n='2'") {
  return "<REAL-SparseArray " + attributes + "><Indices>" + indices + "</Indices><REAL-Entries>" +
         entries + "</REAL-Entries></REAL-SparseArray>";
}

std::string DocumentWith(const std::string& array) {
  Parts parts;
  parts.vectors = VectorOf("a", array) + "\n" + VectorOf("b", SparseArray("2", "0.1"));
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
    {DenseArray("0.25 -1.5"), true},
    {DenseArray(" 1e300\n\t-0 "), true},
    {DenseArray("1234567890.12345678 5e-324"), true},
    {DenseArray("0.25 -1.5", "n='3' type='string'"), true},
    {DenseArray("0.25"), true},  // refused
    {DenseArray("1e-400 1E005"), true},
    {DenseArray("0.25 1e400"), false},
    {DenseArray("INF NaN"), false},
    {DenseArray("+1 2"), true},
    {DenseArray("1,5 2"), false},
    {DenseArray("0x10 1e"), false},
    {DenseArray("1 2\xC2\xA0"), false},
    {DenseArray("1 <!-- 2 --> 2"), false},
    {DenseArray("1 <?two 2?>2"), false},
    {DenseArray("<![CDATA[1 2]]>"), false},
    {DenseArray("1 <Extension/> 2"), false},
    {DenseArray("1 2<Array>3</Array>4"), false},
    {DenseArray(""), false},
    {SparseArray("1 2", "0.25 -1.5"), true},
    {SparseArray("1 2", "0.25 -1.5", "n='2' defaultValue='7'"), true},
    {SparseArray("2", "0.25", "n='2' defaultValue='7'"), true},
    {SparseArray("2 1", "0.25 -1.5"), true},
    {SparseArray("2 2", "0.25 -1.5"), true},
    {SparseArray("1 3", "0.25 -1.5"), true},
    {SparseArray("01 1.0", "0.25 -1.5"), true},
    {SparseArray("0 99999999999", "0.25 -1.5"), true},
    {SparseArray("1 2", "0.25"), true},
    {SparseArray("1 2", "0.25 x"), false},
    {SparseArray("1 2", "0.25 1<INT-Entries>2</INT-Entries>3"), false},
    {SparseArray("", ""), false},
    {"<INT-SparseArray n='2'><Indices>1 2</Indices><INT-Entries>3 4</INT-Entries>"
     "</INT-SparseArray>",
     false},
    {DenseArray("1 2") + SparseArray("1", "3"), true},
};

TEST(ArrayNumbers, AreReadAsTheirTextsAre) {
  for (const Form& form : kForms) {
    const std::string text = DocumentWith(form.array);
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

TEST(ArrayNumbers, StayPartOfTheTextAroundTheirVector) {
  Parts parts;
  parts.local =
      "<LocalTransformations><DerivedField name='d' optype='continuous' "
      "dataType='double'><Constant>"
      "1" +
      VectorOf("c", DenseArray("2")) + "3</Constant></DerivedField></LocalTransformations>";
  parts.positions = "<FieldRef field='d'/><FieldRef field='y'/>";
  // 123: 12 and 3 would not be a constant.
  const std::string told = Told(parts.Text(), LoadChecks::kRefuse, Arrays::kAsNumbers);
  EXPECT_EQ(told, Told(parts.Text(), LoadChecks::kRefuse, Arrays::kAsTexts));
  EXPECT_NE(told.find("End of SupportVectorMachineModel"), std::string::npos) << told;
}

TEST(ArrayNumbers, ComeBackAsTextsForReadersThatExpectThem) {
  const std::string text = DocumentWith(DenseArray("0.25 -1.5"));
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
  const std::string text = DocumentWith(DenseArray("0.25 -1.5"));
  for (const Arrays arrays : {Arrays::kAsTexts, Arrays::kAsNumbers}) {
    for (const std::uint64_t most : {2U, 3U}) {
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
