// svmscore convert, with the files that LIBSVM's programs write.
#include <sstream>

#include <gmock/gmock.h>

#include "host/text/number_text.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/convert/trained_model.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;

constexpr const char* kModel =
    "svm_type c_svc\nkernel_type linear\nnr_class 2\ntotal_sv 2\nrho 0\nlabel 1 -1\nnr_sv 1 1\n"
    "SV\n1 1:1\n-1 2:1\n";

// The first cell of each line after the first.
std::vector<std::string> FirstCells(const std::string& text, char end) {
  std::vector<std::string> cells;
  std::istringstream lines(text);
  std::string line;
  for (std::getline(lines, line); std::getline(lines, line);) {
    cells.push_back(line.substr(0, line.find(end)));
  }
  return cells;
}

// What users do: scale, train, predict; and convert, score the data as they were.
TEST(ConvertCommand, MakesWhatScoresAsThePrograms) {
  const TemporaryFolder folder;
  svmscore_test::Training training;
  training.classes = 4;
  const svmscore_test::Data data = svmscore_test::MakeData(training);
  folder.Write("data", svmscore_test::TextOf(data));
  std::string table = "a,b,c,d,e\n";
  for (const svmscore_test::Case& values : data.cases) {
    const char* separator = "";
    for (const double value : values) {
      table += separator + svmscore::FormatNumber(value);
      separator = ",";
    }
    table += '\n';
  }
  const Ran libsvm = RunShell(
      "unset LD_PRELOAD; cd '" + folder.Path(".") +  // numbers of theirs depend on the locale
      "' && svm-scale -s ranges data >scaled && "
      "svm-train -q -b 1 scaled model && svm-predict -b 1 scaled model predicted >/dev/null && "
      "cat predicted");
  ASSERT_EQ(libsvm.status, 0) << libsvm.err;
  const Ran converted =
      RunProgram({"convert", folder.Path("model"), "--ranges", folder.Path("ranges"), "--names",
                  "a,b,c,d,e", "-o", folder.Path("model.pmml")});
  ASSERT_EQ(converted.status, 0) << converted.err;
  const Ran scored = RunProgram({"score", folder.Path("model.pmml"), "--strict-document"}, table);
  ASSERT_EQ(scored.status, 0) << scored.err;
  EXPECT_EQ(FirstCells(scored.out, ','), FirstCells(libsvm.out, ' '));
}

TEST(ConvertCommand, TakesNamesAndLabels) {
  const TemporaryFolder folder;
  const std::string model = folder.Write("model", kModel);
  const Ran named =
      RunProgram({"convert", model, "--names", "\"size, in mm\",b", "--labels", "-1,no"});
  EXPECT_EQ(named.status, 0) << named.err;
  EXPECT_THAT(named.out, HasSubstr("<DataField name=\"size, in mm\""));
  EXPECT_THAT(named.out, HasSubstr("targetCategory=\"no\" alternateTargetCategory=\"-1\""));
  // A compressed model is read as what it holds.
  const Ran packed =
      RunShell("gzip -k '" + model + "' && \"$SVMSCORE\" convert '" + model + ".gz'");
  EXPECT_EQ(packed.out, RunProgram({"convert", model}).out);
}

TEST(ConvertCommand, SaysWhatIsWrong) {
  const TemporaryFolder folder;
  const std::string model = folder.Write("model", kModel);
  const std::string cut = folder.Write("cut", std::string(kModel).substr(0, 95));
  const std::string ranges = folder.Write("ranges", "x\n1 0\n");
  const std::vector<std::tuple<std::vector<std::string>, int, std::string>> cases = {
      {{cut}, 3, cut + ": line 10: the last line has no end"},
      {{model + "s"}, 3, "No such file"},
      {{model, "--ranges", ranges}, 3, ranges + ": line 2: the lower end"},
      {{model, "--labels", "a"}, 2, "--labels: 1 labels are given, and the model has 2: 1, -1"},
      {{model, "--names", ""}, 2, "--names is empty"},
      {{model, "-o", model}, 2, "the output is the file " + model},
      {{model, "-o", folder.Path("none/here")}, 6, "No such file"},
  };
  for (auto [arguments, status, told] : cases) {
    arguments.insert(arguments.begin(), "convert");
    const Ran ran = RunProgram(arguments);
    EXPECT_EQ(ran.status, status) << told;
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, HasSubstr(told));
  }
}

}  // namespace
}  // namespace svmscore::app
