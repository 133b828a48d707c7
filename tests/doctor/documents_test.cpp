// What doctor finds in documents by themselves: one fault each, and nothing in sound ones.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/doctor/patients.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kSoundDocument = Data("sound.pmml");

struct Patient {
  std::string findings;  // worst first; every one that the document has
  Edits edits;
  std::string example = "";  // that is edited, or else the sound document

  friend void PrintTo(const Patient& patient, std::ostream* os) {
    *os << patient.example << ": " << patient.findings;
  }
};

class Doctor : public testing::TestWithParam<Patient> {};

TEST_P(Doctor, FindsWhatIsWrongAndNothingElse) {
  const auto& [findings, edits, example] = GetParam();
  const std::string path = example.empty() ? kSoundDocument : Example(example + "/model.pmml");
  const Diagnosis diagnosis = Diagnose(Edited(ReadFile(path), edits));
  EXPECT_EQ(diagnosis.findings, findings) << diagnosis.json.dump(1);
}

const Patient kSound[] = {
    {"", {}},
    {"", {}, "iris"},
    {"", {}, "tumour"},
    {"", {}, "diabetes"},
};
INSTANTIATE_TEST_SUITE_P(Sound, Doctor, testing::ValuesIn(kSound));

const Patient kReading[] = {
    // The rest of a document that is refused is looked at all the same.
    {"refused at PMML, unlisted-category at NormDiscrete",
     {"version='4.4'", "version='5.0'", "'Male'/></D", "'male'/></D"}},
    {"reading-remark at PMML", {"version='4.4'", "version='4.3'"}},
    {"guessed-reading at SupportVectorMachineModel",
     {"classificationMethod='OneAgainstOne' ", ""},
     "iris"},
    {"count-disagrees at DataDictionary", {"numberOfFields='5'", "numberOfFields='6'"}},
    {"verification-disagrees at ModelVerification",
     {"</SupportVectorMachine>",
      "</SupportVectorMachine><ModelVerification><VerificationFields><VerificationField "
      "field='age'/><VerificationField field='sex'/><VerificationField "
      "field='grade'/><VerificationField field='size'/><VerificationField "
      "field='y'/></VerificationFields><InlineTable><row><age>25</age><sex>Male</sex><grade>B</"
      "grade><size>0.5</size><y>no</y></row></InlineTable></ModelVerification>"}},
    {"verification-unreadable at ModelVerification",
     {"</SupportVectorMachine>", "</SupportVectorMachine><ModelVerification/>"}},
};
INSTANTIATE_TEST_SUITE_P(Reading, Doctor, testing::ValuesIn(kReading));

// Another expression for the derived field `band`, and other constants that it is compared with.
Edits Band(const std::string& expression, const std::string& constants) {
  return {"*<Discretize[^]*</Discretize>",
          expression,
          "'equal'",
          "'isIn'",
          "*<Constant dataType='string'>young</Constant>",
          constants};
}

const std::string kAll =
    "<Constant>a</Constant><Constant>b</Constant><Constant>c</Constant><Constant>d</Constant>";
const std::string kBins =
    "<Discretize field='age' defaultValue='c' mapMissingTo='d'><DiscretizeBin binValue='a'>"
    "<Interval closure='openOpen' rightMargin='9'/></DiscretizeBin><DiscretizeBin binValue='b'>"
    "<Interval closure='openOpen' leftMargin='9'/></DiscretizeBin></Discretize>";
const std::string kTable =
    "<MapValues outputColumn='o' defaultValue='c' mapMissingTo='d'><FieldColumnPair field='sex' "
    "column='i'/><InlineTable><row><i>Male</i><o>a</o></row><row><i>Female</i><o>b</o></row>"
    "</InlineTable></MapValues>";

const Patient kFields[] = {
    {"", Band("<Constant>a</Constant>", "<Constant>a</Constant>")},
    {"unlisted-category at Constant", Band("<Constant>a</Constant>", "<Constant>b</Constant>")},
    {"", Band(kBins, kAll)},
    {"unlisted-category at Constant", Band(kBins, kAll + "<Constant>e</Constant>")},
    {"", Band(kTable, kAll)},
    {"unlisted-category at Constant", Band(kTable, kAll + "<Constant>e</Constant>")},
    {"unlisted-category at Constant", {">young</Constant>", ">Young</Constant>"}},
    {"unmapped-category at MapValues, unlisted-table-key at row", {"<g>A</g>", "<g>a</g>"}},
    {"unmapped-category at MapValues", {"<n>2</n>", ""}},
    // With a default, a table need not list every category.
    {"unlisted-table-key at row",
     {"<g>A</g>", "<g>C</g>", "'n' dataType", "'n' defaultValue='0' dataType"}},
    // Values that are not listed may come where they are taken as they are.
    {"",
     {"'sex' value='Male'", "'sex' value='male'", "<MiningField name='sex'/>",
      "<MiningField name='sex' invalidValueTreatment='asIs'/>"}},
    {"inactive-field at MiningField",
     {"<MiningField name='sex'/>", "<MiningField name='sex' usageType='supplementary'/>"}},
    {"unused-field at MiningField", {"<FieldRef field='size'/>", "<FieldRef field='age_n'/>"}},
    {"unused-derived-field at DerivedField",
     {"</LocalTransformations>",
      "<DerivedField name='rest' optype='continuous' dataType='double'><FieldRef "
      "field='size'/></DerivedField></LocalTransformations>"}},
    {"constant-field at VectorFields",
     {"1 2 1 0.5<", "1 0 1 0.5<", "<Indices>1 3 5<", "<Indices>1 4 5<"}},
    {"field-dominates at VectorFields",
     {"1 2 1 0.5<", "1 2000 1 0.5<", "gamma='0.5'", "gamma='1e-6'"}},
    {"indicator-not-0-or-1 at FieldRef", {"-0.5 1 2 1", "-0.5 1.3 2 1", "0.25 1 1", "0.25 -0.7 1"}},
    {"vector-outside-interval at FieldRef", {"1 2 1 0.5<", "1 2 1 7<", "0.25 1 1<", "0.25 1 -6<"}},
};
INSTANTIATE_TEST_SUITE_P(Fields, Doctor, testing::ValuesIn(kFields));

const Patient kVectorsAndKernels[] = {
    {"refused at Array, vector-length at Array, vector-dropped at VectorInstance",
     {"numberOfVectors='3'", "", "</VectorDictionary>",
      "<VectorInstance id='d'><Array>1 2 3 4</Array></VectorInstance></VectorDictionary>"}},
    {"refused at Array, vector-dropped at VectorInstance",
     {"numberOfVectors='3'", "", "</VectorDictionary>",
      "<VectorInstance id='d'><Array n='6'>1 2 3 4 5</Array></VectorInstance></VectorDictionary>"}},
    {"refused at REAL-Entries, vector-length at REAL-SparseArray",
     {"<Indices>1 3 5<", "<Indices>1 3<"}},
    {"unused-vector at VectorInstance",
     {"numberOfVectors='3'", "", "</VectorDictionary>",
      "<VectorInstance id='d'><REAL-SparseArray n='5'/></VectorInstance></VectorDictionary>"}},
    {"unknown-kernel at LaplaceKernelType",
     {"<RadialBasisKernelType", "<LaplaceKernelType/><RadialBasisKernelType"}},
    {"kernel-parameter-misnamed at RadialBasisKernelType", {"gamma='0.5'", "sigma='1'"}},
    {"unknown-kernel-attribute at RadialBasisKernelType", {"gamma='0.5'", "gamma='0.5' sigma='1'"}},
    {"kernel-parameter-absent at RadialBasisKernelType", {"gamma='0.5'", ""}},
    {"negative-gamma at RadialBasisKernelType", {"gamma='0.5'", "gamma='-0.5'"}},
    {"fractional-degree at PolynomialKernelType",
     {"<RadialBasisKernelType gamma='0.5'",
      "<PolynomialKernelType gamma='1' coef0='1' degree='2.5'"}},
    {"kernel-vanishes at RadialBasisKernelType", {"gamma='0.5'", "gamma='5000'"}},
    {"kernel-constant at RadialBasisKernelType", {"gamma='0.5'", "gamma='1e-14'"}},
    {"kernel-saturates at SigmoidKernelType",
     {"<RadialBasisKernelType gamma='0.5'", "<SigmoidKernelType gamma='1' coef0='50'"}},
};
INSTANTIATE_TEST_SUITE_P(VectorsAndKernels, Doctor, testing::ValuesIn(kVectorsAndKernels));

const Patient kMachines[] = {
    {"zero-machine at Coefficients", {"*(<Coefficient value=')[-0-9.]*", "$010"}},
    {"constant-side at Coefficients, one-signed-machine at Coefficients",
     {"<Coefficient value='-1'/>", "<Coefficient value='1'/>"}},
    {"constant-side at Coefficients", {"absoluteValue='0.1'", "absoluteValue='1.01'"}},
    // The signs of a bounded kernel: -1 is still in reach.
    {"", {"absoluteValue='0.1'", "absoluteValue='0.99'"}},
    {"coefficients-unbalanced at Coefficients",
     {"<Coefficient value='-", "<Coefficient value='"},
     "diabetes"},
    {"offset-sign at Coefficients", {"absoluteValue='-", "absoluteValue='"}, "tumour"},
    {"offset-off at Coefficients", {"absoluteValue='-0.1", "absoluteValue='-0.9"}, "tumour"},
    // A threshold may carry the offset.
    {"",
     {"absoluteValue='-0.12310679071170864'", "absoluteValue='0'",
      "alternateTargetCategory='benign'",
      "alternateTargetCategory='benign' threshold='0.12310679071170864'"},
     "tumour"},
    {"extension-contradicts-votes at SupportVectorMachine", {"A='-", "A='"}, "tumour"},
    {"machine-sign at SupportVectorMachine, extension-contradicts-votes at SupportVectorMachine, "
     "constant-field at VectorFields, made-readable at SupportVectorMachine",
     {"response='0' nonResponse='1'", "response='1' nonResponse='0'"},
     "digits"},
    {"max-wins-inverted at SupportVectorMachineModel",
     {"maxWins='true'", "maxWins='false'"},
     "iris"},
    {"machine-sign at SupportVectorMachine",
     {"targetCategory='setosa' alternateTargetCategory='versicolor'",
      "targetCategory='versicolor' alternateTargetCategory='setosa'"},
     "iris"},
    {"method-contradicts-machines at SupportVectorMachineModel",
     {"'OneAgainstOne'", "'OneAgainstAll'"},
     "iris"},
    {"target-repeated at SupportVectorMachine, category-never-predicted at DataField",
     {"'OneAgainstOne'", "'OneAgainstAll'", "* alternateTargetCategory='[a-z]*'", ""},
     "iris"},
    {"pair-repeated at SupportVectorMachine",
     {"targetCategory='setosa' alternateTargetCategory='virginica'",
      "targetCategory='versicolor' alternateTargetCategory='setosa' "},
     "iris"},
    {"same-category-twice at SupportVectorMachine, category-never-predicted at DataField",
     {"alternateTargetCategory='no'", "alternateTargetCategory='yes'"}},
    {"threshold-not-used at SupportVectorMachine",
     {"<SupportVectorMachine>", "<SupportVectorMachine threshold='0.5'>"},
     "diabetes"},
    {"max-wins-early at SupportVectorMachineModel",
     {"PMML-4_4", "PMML-4_1", "version='4.4'", "version='4.1'"}},
};
INSTANTIATE_TEST_SUITE_P(Machines, Doctor, testing::ValuesIn(kMachines));

TEST(Doctor, SaysWhatWhereAndWhatToDo) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(
      folder, kSoundDocument,
      {"'sex' value='Male'", "'sex' value='male'", "numberOfVectors='3'", "numberOfVectors='4'"});
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
  const Diagnosis diagnosis = Diagnose(
      Edited(ReadFile(kSoundDocument), {"<FieldRef field='size'/>", "<FieldRef field='sise'/>"}));
  EXPECT_THAT(diagnosis.findings, StartsWith("refused at FieldRef"));
  EXPECT_EQ(diagnosis.json["findings"][0]["line"], 28);
  EXPECT_THAT(std::string(diagnosis.json["findings"][0]["what"]), HasSubstr("[260311] "));
  EXPECT_EQ(diagnosis.json["changesScores"], true);
}

TEST(Doctor, EndsWithStatusThreeWhereThereIsNoDocument) {
  const TemporaryFolder folder;
  EXPECT_EQ(RunProgram({"doctor", folder.Path("none.pmml")}).status, 3);
  const auto cut = RunProgram({"doctor", folder.Write("cut.pmml", "<PMML>\n<Header>"), "--json"});
  EXPECT_EQ(cut.status, 3);
  const auto report = nlohmann::json::parse(cut.out);
  EXPECT_EQ(report["findings"][0]["name"], "refused") << report;
  EXPECT_EQ(report["findings"][0]["line"], 2) << report;
}

}  // namespace
}  // namespace svmscore::app
