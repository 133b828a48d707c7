// Large documents, memory and threads.
#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "host/transform/derived_fields.h"
#include "tests/process/failing_memory.h"
#include "tests/transform/call_text.h"
#include "tests/transform/fixture.h"

namespace svmscore::transform {
namespace {

// Processor time, which other programs on the machine do not change.
double Seconds() {
  return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

std::string MapX(const std::vector<std::string>& rows) {
  return "<MapValues outputColumn='o'><FieldColumnPair field='x' column='i'/>" +
         Table("i;o", rows) + "</MapValues>";
}

// Derived fields d0, d1, ... of which each adds 1 to the next; the last adds it to `last`.
std::string ChainOfFields(const std::string& last) {
  std::string fields;
  for (int i = 0; i < 20000; ++i) {
    const std::string next = i == 19999 ? last : "d" + std::to_string(i + 1);
    fields += DerivedField("d" + std::to_string(i), "integer", CallToXml("+(" + next + ", 1)"));
  }
  return fields;
}

TEST(Scale, LoadsAndComputesLongChains) {
  const std::string document = Document(DataField("x", "integer"), ChainOfFields("x"));
  const double start = Seconds();
  const Loaded loaded(document);
  EXPECT_LT(Seconds() - start, 20.0);  // takes tenths of a second; longer under sanitizers
  EXPECT_EQ(loaded.Derive("d0", {{"x", "7"}}), "20007");
}

TEST(Scale, ShowsTheBeginningOfALongCircle) {
  const std::string refusal = Refusal(Document("", ChainOfFields("d0")));
  EXPECT_EQ(refusal.substr(0, 6), "260312");
  EXPECT_LT(refusal.size(), 400U);
  EXPECT_NE(refusal.find("d10 -> d11 -> ... -> d0"), std::string::npos) << refusal;
}

TEST(Scale, LooksUpTablesByHash) {
  std::vector<std::string> rows;
  for (int i = 0; i < 100000; ++i) rows.push_back(std::to_string(i) + ";" + std::to_string(i * 2));
  const std::string document =
      Document(DataField("x", "integer"), DerivedField("d", "double", MapX(rows)));
  const double start = Seconds();
  const Loaded loaded(document);
  EXPECT_EQ(loaded.DeriveEach("99999 100000"), "199998 missing");
  // A search row by row would take minutes for these.
  const auto record = loaded.Record({{"x", "99998"}});
  const Program& program = loaded.Dictionary().GetProgram();
  Scratch scratch(program);
  for (int i = 0; i < 200000; ++i) program.Evaluate(*record, scratch);
  EXPECT_LT(Seconds() - start, 20.0);
}

// A row for each of 20000 key columns, and one cell in each row.
TEST(Scale, ReadsTablesByTheCellsThatAreThere) {
  std::string pairs;
  std::string rows;
  for (int i = 0; i < 20000; ++i) {
    const std::string column = "c" + std::to_string(i);
    pairs += "<FieldColumnPair field='x' column='" + column + "'/>";
    rows += "<row><" + column + ">1</" + column + "><o>1</o></row>";
  }
  const double start = Seconds();
  const Loaded loaded(
      Document(DataField("x", "integer"),
               DerivedField("d", "double",
                            "<MapValues outputColumn='o'>" + pairs + "<InlineTable>" + rows +
                                "</InlineTable></MapValues>")));
  EXPECT_EQ(loaded.DeriveEach("1"), "missing");
  EXPECT_LT(Seconds() - start, 10.0);  // a search of each row for each column takes half a minute
}

// Small tables would become large ones.
TEST(Scale, RefusesCellsThatManyColumnsTake) {
  const auto refusal = [](int columns, bool prefixed, std::size_t size) {
    std::string pairs;
    for (int i = 0; i < columns; ++i) {
      const std::string prefix = prefixed ? "p" + std::to_string(i) + ":" : "";
      pairs += "<FieldColumnPair field='x' column='" + prefix + "i'/>";
    }
    std::vector<std::string> rows;
    for (int i = 0; i < 100; ++i) rows.push_back(std::to_string(i) + std::string(size, 'x') + ";1");
    return Refusal(
        Document(DataField("x", "string"), DerivedField("d", "double",
                                                        "<MapValues outputColumn='o'>" + pairs +
                                                            Table("i;o", rows) + "</MapValues>")));
  };
  EXPECT_EQ(refusal(4, false, 20000), "");
  EXPECT_EQ(refusal(400, true, 10), "");
  for (const auto& [columns, prefixed, size] :
       {std::tuple{4000, false, 0}, {4000, true, 0}, {400, false, 2000}}) {
    EXPECT_EQ(refusal(columns, prefixed, static_cast<std::size_t>(size)).substr(0, 78),
              "260313 at element row, line 5: too many columns take the same cells in element")
        << columns;
  }
}

TEST(Scale, AllocatesNothingForNumbers) {
  const Loaded loaded(Document(
      DataField("x", "double") + DataField("t", "string"),
      "<DefineFunction name='f' optype='continuous' dataType='double'>"
      "<ParameterField name='p' dataType='double'/>" +
          CallToXml("sum(p, 1, 2, 3, 4, 5, missing)") + "</DefineFunction>" +
          DerivedField("a", "double",
                       CallToXml("if(greaterThan(x, 3), median(x, 1, 2, 8, 9), 0)")) +
          DerivedField("b", "integer", CallToXml("round(f(*(a, 1.5)))")) +
          DerivedField("c", "double", "<NormDiscrete field='t' value='a long enough category'/>") +
          DerivedField("d", "double", MapX({"4;0.25", "5;0.5"})) +
          DerivedField("e", "double",
                       "<NormContinuous field='x'><LinearNorm orig='0' norm='0'/>"
                       "<LinearNorm orig='1' norm='3'/></NormContinuous>")));
  const auto record = loaded.Record({{"x", "4"}, {"t", "a long enough category"}});
  const Program& program = loaded.Dictionary().GetProgram();
  Scratch scratch(program);
  program.Evaluate(*record, scratch);
  const long before = svmscore_test::Allocations();
  for (int i = 0; i < 100; ++i) program.Evaluate(*record, scratch);
  EXPECT_EQ(svmscore_test::Allocations() - before, 0);
  EXPECT_EQ(Show(scratch.Result(1)), "21");
  EXPECT_EQ(Show(scratch.Result(2)), "1");
}

TEST(Scale, ComputesOnManyThreads) {
  const Loaded loaded(Document(DataField("x", "integer"),
                               DerivedField("d", "string", CallToXml("concat('case ', *(x, 2))"))));
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 500; ++i) {
        const auto record = loaded.Record({{"x", std::to_string(1000 * t + i)}});
        const auto one = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
        const auto two = loaded.Dictionary().GetValuesForDerivedVars(record.get(), loaded.Inputs());
        const std::string expected = "case " + std::to_string(2 * (1000 * t + i));
        if (Show(one->GetValue(0)) != expected || Show(two->GetValue(0)) != expected) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
}  // namespace svmscore::transform
