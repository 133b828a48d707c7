// Large documents, memory and threads.
#include <gtest/gtest.h>

#include <atomic>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "host/transform/program.h"
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
  EXPECT_LT(Seconds() - start, 20.0);  // takes tenths of a second; sanitizers take their time
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
