// What doctor finds in documents by themselves: one fault in each, and none in sound ones; and that
// score reports and refuses it as the catalogue says.
#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/findings/finding.h"
#include "tests/doctor/patients.h"

namespace svmscore::app {

std::string TextOf(const Patient& patient) {
  const std::string& base = patient.base;
  std::string text;
  if (base.empty()) {
    text = ReadFile(DATA_FOLDER "/sound.pmml");
  } else if (base == "three") {
    // No score depends on the field.
    text = Edited(ReadFile(TEST_FOLDER "/app/data/three.pmml"),
                  {"<MiningField name='note' usageType='active'/>", ""});
  } else if (base == "two" || base == "line") {
    text = ReadFile(TEST_FOLDER "/app/data/" + base + ".pmml");
  } else {
    text = ReadFile(Example(base + "/model.pmml"));
  }
  return Edited(std::move(text), patient.edits);
}

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kSoundDocument = DATA_FOLDER "/sound.pmml";

std::vector<Patient> AllPatients() {
  std::vector<Patient> all;
  for (const auto& some :
       {DocumentPatients(), VectorPatients(), MachinePatients(), SuspicionPatients()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

// The kinds that "NAME at ELEMENT, NAME" names.
std::set<std::string> KindsIn(const std::string& findings) {
  std::set<std::string> kinds;
  std::istringstream list(findings);
  for (std::string entry; std::getline(list >> std::ws, entry, ',');) {
    kinds.insert(entry.substr(0, entry.find(' ')));
  }
  return kinds;
}

class Doctor : public testing::TestWithParam<Patient> {};
INSTANTIATE_TEST_SUITE_P(Documents, Doctor, testing::ValuesIn(AllPatients()));

TEST_P(Doctor, FindsWhatIsWrongAndNothingElse) {
  const Diagnosis diagnosis = Diagnose(TextOf(GetParam()));
  EXPECT_EQ(diagnosis.findings, GetParam().findings) << diagnosis.json.dump(1);
}

// Score reports exactly the kinds that the strict reading refuses; the strict reading refuses with
// the code of such a kind, and says how to accept the document.
TEST_P(Doctor, AndScoreGoByOneList) {
  const TemporaryFolder folder;
  const std::string model = folder.Write("model.pmml", TextOf(GetParam()));
  const Ran ran = RunProgram({"score", model}, "x\n");
  const Ran strict = RunProgram({"score", model, "--strict-document"}, "x\n");
  const std::set<std::string> found = KindsIn(GetParam().findings);
  if (found.contains("refused")) {
    EXPECT_EQ(ran.status, 3);
    return;
  }
  EXPECT_NE(ran.status, 3) << ran.err;
  std::vector<std::string> codes;
  for (const FindingKind& kind : AllFindingKinds()) {
    const bool told = found.contains(std::string(kind.name)) && kind.IsRefusedWhenStrict();
    const std::string sentence(kind.sentence);
    const std::string line = ": " + sentence;
    EXPECT_THAT(ran.err, told ? testing::Matcher<const std::string&>(HasSubstr(line))
                              : Not(HasSubstr(line + ':')))
        << kind.name;
    if (told) codes.push_back("[" + std::to_string(kind.strict_code) + "] ");
  }
  EXPECT_EQ(strict.status == 3, !codes.empty()) << strict.err;
  // Only a document that is scored as written is refused with the code of the rewritten one.
  if (codes.empty() || found.contains("read-to-the-letter")) return;
  EXPECT_TRUE(std::any_of(codes.begin(), codes.end(), [&strict](const std::string& code) {
    return strict.err.find(code) != std::string::npos;
  })) << strict.err;
  EXPECT_THAT(strict.err, HasSubstr("or leave out --strict-document"));
}

TEST(Catalogue, HasADocumentForEveryKind) {
  std::set<std::string> provoked;
  for (const Patient& patient : AllPatients()) provoked.merge(KindsIn(patient.findings));
  for (const std::string& kind : KindsOfScores()) provoked.insert(kind);
  for (const std::string& kind : KindsOfLabelledCases()) provoked.insert(kind);
  provoked.insert("vectors-unexamined");  // program_limits_test.cpp of tests/app
  for (const FindingKind& kind : AllFindingKinds()) {
    EXPECT_TRUE(provoked.contains(std::string(kind.name))) << kind.name;
  }
}

// What only doctor finds is a suspicion or an error without a code.
TEST(Catalogue, RefusesWhatIsGuessedLostOrWrong) {
  for (const FindingKind& kind : AllFindingKinds()) {
    const bool told =
        kind.of_class == FindingClass::kGuessed || kind.of_class == FindingClass::kLossy;
    const bool error = kind.of_class == FindingClass::kError;
    EXPECT_TRUE(error || kind.IsRefusedWhenStrict() == told) << kind.name;
  }
}

TEST(Doctor, SaysWhatWhereAndWhatToDo) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(
      folder, kSoundDocument,
      {"'sex' value='Male'", "'sex' value='male'", "numberOfVectors='3'", "numberOfVectors='4'"});
  const Ran ran = RunProgram({"doctor", model});
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.out, model + R"(: 2 findings, 1 changes scores

error unlisted-category, line 21, NormDiscrete
  "male" is not a category of "sex", "Male" is, in element NormDiscrete
  Consequence: no valid input can have this category: its indicator is 0 for every case, or its cases are invalid.
  Remedy: spell the category as the DataDictionary does, or list it there.

warning count-disagrees, line 27, VectorDictionary
  numberOfVectors 4 beside 3 VectorInstance elements in element VectorDictionary
  Consequence: the items that are present are used; if some were lost, scores are wrong.
  Remedy: export the document again, or correct the count.
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

// Without the machine that begins like this.
std::string WithoutMachine(std::string text, const std::string& begin) {
  const std::string end = "</SupportVectorMachine>";
  const std::size_t at = text.find(begin);
  EXPECT_NE(at, std::string::npos) << begin;
  if (at != std::string::npos) text.erase(at, text.find(end, at) + end.size() - at);
  return text;
}

// What follows from a refusal is not told beside it.
TEST(Doctor, TellsTheCauseOfARefusalAlone) {
  const std::string iris = ReadFile(Example("iris/model.pmml"));
  const std::string digits = ReadFile(Example("digits/model.pmml"));
  const struct {
    std::string document;
    std::string findings;
  } rows[] = {
      {Edited(iris, {" usageType='target'", ""}), "refused at MiningField"},
      {Edited(iris, {"usageType='target'", "usageType='traget'"}), "refused at MiningField"},
      {Edited(iris, {"<MiningField name='species'", "<MiningField name='specis'"}),
       "refused at MiningField"},
      {WithoutMachine(iris,
                      "<SupportVectorMachine targetCategory=\"setosa\" "
                      "alternateTargetCategory=\"versicolor\""),
       "refused at SupportVectorMachineModel"},
      {WithoutMachine(digits,
                      "<SupportVectorMachine targetCategory=\"0\" alternateTargetCategory=\"8\""),
       "refused at SupportVectorMachineModel, constant-field at VectorFields"},
      {Edited(iris, {"<FieldRef field='petal_width'", "<FieldRef field='petal_widht'"}),
       "refused at FieldRef"},
  };
  for (const auto& [document, findings] : rows) {
    EXPECT_EQ(Diagnose(document).findings, findings);
  }
}

TEST(Doctor, CountsTheFindingsThatItDoesNotShow) {
  const TemporaryFolder folder;
  const std::string model =
      EditedFile(folder, Example("iris/model.pmml"),
                 {"*<SupportVector vectorId='v", "<SupportVector vectorId='x"});
  const std::string report = RunProgram({"doctor", model}).out;
  EXPECT_THAT(report, HasSubstr("\n  and 44 more of unknown-vector\n"));
  EXPECT_THAT(report, HasSubstr(": 87 findings, 53 change scores\n"));
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
