#include "app/csv_row.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace svmscore::app {
namespace {

using testing::ElementsAre;
using Rows = std::vector<std::vector<std::string>>;

Rows Parse(std::string text, long line = 1) {
  Rows rows;
  std::vector<std::string_view> cells;
  CsvRows reader(text.data(), text.size(), line);
  while (reader.Next(cells)) rows.emplace_back(cells.begin(), cells.end());
  return rows;
}

TEST(CsvRows, SplitsRowsAndCells) {
  EXPECT_EQ(Parse("a,b\n1,\r\n,2"), (Rows{{"a", "b"}, {"1", ""}, {"", "2"}}));
  EXPECT_EQ(Parse("a,\n"), (Rows{{"a", ""}}));
  EXPECT_EQ(Parse("\n\r\n"), (Rows{{""}, {""}}));
  EXPECT_EQ(Parse(""), Rows{});
  // A carriage return belongs to the line end only right before it.
  EXPECT_EQ(Parse("a\rb,c\r"), (Rows{{"a\rb", "c"}}));
}

TEST(CsvRows, UnquotesCells) {
  EXPECT_EQ(Parse("\"a,b\",\"say \"\"x\"\"\",\"\"\r\n\"l1\r\nl2\",2\n"),
            (Rows{{"a,b", "say \"x\"", ""}, {"l1\r\nl2", "2"}}));
  EXPECT_EQ(Parse("\"\"\"\"\n\"a\"\r"), (Rows{{"\""}, {"a"}}));
}

TEST(CsvRows, KnowsTheLineOfARowAfterQuotedLineEnds) {
  std::string text = "\"1\n2\n3\"\nx\n";
  std::vector<std::string_view> cells;
  CsvRows reader(text.data(), text.size(), 10);
  ASSERT_TRUE(reader.Next(cells));
  EXPECT_EQ(reader.RowLine(), 10);
  ASSERT_TRUE(reader.Next(cells));
  EXPECT_EQ(reader.RowLine(), 13);
}

TEST(CsvRows, RefusesBrokenQuotingAndNulBytesWithTheirLine) {
  struct Broken {
    std::string text;
    long line;
  };
  for (const Broken& broken :
       {Broken{"a\nb\"c\n", 6}, Broken{"\"a\nb\nc", 5}, Broken{"\"a\"b\n", 5},
        Broken{"\"a\n\"b\n", 6}, Broken{std::string("a\nb\0c\n", 6), 6},
        Broken{std::string("\"a\n\n\0\"", 6), 7}}) {
    try {
      Parse(broken.text, 5);
      ADD_FAILURE() << "accepted: " << broken.text;
    } catch (const CsvError& error) {
      EXPECT_EQ(error.Line(), broken.line) << broken.text;
    }
  }
}

}  // namespace
}  // namespace svmscore::app
