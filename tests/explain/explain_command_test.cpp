// svmscore explain, against the definition of Shapley values worked out with svmscore score.
#include <bit>
#include <cmath>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/text/number_text.h"
#include "tests/app/columns_of.h"
#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"
#include "tests/explain/documents.h"

namespace svmscore::app {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Rows = std::vector<std::vector<std::string>>;

double NumberOf(const std::string& text) {
  return ParseNumber(text).value_or(std::nan(""));
}

std::string TableOf(const std::vector<std::string>& header, const Rows& rows) {
  std::string table;
  const auto add = [&table](const std::vector<std::string>& cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) table += (i == 0 ? "" : ",") + cells[i];
    table += '\n';
  };
  add(header);
  for (const auto& row : rows) add(row);
  return table;
}

// A model, cases and a background; the columns of the tables in groups, each of which is a player.
struct Game {
  std::string model;  // a file
  std::vector<std::string> header;
  std::vector<std::vector<std::size_t>> players;
  Rows cases;
  Rows background;
};

// [cases][machines][players], as the weighted mean of what a player adds to each set of others, of
// decision values that `score` writes in the columns `decisions`.
std::vector<std::vector<std::vector<double>>> ByDefinition(
    const Game& game, const std::vector<std::string>& decisions) {
  const std::size_t count = game.players.size();
  const std::size_t sets = std::size_t{1} << count;
  Rows mixed;
  for (const auto& row : game.cases) {
    for (std::size_t set = 0; set < sets; ++set) {
      for (std::vector<std::string> other : game.background) {
        for (std::size_t p = 0; p < count; ++p) {
          if ((set >> p & 1U) == 0) continue;
          for (const std::size_t cell : game.players[p]) other[cell] = row[cell];
        }
        mixed.push_back(other);
      }
    }
  }
  const Ran scored = RunProgram({"score", game.model, "--decisions"}, TableOf(game.header, mixed));
  EXPECT_EQ(scored.status, 0) << scored.err;
  const Columns columns = ColumnsOf(scored.out);
  std::vector<std::vector<std::vector<double>>> values;
  for (std::size_t c = 0; c < game.cases.size(); ++c) {
    auto& of_case = values.emplace_back();
    for (const std::string& decision : decisions) {
      const auto worth = [&](std::size_t set) {
        double sum = 0.0;
        for (std::size_t b = 0; b < game.background.size(); ++b) {
          sum += NumberOf(columns.at(decision).at((c * sets + set) * game.background.size() + b));
        }
        return sum / static_cast<double>(game.background.size());
      };
      auto& of_machine = of_case.emplace_back(count);
      for (std::size_t p = 0; p < count; ++p) {
        for (std::size_t set = 0; set < sets; ++set) {
          if ((set >> p & 1U) != 0) continue;
          const auto others = static_cast<double>(std::popcount(set));
          const auto all = static_cast<double>(count);
          const double weight =
              std::exp(std::lgamma(others + 1) + std::lgamma(all - others) - std::lgamma(all + 1));
          of_machine[p] += weight * (worth(set | std::size_t{1} << p) - worth(set));
        }
      }
    }
  }
  return values;
}

const std::vector<std::string> kHeader = {"u", "a", "b", "c", "colour"};
const Rows kCases = {{"0", "1.5", "-0.5", "2", "red"},
                     {"7", "-1", "1.25", "0.5", "blue"},
                     {"1", "0", "0", "0", "red"}};
const Rows kOthers = {{"1", "0.25", "1", "-1", "blue"},
                      {"2", "2", "0.5", "3", "red"},
                      {"3", "-0.75", "1", "1", "blue"},
                      {"4", "1", "-2", "0.1", "red"}};
const std::vector<std::vector<std::size_t>> kPlayers = {{1}, {2, 3}, {4}, {0}};

class Explain : public testing::Test {
 protected:
  Ran Run(const Game& game, Arguments options = {}) {
    Arguments arguments = {"explain", game.model,
                           folder_.Write("c.csv", TableOf(game.header, game.cases)), "--background",
                           folder_.Write("b.csv", TableOf(game.header, game.background))};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunProgram(arguments);
  }
  Game Product(const std::string& kernel = tools::kRadial) {
    return {folder_.Write("model.pmml", tools::DocumentWithProduct(kernel)), kHeader, kPlayers,
            kCases, kOthers};
  }

  TemporaryFolder folder_;
};

TEST_F(Explain, GivesTheValuesOfTheDefinition) {
  const Game game = Product();
  const auto expected = ByDefinition(game, {"decision"});
  const Ran ran = Run(game);
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_THAT(ran.out, StartsWith("row,decision_of,decision,base,phi(a),phi(b+c),phi(colour),phi(u)"
                                  "\n1,,"));
  EXPECT_THAT(ran.err, HasSubstr("svmscore: background: 4 rows\n"));
  EXPECT_THAT(ran.err, HasSubstr("svmscore: check: values add up to the decision less the base "
                                 "within "));
  EXPECT_THAT(ran.err, HasSubstr("3 cases, 3 explained, 0 missing, 0 invalid, "));
  const Columns columns = ColumnsOf(ran.out);
  const Columns scored =
      ColumnsOf(RunProgram({"score", game.model, "--decisions"}, TableOf(kHeader, kCases)).out);
  EXPECT_EQ(columns.at("decision"), scored.at("decision"));
  const std::vector<std::string> names = {"phi(a)", "phi(b+c)", "phi(colour)", "phi(u)"};
  for (std::size_t c = 0; c < kCases.size(); ++c) {
    for (std::size_t p = 0; p < names.size(); ++p) {
      EXPECT_NEAR(NumberOf(columns.at(names[p])[c]), expected[c][0][p], 1e-14) << names[p];
    }
    EXPECT_EQ(columns.at("phi(u)")[c], "0");
  }
}

TEST_F(Explain, WritesALineForEachMachineAndObjectsOfTheSameNumbers) {
  Game game = {Data("three.pmml"),
               {"width", "height", "colour"},
               {{0}, {1}, {2}},
               {{"1", "2", "blue"}, {"", "4", "red"}, {"0.5", "-9", ""}, {"3", "0", "red"}},
               {{"5", "1", "red"}, {"2", "1", "blue"}, {"0", "-1", "blue"}}};
  const Ran ran = Run(game, {"--gradients"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(ran.out.substr(0, ran.out.find('\n')),
            "row,decision_of,decision,base,phi(width),phi(height),phi(colour),phi(note),"
            "gradient(width),gradient(height),gradient(colour=blue)");
  // Rows 2 and 3 lack a value, and keep their places.
  EXPECT_THAT(ran.out,
              HasSubstr("\n2,a|b,,,,,,,,,\n2,\"a|c, d\",,,,,,,,,\n2,\"b|c, d\",,,,,,,,,\n3,a|b,"));
  EXPECT_THAT(ran.err, HasSubstr("svmscore: row 2, "));
  EXPECT_THAT(ran.err, HasSubstr("4 cases, 2 explained, 2 missing, 0 invalid, "));
  EXPECT_EQ(Run(game, {"--strict"}).status, 4);
  EXPECT_THAT(ran.err, HasSubstr("a|b: above the threshold 0 speaks for a, below it for b\n"));
  EXPECT_THAT(RunProgram({"explain", folder_.Write("least.pmml", Edited(ReadFile(game.model),
                                                                        {"maxWins=\"true\"", ""}))},
                         "width,height,colour\n")
                  .err,
              HasSubstr("b|c, d: above the threshold 0.25 speaks for c, d, below it for b\n"));

  const Ran objects = Run(game, {"--gradients", "--format", "jsonl"});
  std::istringstream rows(ran.out);
  std::istringstream lines(objects.out);
  std::string row;
  std::getline(rows, row);
  std::vector<nlohmann::ordered_json> read;
  for (std::string line; std::getline(lines, line);) {
    const auto object = nlohmann::ordered_json::parse(line);
    std::string cells;
    for (const auto& [key, value] : object.items()) {
      cells += cells.empty() ? "" : ",";
      if (value.is_string()) {
        const auto text = value.get<std::string>();
        cells += text.find(',') == std::string::npos ? text : '"' + text + '"';
      } else if (value.is_number_integer()) {
        cells += std::to_string(value.get<int>());
      } else if (!value.is_null()) {
        cells += FormatNumber(value.get<double>());
      }
    }
    ASSERT_TRUE(std::getline(rows, row));
    EXPECT_EQ(cells, row);
    read.push_back(object);
  }
  ASSERT_EQ(read.size(), 12U);

  game.cases = {game.cases[0], game.cases[3]};
  const std::vector<std::string> names = {"a|b", "a|c; d", "b|c; d"};
  const std::string model =
      folder_.Write("plain.pmml", Edited(ReadFile(game.model), {"*c, d", "c; d"}));
  game.model = model;
  const auto expected =
      ByDefinition(game, {"decision(a|b)", "decision(a|c; d)", "decision(b|c; d)"});
  for (std::size_t c = 0; c < 2; ++c) {
    for (std::size_t m = 0; m < 3; ++m) {
      const auto& object = read[9 * c + m];
      double sum = object["base"];
      std::size_t p = 0;
      for (const char* name : {"phi(width)", "phi(height)", "phi(colour)"}) {
        EXPECT_NEAR(object[name].get<double>(), expected[c][m][p++], 1e-14);
        sum += object[name].get<double>();
      }
      EXPECT_NEAR(sum, object["decision"].get<double>(), 1e-14);
    }
  }
  // The machine a|b is the width.
  EXPECT_EQ(read[0]["gradient(width)"], 1.0);
  EXPECT_EQ(read[0]["gradient(height)"], 0.0);
}

TEST_F(Explain, TakesTheModelsVectorsUnlessABackgroundIsGiven) {
  const Ran own = RunProgram({"explain", Data("three.pmml")}, "width,height,colour\n1,2,blue\n");
  EXPECT_EQ(own.status, 0) << own.err;
  EXPECT_THAT(own.err, HasSubstr("background: 3 support vectors of the model\n"));
  const Game game = {Data("three.pmml"),
                     {"width", "height", "colour"},
                     {},
                     {{"1", "2", "blue"}},
                     {{"1", "0", "red"}, {"0", "1", "red"}, {"0", "0", "blue"}}};
  EXPECT_EQ(Run(game).out, own.out);
}

TEST_F(Explain, JudgesWhatRoundingExplains) {
  const std::string cube = folder_.Write(
      "cube.pmml", tools::ExplainedDocument("", {tools::Ref("a"), tools::Ref("b")},
                                            "<PolynomialKernelType gamma='1' degree='3'/>"));
  const auto told = [&](const std::string& a) {
    return RunProgram({"explain", cube}, "a,b,c,colour,u\n" + a + ",1.7,3,red,4\n").err;
  };
  EXPECT_THAT(told("1.3"), Not(HasSubstr("more than rounding explains")));
  EXPECT_THAT(told("1234567.3"), HasSubstr("more than rounding explains unless kernel values"));
}

TEST_F(Explain, MakesColumnsOfOneNameDistinct) {
  const std::string twice =
      folder_.Write("t.pmml", tools::ExplainedDocument("", {tools::Ref("a"), tools::Ref("a")}));
  for (const char* format : {"csv", "jsonl"}) {
    const Ran ran = RunProgram({"explain", twice, "--gradients", "--format", format},
                               "a,b,c,colour,u\n1,2,3,red,4\n");
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.out, HasSubstr("gradient(a)#2"));
    EXPECT_THAT(ran.out, HasSubstr(format[0] == 'c' ? "\n1,," : "\"decision_of\":\"\""));
    EXPECT_THAT(ran.err, HasSubstr("two columns \"gradient(a)\"; the later one is"));
  }
}

TEST_F(Explain, LeavesOutVectorsWithoutADecisionValue) {
  const std::string document = tools::ExplainedDocument(
      "", {tools::Ref("a"), tools::Ref("b")}, "<PolynomialKernelType gamma='1' coef0='0'/>");
  const std::string huge = folder_.Write("h.pmml", Edited(document, {">0 1 <", ">1e200 1e200 <"}));
  const Ran ran = RunProgram({"explain", huge}, "a,b,c,colour,u\n1,2,3,red,4\n");
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.err, HasSubstr("background: 1 support vector of the model without a finite "
                                 "decision value is left out\nsvmscore: background: 2 support "
                                 "vectors of the model\n"));
}

// The same bytes for any number of threads, from a file or a stream; rows keep their numbers among
// blank lines and cells with line ends.
TEST_F(Explain, ThreadsAndStreamsChangeNothing) {
  std::string table = "colour,a,note,b,c\n";
  for (int i = 0; i < 600; ++i) {
    table += i % 7 == 0 ? "\n" : "";
    table += (i % 3 == 0    ? "red,"
              : i % 50 == 1 ? "green,"
                            : "blue,") +
             std::to_string(i % 11) + (i % 5 == 0 ? ",\"two\nlines\"," : ",x,") +
             std::to_string(i % 13) + ".5,1\n";
  }
  const Game game = Product();
  const std::string background = folder_.Write("b.csv", TableOf(kHeader, kOthers));
  const std::string cases = folder_.Write("c.csv", table);
  const auto run = [&](Arguments options, const std::string& input = {}) {
    options.insert(options.begin(), {"explain", game.model, "--background", background});
    return RunProgram(options, input);
  };
  const Ran one = run({cases, "--threads", "1"});
  EXPECT_EQ(one.status, 0);
  EXPECT_THAT(one.err, HasSubstr("svmscore: row 2, line 5, colour: \"green\" is not"));
  std::istringstream lines(one.out);
  std::string line;
  std::getline(lines, line);
  for (int row = 1; row <= 600; ++row) {
    ASSERT_TRUE(std::getline(lines, line));
    EXPECT_THAT(line, StartsWith(std::to_string(row) + ",,"));
  }
  EXPECT_EQ(run({cases, "--threads", "3"}).out, one.out);
  const Ran broken = run({}, "a,b,c,colour\n1,2,3,red\n1,2,3\n4,5,6,red\n");
  EXPECT_EQ(broken.status, 5);
  EXPECT_THAT(broken.err, HasSubstr("line 3: "));
  EXPECT_THAT(broken.out, HasSubstr("\n1,,"));
  EXPECT_THAT(broken.out, Not(HasSubstr("\n2,,")));
  EXPECT_EQ(run({"--threads", "2"}, table).out, one.out);
  EXPECT_EQ(run({cases, "-o", folder_.Path("out.csv")}).out, "");
  EXPECT_EQ(ReadFile(folder_.Path("out.csv")), one.out);
}

TEST_F(Explain, DrawsFromABackgroundAndLeavesOutWhatCannotBeScored) {
  Game game = Product();
  game.background.push_back({"4", "1", "", "0.1", "red"});
  game.background.push_back({"4", "1", "1", "10", "red"});
  const Ran ran = Run(game);
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.err, HasSubstr("b.csv: 2 of 6 rows cannot be scored and are left out of the "
                                 "background:\nsvmscore: row 5, "));
  EXPECT_THAT(ran.err, HasSubstr("background: 4 rows\n"));
  EXPECT_EQ(ran.out, Run(Product()).out);

  Game many = Product();
  many.background.resize(1001, many.background.front());
  EXPECT_THAT(Run(many).err, HasSubstr("background: 1001 rows\nsvmscore: a case may take time in "
                                       "proportion to them; --rows 100 draws so many, "));
  EXPECT_THAT(
      RunProgram({"explain", Data("three.pmml"), "--rows", "2"}, "width,height,colour\n").err,
      HasSubstr("background: 2 of 3 support vectors of the model, drawn with seed 1\n"));

  const Ran drawn = Run(game, {"--rows", "2", "--seed", "3"});
  EXPECT_THAT(drawn.err, HasSubstr("background: 2 of 4 rows, drawn with seed 3\n"));
  EXPECT_EQ(drawn.out, Run(game, {"--rows", "2", "--seed", "3"}).out);
  EXPECT_NE(drawn.out, ran.out);

  game.background.erase(game.background.begin(), game.background.begin() + 4);
  const Ran none = Run(game);
  EXPECT_EQ(none.status, 5);
  EXPECT_THAT(none.err,
              HasSubstr("b.csv: no row can be scored; the background needs cases that the "
                        "model can score\nsvmscore: row 1, "));
  game.background.clear();
  EXPECT_THAT(Run(game).err, HasSubstr("b.csv: there is no row below the header; "));
}

// The power of a negative number is not defined, and between cases there are some.
TEST_F(Explain, HasNoNumbersWhereTheModelHasNoneBetweenCases) {
  Game game = Product();
  game.model = folder_.Write("power.pmml",
                             tools::ExplainedDocument("", {tools::Ref("a"), tools::Ref("b")},
                                                      "<PolynomialKernelType gamma='1' coef0='0' "
                                                      "degree='2.5'/>"));
  game.background = {{"1", "-2", "3", "1", "red"}, {"1", "5", "1", "1", "red"}};
  game.cases = {{"1", "1", "1", "1", "red"}, {"1", "-2", "3", "1", "red"}};
  const Ran ran = Run(game);
  EXPECT_THAT(ran.out, HasSubstr("\n1,,,,,,"));
  EXPECT_THAT(ran.out, Not(HasSubstr("nan")));
  EXPECT_THAT(ran.err, HasSubstr("row 1: the decision value is not defined, or not finite, "
                                 "between the case and the background; use another background"));
  EXPECT_THAT(ran.err, HasSubstr(", 0 missing, "));
}

// Values that are sampled come with their errors.
TEST_F(Explain, SamplesWhatHasNoClosedForm) {
  const Game game = Product("<SigmoidKernelType gamma='0.3' coef0='0.1'/>");
  const auto expected = ByDefinition(game, {"decision"});
  const Ran ran = Run(game, {"--orders", "500"});
  EXPECT_EQ(ran.status, 0) << ran.err;
  const Columns columns = ColumnsOf(ran.out);
  const std::vector<std::string> names = {"a", "b+c", "colour", "u"};
  for (std::size_t c = 0; c < kCases.size(); ++c) {
    double sum = NumberOf(columns.at("base")[c]);
    for (std::size_t p = 0; p < names.size(); ++p) {
      const double value = NumberOf(columns.at("phi(" + names[p] + ")")[c]);
      const double error = NumberOf(columns.at("error(" + names[p] + ")")[c]);
      EXPECT_LT(error, 0.02);
      EXPECT_NEAR(value, expected[c][0][p], 5 * error + 1e-14) << names[p];
      sum += value;
    }
    EXPECT_NEAR(sum, NumberOf(columns.at("decision")[c]), 1e-12);
  }
  EXPECT_EQ(Run(game, {"--orders", "500", "--threads", "1"}).out, ran.out);
  EXPECT_NE(Run(game, {"--orders", "500", "--seed", "2"}).out, ran.out);
}

TEST_F(Explain, SaysWhatIsMissing) {
  const std::string product = Product().model;
  const std::string weights = folder_.Write(
      "weights.pmml",
      Edited(ReadFile(Data("plane.pmml")),
             {"<SupportVectorMachineModel ",
              "<SupportVectorMachineModel "
              "svmRepresentation='Coefficients' ",
              "*<VectorInstance.*</VectorInstance>", "", "*<SupportVectors>.*</SupportVectors>", "",
              "<Coefficient value='1'/>", "<Coefficient value='1'/><Coefficient value='2'/>"}));
  const std::string constant = folder_.Write(
      "constant.pmml",
      tools::ExplainedDocument(tools::Global(tools::Derived("k", "<Constant>1</Constant>")),
                               {tools::Ref("a"), tools::Ref("k")}));
  struct Mistake {
    Arguments arguments;
    int status;
    std::string message;
  };
  const std::string table = "a,b,c,colour,p,q\n1,2,3,red,4,5\n";
  const std::string cases = folder_.Write("c.csv", table);
  for (const Mistake& mistake : std::vector<Mistake>{
           {{product},
            2,
            "the inputs b and c meet in square, so that its support vectors are no "
            "cases; name a table of some with --background"},
           {{weights}, 2, "written by its weights; name a table"},
           {{constant}, 2, "k depends on no input, so that"},
           {{product, "--background", "-"},
            2,
            "only one of CASES and --background can be standard "
            "input"},
           {{product, "--seed", "0"}, 2, "--seed: \"0\" is not a whole number from 1 to"},
           {{product, "--rows", "0"}, 2, "--rows: \"0\" is not a whole number from 1 to"},
           {{product, cases, "--background", cases, "-o", product}, 2, "the output is the file"},
           {{product, cases, "--background", folder_.Write("d.csv", "a,b\n1,2\n")},
            5,
            "d.csv: the header lacks"},
           {{product, cases, "--background", folder_.Path("none.csv")}, 5, "none.csv"}}) {
    Arguments arguments = mistake.arguments;
    arguments.insert(arguments.begin(), "explain");
    const Ran ran = RunProgram(arguments, table);
    EXPECT_EQ(ran.status, mistake.status) << ran.err;
    EXPECT_THAT(ran.err, HasSubstr(mistake.message));
    EXPECT_EQ(ran.out, "");
  }
  const Ran ran = RunProgram({"explain", constant, "--background", cases}, table);
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_THAT(ran.out, Not(HasSubstr("nan")));
}

}  // namespace
}  // namespace svmscore::app
