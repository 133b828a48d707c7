#include "app/row_blocks.h"

#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/csv_row.h"
#include "app/failure.h"
#include "app/input_file.h"
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
      switch (random() % 4) {
        case 0:
          break;
        case 1:
          text += std::string(random() % 9, 'x');
          break;
        case 2:
          text += "\"\"\"a\"\"\n,\"";
          break;
        default:
          text += "\"\n\r\n" + std::string(random() % 7, ',') + "\"";
      }
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
    const std::string path = folder.Write("cases.csv", text);
    std::vector<Row> expected;
    Append(expected, text, 1);
    for (const std::size_t size : {1U, 2U, 3U, 7U, 64U, 1000U, 100000U}) {
      EXPECT_EQ(ReadInBlocks(path, size), expected) << "block of " << size << " in round " << round;
    }
  }
}

TEST(RowBlocks, SkipTheByteOrderMark) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("cases.csv", "\xEF\xBB\xBF\"a\",b\n1,2\n");
  for (const std::size_t size : {1U, 2U, 100U}) {
    const std::vector<Row> rows = ReadInBlocks(path, size);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].cells[0], "a");
  }
}

TEST(RowBlocks, ReadNothingFromAnEmptyFileAndRefuseRowsWithoutEnd) {
  const TemporaryFolder folder;
  EXPECT_TRUE(ReadInBlocks(folder.Write("empty.csv", ""), 100).empty());
  const std::string endless = "a\n\"" + std::string(Limits{}.row_length + (1U << 20U), '\n');
  EXPECT_THROW(ReadInBlocks(folder.Write("endless.csv", endless), 256U << 10U), CsvError);
  EXPECT_THROW(ReadInBlocks(folder.Path("none.csv"), 100), Failure);
  EXPECT_THROW(ReadInBlocks(folder.Path("."), 100), Failure);
}

}  // namespace
}  // namespace svmscore::app
