// Rows of CSV: their cells, and the same rows however the input is cut into blocks.
#include "app/table/row_blocks.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/files/input_file.h"
#include "app/table/csv_row.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {
namespace {

struct Row {
  long line;
  std::vector<std::string> cells;
  bool operator==(const Row&) const = default;
};

void Append(std::vector<Row>& rows, std::string& text, long line) {
  std::vector<std::string_view> cells;
  CsvRows reader(text.data(), text.size(), line);
  while (reader.Next(cells)) rows.push_back({reader.RowLine(), {cells.begin(), cells.end()}});
}

TEST(CsvRows, SplitRowsAndUnquoteCells) {
  const struct {
    std::string text;
    std::vector<Row> rows;  // the first is line 5
  } cases[] = {
      {"a,b\n1,\r\n,2", {{5, {"a", "b"}}, {6, {"1", ""}}, {7, {"", "2"}}}},
      {"a,\n", {{5, {"a", ""}}}},
      {"\n\r\n", {{5, {""}}, {6, {""}}}},
      {"", {}},
      {"\"a\rb\",c\r", {{5, {"a\rb", "c"}}}},
      {"\"a,b\",\"say \"\"x\"\"\",\"\"\r\n\"l1\r\nl2\",2\nx",
       {{5, {"a,b", "say \"x\"", ""}}, {6, {"l1\r\nl2", "2"}}, {8, {"x"}}}},
      {"\"\"\"\"\n\"a\"\r", {{5, {"\""}}, {6, {"a"}}}},
  };
  for (const auto& [text, expected] : cases) {
    std::vector<Row> rows;
    std::string writable = text;
    Append(rows, writable, 5);
    EXPECT_EQ(rows, expected) << text;
  }
}

std::vector<Row> ReadInBlocks(const std::string& path, std::size_t block_bytes) {
  InputFile file(path);
  RowBlocks blocks(file, {}, block_bytes);
  std::vector<Row> rows;
  RowBlock block;
  if (!blocks.ReadHeader(block)) return rows;
  do {
    Append(rows, block.text, block.first_line);
  } while (blocks.Next(block));
  return rows;
}

// Cells of all kinds: plain, empty, and quoted ones with commas, marks and line ends.
std::string RandomCsv(std::mt19937& random, int rows) {
  std::string text;
  for (int row = 0; row < rows; ++row) {
    for (int cell = 0; cell < 3; ++cell) {
      if (cell > 0) text += ',';
      const std::string cells[] = {"", std::string(random() % 9, 'x'), "\"\"\"a\"\"\n,\"",
                                   "\"\n\r\n" + std::string(random() % 7, ',') + "\""};
      text += cells[random() % 4];
    }
    text += random() % 2 == 0 ? "\n" : "\r\n";
  }
  return text;
}

TEST(RowBlocks, GiveTheSameRowsForEveryBlockSize) {
  const TemporaryFolder folder;
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    std::string text = RandomCsv(random, 40);
    if (round % 2 == 0) text.erase(text.find_last_not_of("\r\n") + 1);
    const std::string mark = round % 3 == 0 ? "\xEF\xBB\xBF" : "";  // of the byte order
    const std::string path = folder.Write("cases.csv", mark + text);
    std::vector<Row> expected;
    Append(expected, text, 1);
    for (const std::size_t size : {1U, 2U, 3U, 7U, 64U, 1000U, 100000U}) {
      EXPECT_EQ(ReadInBlocks(path, size), expected) << "block of " << size << " in round " << round;
    }
  }
}

}  // namespace
}  // namespace svmscore::app
