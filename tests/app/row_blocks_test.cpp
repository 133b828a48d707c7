// Rows of CSV: their cells, and the same rows however the input is cut into blocks.
#include "app/table/row_blocks.h"

#include <algorithm>
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
  for (std::size_t round = 0; round < 20; ++round) {
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

TEST(RowBlocks, BeginWithRowsOneByOneAndGrow) {
  const TemporaryFolder folder;
  std::mt19937 random(5);
  for (const std::size_t read : {5U, 100U, 100000U}) {
    std::string text = RandomCsv(random, 300) + "no,line,end";
    std::vector<Row> expected;
    std::string parsed = text;
    Append(expected, parsed, 1);
    InputFile file(folder.Write("cases.csv", text));
    RowBlocks blocks(file, {}, read);
    RowBlock block;
    ASSERT_TRUE(blocks.ReadHeader(block));
    blocks.BeginWithRows();
    std::vector<Row> rows;
    std::vector<std::size_t> sizes;
    Append(rows, block.text, block.first_line);
    while (blocks.Next(block)) {
      const std::size_t before = rows.size();
      Append(rows, block.text, block.first_line);
      sizes.push_back(rows.size() - before);
      if (sizes.size() >= 100) blocks.GrowBlocks();
    }
    EXPECT_EQ(rows, expected);
    ASSERT_GT(sizes.size(), 100U);
    EXPECT_EQ(std::count(sizes.begin(), sizes.begin() + 100, 1), 100);
    EXPECT_LT(sizes.size(), 120U);
  }
}

struct RowStart {
  std::size_t at;
  long line;
  std::uint64_t rows_before;
};

// Where the rows below a header of so many bytes begin, found byte by byte, and the end of the
// text.
std::vector<RowStart> RowStartsOf(const std::string& text, std::size_t header, bool counts_blank) {
  RowStart row = {header,
                  1 + std::count(text.begin(), text.begin() + static_cast<long>(header), '\n'), 0};
  std::vector<RowStart> starts = {row};
  bool quoted = false;
  bool just_closed = false;
  for (std::size_t i = header; i < text.size(); ++i) {
    const bool begins_cell = i == starts.back().at || text[i - 1] == ',';
    const bool was_quoted = quoted;
    if (text[i] == '"') quoted = !quoted && (begins_cell || just_closed);
    just_closed = text[i] == '"' && was_quoted;
    if (text[i] == '\n') ++row.line;
    if (text[i] != '\n' || quoted) continue;
    const std::string content = text.substr(row.at, i - row.at);
    if (counts_blank || content.find_first_not_of(" \t\r") != std::string::npos) ++row.rows_before;
    row.at = i + 1;
    starts.push_back(row);
  }
  if (row.at < text.size()) starts.push_back({text.size(), 0, 0});
  return starts;
}

// Of any bytes, whether they are CSV or not.
TEST(RowBlocks, TakeTheRowsThatBeginInTheShareOfAPart) {
  const TemporaryFolder folder;
  std::mt19937 random(11);
  const std::string header = "\xEF\xBB\xBF\n\"h\n\",h\n";
  for (std::size_t round = 0; round < 60; ++round) {
    // Of few kinds now and then, so that there are long rows, blank lines and rows of marks.
    const std::string bytes = "ax,\"\n\"\n\r \t,\n";
    const std::size_t kinds = 1 + random() % bytes.size();
    const std::size_t first_kind = random() % (bytes.size() - kinds + 1);
    std::string text = header;
    for (std::size_t rest = random() % 500; rest > 0; --rest) {
      text += bytes[first_kind + random() % kinds];
    }
    const std::string path = folder.Write("cases.csv", text);
    const std::size_t width = 1 + random() % 2;
    const std::vector<RowStart> starts = RowStartsOf(text, header.size(), width == 1);
    const std::size_t block_bytes = std::vector<std::size_t>{1, 7, 64, 100, 100000}[round % 5];
    for (std::size_t count = 1; count <= 17; ++count) {
      const auto start_of = [&](std::size_t number) {
        const std::size_t share = (text.size() - header.size()) * (number - 1) / count;
        return *std::find_if(starts.begin(), starts.end(),
                             [&](const RowStart& row) { return row.at >= header.size() + share; });
      };
      for (std::size_t number = 1; number <= count; ++number) {
        const RowStart start = start_of(number);
        InputFile file(path);
        RowBlocks blocks(file, {}, block_bytes);
        RowBlock block;
        ASSERT_TRUE(blocks.ReadHeader(block));
        blocks.Take({number, count}, width);
        std::string part;
        while (blocks.Next(block)) {
          EXPECT_EQ(block.first_line, start.line + std::count(part.begin(), part.end(), '\n'));
          part += block.text;
        }
        EXPECT_EQ(part, text.substr(start.at, start_of(number + 1).at - start.at))
            << number << " of " << count << " of " << text;
        if (part.empty()) continue;  // and no row needs a number
        EXPECT_EQ(blocks.RowsBefore(), start.rows_before) << text;
      }
    }
  }
}

}  // namespace
}  // namespace svmscore::app
