// Models and tables that ask for too much, as the program takes them.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;

#if defined(SVMSCORE_SANITIZED)
constexpr long kMostKib = 192L << 10U;  // sanitizers keep what is freed for a while
#else
constexpr long kMostKib = 128L << 10U;
#endif

std::string Repeat(const std::string& text, int times) {
  std::string all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

const std::string kField = "<FieldRef field='x'/>";

// Each of these would take gigabytes, or for ever.
TEST(Limits, RefuseExpansionBombsInLittleMemory) {
  std::string laughs;
  std::string silent;
  for (int i = 1; i < 30; ++i) {
    const std::string before = std::to_string(i - 1);
    laughs += "<!ENTITY a" + std::to_string(i) + " '" + Repeat("&a" + before + ";", 10) + "'>";
    silent +=
        "<!ENTITY % a" + std::to_string(i) + " '" + Repeat("&#37;a" + before + ";", 10) + "'>";
  }
  const std::string first = "<!ENTITY a0 'aaaaaaaaaa'>";
  const std::string big(200000, 'b');
  const std::string entity = "<!ENTITY b '" + big + "'>";
  const std::string many = Repeat("&b;", 20000);
  std::string defaults;
  for (int i = 0; i < 1000; ++i) defaults += " a" + std::to_string(i) + " CDATA ''";
  const TemporaryFolder folder;
  for (const auto& [declared, root, code] : std::vector<std::array<std::string, 3>>{
           {first + laughs, "<a>&a29;</a>", "260318"},
           {first + laughs, "<a b='&a29;'/>", "260318"},
           {first + laughs + "<!ATTLIST a b CDATA '&a29;'>", "<a/>", "260304"},
           {"<!ENTITY % a0 ''>" + silent + "%a29;", "<a/>", "260304"},
           {entity, "<a>" + many + "</a>", "260318"},
           {entity, "<a b='" + many + "'/>", "260318"},
           {"<!ATTLIST c b CDATA '" + big + "'>", "<a>" + Repeat("<c/>", 20000) + "</a>", "260318"},
           {"<!ATTLIST c" + defaults + ">", "<a>" + Repeat("<c/>", 1000) + "</a>", "260318"},
           {"<!ELEMENT a " + Repeat("(", 1000000), "", "260318"},
       }) {
    const std::string bomb = "<!DOCTYPE a [" + declared + "]>" + root;
    const Ran ran = RunProgram({"describe", folder.Write("bomb.pmml", bomb)});
    EXPECT_EQ(ran.status, 3) << bomb.substr(0, 100);
    EXPECT_THAT(ran.err, HasSubstr("[" + code + "]")) << bomb.substr(0, 100);
    EXPECT_LT(ran.peak_kib, kMostKib) << bomb.substr(0, 100);
  }
}

TEST(Limits, LetHonestEntitiesThrough) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(
      folder, Data("line.pmml"),
      {"<PMML",
       "<!DOCTYPE PMML [<!ENTITY x 'x'><!ENTITY f '<FieldRef field=&#34;&x;&#34;/>'>]><PMML",
       kField, "&f;"});
  const Ran ran = RunProgram({"score", model, "--prediction-only"}, "x\n1\n");
  EXPECT_EQ(ran.out, "prediction,status\n2.1,0\n") << ran.err;
}

TEST(Limits, RefuseEntriesThatNoTextStandsFor) {
  const TemporaryFolder folder;
  const auto score = [&folder](const Edits& edits, const std::string& limit) {
    const std::string model = EditedFile(folder, Data("line.pmml"), edits);
    Ran ran = RunProgram({"score", model, "--limit", limit}, "x\n1\n");
    EXPECT_LT(ran.peak_kib, kMostKib);
    return ran;
  };
  const std::string end = "</VectorDictionary>";
  const std::string vector = "<VectorInstance id='z'><REAL-SparseArray n='";
  const std::string zeros = vector + "2000000000'/></VectorInstance>" + end;
  for (const Edits& harmless : {Edits{kField, ""}, {kField, Repeat(kField, 4)}, {end, zeros}}) {
    EXPECT_EQ(score(harmless, "vectors=9").status, 0) << harmless[1];
  }
  const Edits more = {end, Repeat(vector + "1'/></VectorInstance>", 3) + end};
  for (const auto& [limit, enough] : {std::pair{"implied-entries=", 3}, {"entries=", 4}}) {
    EXPECT_EQ(score(more, limit + std::to_string(enough)).status, 0) << limit;
    const Ran exceeds = score(more, limit + std::to_string(enough - 1));
    EXPECT_EQ(exceeds.status, 3) << limit;
    EXPECT_THAT(exceeds.err, HasSubstr(std::string("--limit ") + limit));
  }
}

TEST(Limits, OfTablesNameTheLine) {
  const TemporaryFolder folder;
  const std::string cases = folder.Write("cases.csv", "x,note\n1,abc\n2,\"abcd\"\n");
  const auto score = [&](const std::string& limit) {
    return RunProgram({"score", Data("line.pmml"), cases, "--limit", limit});
  };
  for (const char* limit : {"cell-length=4", "columns=2", "row-length=9"}) {
    EXPECT_EQ(score(limit).status, 0) << limit;
  }
  EXPECT_EQ(score("cell-length=3").err,
            "svmscore: " + cases +
                ": line 1: the length of a cell in bytes exceeds the limit of 3; if you trust the "
                "file, raise the limit: --limit cell-length=NUMBER\n");
  EXPECT_THAT(score("columns=1").err, HasSubstr("line 1: the number of cells in a row"));
  EXPECT_THAT(score("row-length=8").err, HasSubstr("line 3: the length of a row in bytes"));
  const Ran verified = RunProgram(
      {"verify", Data("line.pmml"), "--input", cases, "--expected", cases, "--limit", "columns=1"});
  EXPECT_EQ(verified.status, 5);
  for (const char* endless : {"cat /dev/zero", "yes ,", "echo '\"'; yes", "yes x | tr '\\n' x"}) {
    const Ran ran = RunShell("(echo x; " + std::string(endless) + ") | \"$SVMSCORE\" score " +
                             Data("line.pmml"));
    EXPECT_EQ(ran.status, 5) << endless << ran.err;
    EXPECT_LT(ran.peak_kib, 2 * kMostKib) << endless;
  }
}

TEST(Limits, AreRaisedByNameAndNumber) {
  for (const char* wrong : {"depth=1", "vectors", "vectors=", "vectors=-1", "vectors=1e3", "=1"}) {
    const Ran ran = RunProgram({"describe", Data("line.pmml"), "--limit", wrong});
    EXPECT_EQ(ran.status, 2) << wrong;
    EXPECT_THAT(ran.err, HasSubstr(std::string(wrong).starts_with("vectors") ? "vectors=NUMBER"
                                                                             : "element-depth"));
  }
  for (const char* command : {"score", "describe", "verify", "doctor"}) {
    const Ran ran = RunProgram(
        {command, Data("line.pmml"), "--limit", "vectors=9", "--limit", "element-depth=2"});
    EXPECT_EQ(ran.status, 3) << command;
    EXPECT_THAT(ran.err, HasSubstr("--limit element-depth=NUMBER"));
  }
}

// Doctor says which checks it leaves out, and makes the others.
TEST(Limits, LetDoctorLeaveOutWhatWouldTakeMore) {
  const TemporaryFolder folder;
  const std::string model = EditedFile(folder, Data("line.pmml"), {kField, Repeat(kField, 4)});
  const auto doctor = [&model](const std::string& limit) {
    return RunProgram({"doctor", model, "--limit", limit}).out;
  };
  EXPECT_EQ(RunProgram({"score", model, "--limit", "entries=1"}, "x\n1\n").status, 0);
  EXPECT_THAT(doctor("entries=3"), HasSubstr("vectors-unexamined"));
  EXPECT_THAT(doctor("entries=4"), Not(HasSubstr("vectors-unexamined")));
}

// As deep as documents may be, through every command, on the stacks that there are.
TEST(Limits, LeaveRoomOnTheStackForWhatTheyLetThrough) {
  const TemporaryFolder folder;
  const std::string deep = Repeat("<a>", 1990) + Repeat("</a>", 1990);
  const std::string model = EditedFile(
      folder, Data("line.pmml"),
      {kField, "<FieldRef field='d'/>", "</Header>", "<Extension>" + deep + "</Extension></Header>",
       "<LinearKernelType/>",
       "<ModelVerification><VerificationFields><VerificationField field='x'/>"
       "<VerificationField "
       "field='y'/></VerificationFields><InlineTable><row><x>1</x><y>1982.1</y>" +
           deep +
           "</row></InlineTable></ModelVerification><LocalTransformations><DerivedField name='d' "
           "optype='continuous' dataType='double'>" +
           Repeat("<Apply function='+'><Constant>1</Constant>", 990) + kField +
           Repeat("</Apply>", 990) + "</DerivedField></LocalTransformations><LinearKernelType/>"});
  const Ran ran = RunProgram({"score", model, "--prediction-only", "--threads", "3"},
                             "x,y\n" + Repeat("1," + std::string(1000, 'y') + "\n", 1500));
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_TRUE(ran.out.ends_with("1982.1,0\n"));
  for (const char* command : {"describe", "verify", "doctor"}) {
    EXPECT_LE(RunProgram({command, model}).status, 1) << command;
  }
}

}  // namespace
}  // namespace svmscore::app
