// What doctor finds in documents by themselves: one fault each, and nothing in sound ones.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/doctor/patients.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

struct Patient {
  std::string model;
  std::vector<Edit> edits;
  std::vector<std::string> findings;  // worst first; every one that the document has

  friend void PrintTo(const Patient& patient, std::ostream* os) {
    *os << patient.model << ": " << (patient.findings.empty() ? "sound" : patient.findings[0]);
  }
};

class Doctor : public testing::TestWithParam<Patient> {};

TEST_P(Doctor, FindsWhatIsWrongAndNothingElse) {
  const Diagnosis diagnosis = Diagnose(Edited(GetParam().model, GetParam().edits));
  EXPECT_EQ(diagnosis.findings, GetParam().findings) << diagnosis.json.dump(1);
}

const std::string kSound = Data("sound.pmml");
const std::string kIris = Example("iris/model.pmml");
const std::string kTumour = Example("tumour/model.pmml");
const std::string kDiabetes = Example("diabetes/model.pmml");

INSTANTIATE_TEST_SUITE_P(
    Sound, Doctor,
    testing::Values(Patient{kSound, {}, {}}, Patient{kIris, {}, {}}, Patient{kTumour, {}, {}},
                    Patient{kDiabetes, {}, {}},
                    Patient{Example("digits/model.pmml"), {}, {"constant-field at VectorFields"}}));

INSTANTIATE_TEST_SUITE_P(
    Reading, Doctor,
    testing::Values(
        Patient{kSound,
                {{"<RadialBasisKernelType gamma=\"0.5\"/>", ""}},
                {"refused at SupportVectorMachineModel"}},
        // The rest of a document that is refused is looked at all the same.
        Patient{kSound,
                {{"version=\"4.4\"", "version=\"5.0\""}, {"\"Male\"/></D", "\"male\"/></D"}},
                {"refused at PMML", "unlisted-category at NormDiscrete"}},
        Patient{kSound, {{"</PMML>", "<TreeModel/></PMML>"}}, {"other-model at TreeModel"}},
        Patient{kSound, {{"version=\"4.4\"", "version=\"4.3\""}}, {"reading-remark at PMML"}},
        Patient{kSound,
                {{"<REAL-SparseArray n=\"5\"><Indices>1 2 5</Indices><REAL-Entries>0.25 1 "
                  "1</REAL-Entries></REAL-SparseArray>",
                  "<Array type=\"real\" n=\"5\">0.25 1 0 0 1</Array>"}},
                {"made-readable at Array"}},
        Patient{kIris,
                {{"classificationMethod=\"OneAgainstOne\" ", ""}},
                {"guessed-reading at SupportVectorMachineModel"}},
        Patient{kSound,
                {{"numberOfFields=\"5\"", "numberOfFields=\"6\""}},
                {"count-disagrees at DataDictionary"}},
        Patient{kSound,
                {{"</SupportVectorMachine>",
                  "</SupportVectorMachine><ModelVerification><VerificationFields>"
                  "<VerificationField field=\"age\"/><VerificationField field=\"sex\"/>"
                  "<VerificationField field=\"grade\"/><VerificationField field=\"size\"/>"
                  "<VerificationField field=\"y\"/></VerificationFields><InlineTable><row><age>25"
                  "</age><sex>Male</sex><grade>B</grade><size>0.5</size><y>no</y></row>"
                  "</InlineTable></ModelVerification>"}},
                {"verification-disagrees at ModelVerification"}}));

INSTANTIATE_TEST_SUITE_P(
    Fields, Doctor,
    testing::Values(
        Patient{kSound,
                {{"\"sex\" value=\"Male\"", "\"sex\" value=\"male\""}},
                {"unlisted-category at NormDiscrete"}},
        Patient{kSound,
                {{">young</Constant>", ">Young</Constant>"}},
                {"unlisted-category at Constant"}},
        Patient{kSound,
                {{"<g>A</g>", "<g>a</g>"}},
                {"unmapped-category at MapValues", "unlisted-table-key at row"}},
        Patient{kSound, {{"<n>2</n>", ""}}, {"unmapped-category at MapValues"}},
        // With a default, a table need not list every category.
        Patient{kSound,
                {{"<g>A</g>", "<g>C</g>"}, {"\"n\" dataType", "\"n\" defaultValue=\"0\" dataType"}},
                {"unlisted-table-key at row"}},
        // Values that are not listed may come where they are taken as they are.
        Patient{kSound,
                {{"\"sex\" value=\"Male\"", "\"sex\" value=\"male\""},
                 {"<MiningField name=\"sex\"/>",
                  "<MiningField name=\"sex\" invalidValueTreatment=\"asIs\"/>"}},
                {}},
        Patient{kSound,
                {{"<MiningField name=\"sex\"/>",
                  "<MiningField name=\"sex\" usageType=\"supplementary\"/>"}},
                {"inactive-field at MiningField"}},
        Patient{kSound,
                {{"<FieldRef field=\"size\"/>", "<FieldRef field=\"age_n\"/>"}},
                {"unused-field at MiningField"}},
        Patient{kSound,
                {{"</LocalTransformations>",
                  "<DerivedField name=\"rest\" optype=\"continuous\" dataType=\"double\"><FieldRef "
                  "field=\"size\"/></DerivedField></LocalTransformations>"}},
                {"unused-derived-field at DerivedField"}},
        Patient{kSound,
                {{"1 2 1 0.5<", "1 0 1 0.5<"}, {"<Indices>1 3 5<", "<Indices>1 4 5<"}},
                {"constant-field at VectorFields"}},
        Patient{kSound,
                {{"1 2 1 0.5<", "1 2000 1 0.5<"}, {"gamma=\"0.5\"", "gamma=\"1e-6\""}},
                {"field-dominates at VectorFields"}},
        Patient{kSound,
                {{"-0.5 1 2 1", "-0.5 1.3 2 1"}, {"0.25 1 1", "0.25 -0.7 1"}},
                {"indicator-not-0-or-1 at FieldRef"}},
        Patient{kSound,
                {{"1 2 1 0.5<", "1 2 1 7<"}, {"0.25 1 1<", "0.25 1 -6<"}},
                {"vector-outside-interval at FieldRef"}}));

INSTANTIATE_TEST_SUITE_P(
    VectorsAndKernels, Doctor,
    testing::Values(
        Patient{kSound,
                {{"<Indices>1 3 5<", "<Indices>1 3<"}},
                {"refused at REAL-Entries", "vector-length at REAL-SparseArray"}},
        Patient{kSound,
                {{"numberOfVectors=\"3\"", ""},
                 {"</VectorDictionary>",
                  "<VectorInstance id=\"d\"><REAL-SparseArray n=\"5\"/></VectorInstance>"
                  "</VectorDictionary>"}},
                {"unused-vector at VectorInstance"}},
        Patient{kSound,
                {{"<RadialBasisKernelType", "<LaplaceKernelType/><RadialBasisKernelType"}},
                {"unknown-kernel at LaplaceKernelType"}},
        Patient{kSound,
                {{"gamma=\"0.5\"", "sigma=\"1\""}},
                {"kernel-parameter-misnamed at RadialBasisKernelType"}},
        Patient{kSound,
                {{"gamma=\"0.5\"", "gamma=\"0.5\" sigma=\"1\""}},
                {"unknown-kernel-attribute at RadialBasisKernelType"}},
        Patient{
            kSound, {{"gamma=\"0.5\"", ""}}, {"kernel-parameter-absent at RadialBasisKernelType"}},
        Patient{kSound,
                {{"gamma=\"0.5\"", "gamma=\"-0.5\""}},
                {"negative-gamma at RadialBasisKernelType"}},
        Patient{kSound,
                {{"<RadialBasisKernelType gamma=\"0.5\"",
                  "<PolynomialKernelType gamma=\"1\" coef0=\"1\" degree=\"2.5\""}},
                {"fractional-degree at PolynomialKernelType"}},
        Patient{kSound,
                {{"gamma=\"0.5\"", "gamma=\"5000\""}},
                {"kernel-vanishes at RadialBasisKernelType"}},
        Patient{kSound,
                {{"gamma=\"0.5\"", "gamma=\"1e-14\""}},
                {"kernel-constant at RadialBasisKernelType"}},
        Patient{kSound,
                {{"<RadialBasisKernelType gamma=\"0.5\"",
                  "<SigmoidKernelType gamma=\"1\" coef0=\"50\""}},
                {"kernel-saturates at SigmoidKernelType"}}));

INSTANTIATE_TEST_SUITE_P(
    Machines, Doctor,
    testing::Values(
        Patient{kSound,
                {{"(<Coefficient value=\")[-0-9.]*", "$010", true}},
                {"zero-machine at Coefficients"}},
        Patient{kSound,
                {{"<Coefficient value=\"-1\"/>", "<Coefficient value=\"1\"/>"}},
                {"constant-side at Coefficients", "one-signed-machine at Coefficients"}},
        Patient{kSound,
                {{"absoluteValue=\"0.1\"", "absoluteValue=\"1.01\""}},
                {"constant-side at Coefficients"}},
        // The signs of a bounded kernel: -1 is still in reach.
        Patient{kSound, {{"absoluteValue=\"0.1\"", "absoluteValue=\"0.99\""}}, {}},
        Patient{kDiabetes,
                {{"<Coefficient value=\"-", "<Coefficient value=\""}},
                {"coefficients-unbalanced at Coefficients"}},
        Patient{
            kTumour, {{"absoluteValue=\"-", "absoluteValue=\""}}, {"offset-sign at Coefficients"}},
        Patient{kTumour,
                {{"absoluteValue=\"-0.1", "absoluteValue=\"-0.9"}},
                {"offset-off at Coefficients"}},
        // A threshold may carry the offset.
        Patient{kTumour,
                {{"absoluteValue=\"-0.12310679071170864\"", "absoluteValue=\"0\""},
                 {"alternateTargetCategory=\"benign\"",
                  "alternateTargetCategory=\"benign\" threshold=\"0.12310679071170864\""}},
                {}},
        Patient{
            kTumour, {{"A=\"-", "A=\""}}, {"extension-contradicts-votes at SupportVectorMachine"}},
        Patient{Example("digits/model.pmml"),
                {{"response=\"0\" nonResponse=\"1\"", "response=\"1\" nonResponse=\"0\""}},
                {"machine-sign at SupportVectorMachine",
                 "extension-contradicts-votes at SupportVectorMachine",
                 "constant-field at VectorFields", "made-readable at SupportVectorMachine"}},
        Patient{kIris,
                {{"maxWins=\"true\"", "maxWins=\"false\""}},
                {"max-wins-inverted at SupportVectorMachineModel"}},
        Patient{kIris,
                {{"targetCategory=\"setosa\" alternateTargetCategory=\"versicolor\"",
                  "targetCategory=\"versicolor\" alternateTargetCategory=\"setosa\""}},
                {"machine-sign at SupportVectorMachine"}},
        Patient{kIris,
                {{"\"OneAgainstOne\"", "\"OneAgainstAll\""}},
                {"method-contradicts-machines at SupportVectorMachineModel"}},
        Patient{
            kIris,
            {{"\"OneAgainstOne\"", "\"OneAgainstAll\""},
             {" alternateTargetCategory=\"[a-z]*\"", "", true}},
            {"target-repeated at SupportVectorMachine", "category-never-predicted at DataField"}},
        Patient{kIris,
                {{"targetCategory=\"setosa\" alternateTargetCategory=\"virginica\"",
                  "targetCategory=\"versicolor\" alternateTargetCategory=\"setosa\" "}},
                {"pair-repeated at SupportVectorMachine"}},
        Patient{kSound,
                {{"alternateTargetCategory=\"no\"", "alternateTargetCategory=\"yes\""}},
                {"same-category-twice at SupportVectorMachine",
                 "category-never-predicted at DataField"}},
        Patient{kDiabetes,
                {{"<SupportVectorMachine>", "<SupportVectorMachine threshold=\"0.5\">"}},
                {"threshold-not-used at SupportVectorMachine"}},
        Patient{kSound,
                {{"PMML-4_4", "PMML-4_1"}, {"version=\"4.4\"", "version=\"4.1\""}},
                {"max-wins-early at SupportVectorMachineModel"}}));

TEST(Doctor, SaysWhatWhereAndWhatToDo) {
  const TemporaryFolder folder;
  const std::string model = folder.Write(
      "model.pmml", Edited(kSound, {{"\"sex\" value=\"Male\"", "\"sex\" value=\"male\""},
                                    {"numberOfVectors=\"3\"", "numberOfVectors=\"4\""}}));
  const Ran ran = RunProgram({"doctor", model});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, model + R"(: 2 findings, 1 changes scores

error unlisted-category, line 21, NormDiscrete
  "male" is no category of "sex", "Male" is
  Consequence: no valid input can have this category: its indicator is 0 for every case, or its cases are invalid.
  Remedy: spell the category as the DataDictionary does, or list it there.

warning count-disagrees, line 27, VectorDictionary
  numberOfVectors says 4, and there are 3 VectorInstance elements: what is there counts
  Consequence: what is there counts; if something was lost on the way, scores are wrong.
  Remedy: export the document anew, or correct the count.
)");
}

TEST(Doctor, TellsTheLoadersCodeAndPlace) {
  const Diagnosis diagnosis =
      Diagnose(Edited(kSound, {{"<FieldRef field=\"size\"/>", "<FieldRef field=\"sise\"/>"}}));
  EXPECT_EQ(diagnosis.json["findings"][0]["name"], "refused");
  EXPECT_EQ(diagnosis.json["findings"][0]["line"], 28);
  EXPECT_THAT(std::string(diagnosis.json["findings"][0]["what"]), HasSubstr("[260311] "));
  EXPECT_EQ(diagnosis.json["changesScores"], true);
}

TEST(Doctor, EndsWithAStatusForEachKindOfFailure) {
  const TemporaryFolder folder;
  EXPECT_EQ(RunProgram({"doctor", folder.Path("none.pmml")}).status, 3);
  EXPECT_EQ(RunProgram({"doctor", folder.Write("no.pmml", "<PMML>")}).status, 3);
  const auto cut = RunProgram({"doctor", folder.Write("cut.pmml", "<PMML>\n<Header>"), "--json"});
  EXPECT_EQ(cut.status, 3);
  const auto report = nlohmann::json::parse(cut.out);
  EXPECT_EQ(report["findings"][0]["name"], "refused") << report;
  EXPECT_EQ(report["findings"][0]["line"], 2) << report;
  EXPECT_EQ(RunProgram({"doctor", kSound, "--input", "x.csv"}).status, 2);
  EXPECT_EQ(RunProgram({"doctor"}).status, 2);
  EXPECT_EQ(RunProgram({"doctor", kSound, "--input", "none.csv", "--expected", "none.csv"}).status,
            5);
}

}  // namespace
}  // namespace svmscore::app
