// What reaches the output: the spelling of rows, and files that appear when they are complete.
#include <filesystem>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "app/files/output_file.h"
#include "app/pipeline/row_format.h"
#include "tests/app/temporary_folder.h"
#include "tools/base/json_string.h"

namespace svmscore::app {
namespace {

namespace fs = std::filesystem;

std::string RowOf(const RowFormat& format, const std::string& text, double number) {
  std::string out;
  format.Header(out);
  format.Begin(out, 0);
  format.Text(out, text);
  format.Begin(out, 1);
  format.Number(out, number);
  format.Begin(out, 2);
  format.Empty(out);
  format.EndRow(out);
  return out;
}

TEST(CsvFormat, QuotesOnlyWhatNeedsIt) {
  const auto format = CsvFormat({"a", "b,c", "d"});
  EXPECT_EQ(RowOf(*format, "x y", 0.1), "a,\"b,c\",d\nx y,0.1,\n");
  EXPECT_EQ(RowOf(*format, "say \"x\"\r", -0.0), "a,\"b,c\",d\n\"say \"\"x\"\"\r\",-0,\n");
  EXPECT_EQ(RowOf(*CsvFormat({"a", "b,c", "d"}, '\t'), "x\ty", 0.1),
            "a\tb,c\td\n\"x\ty\"\t0.1\t\n");
}

TEST(JsonLinesFormat, IsJsonForEveryText) {
  const auto format = JsonLinesFormat({"a\"", "b", "c"});
  for (const std::string& text : {std::string("\"\\/\b\f\n\r\t\x01\x7F a\0b", 14),
                                  std::string("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80")}) {
    const auto json = nlohmann::json::parse(RowOf(*format, text, 1e-300));
    EXPECT_EQ(json["a\""], text);
    EXPECT_EQ(json["b"], 1e-300);
    EXPECT_TRUE(json["c"].is_null());
  }
  const std::string row = RowOf(*format, "", std::numeric_limits<double>::infinity());
  EXPECT_TRUE(nlohmann::json::parse(row)["b"].is_null());
}

TEST(JsonLinesFormat, ReplacesBytesThatAreNotUtf8) {
  for (const char* text : {"\xC3", "\x80", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80",
                           "\xF4\x90\x80\x80", "\xF0\x8F\xBF\xBF", "\xE2\x82"}) {
    std::string out;
    tools::AppendJsonString(out, std::string(text) + "z");
    const std::string read = nlohmann::json::parse(out);
    EXPECT_TRUE(read.starts_with("\xEF\xBF\xBD") && read.ends_with("z")) << out;
  }
}

TEST(OutputFile, AppearsWithCommitAndNotBefore) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("scores.csv", "earlier");
  const std::string link = folder.Path("link.csv");
  fs::permissions(path, fs::perms(0640));
  fs::create_symlink(path, link);
  {
    OutputFile abandoned(path);
    abandoned.Write("half");
    EXPECT_EQ(folder.FileCount(), 3U);
  }
  EXPECT_EQ(folder.FileCount(), 2U);
  OutputFile output(link);
  output.Write("new");
  EXPECT_EQ(ReadFile(path), "earlier");
  output.Commit();
  EXPECT_EQ(ReadFile(path), "new");
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
  EXPECT_EQ(folder.FileCount(), 2U);
}

TEST(OutputFile, AppearsWhereALinkPointsToWithoutAFile) {
  const TemporaryFolder folder;
  fs::create_directory(folder.Path("there"));
  fs::create_symlink("second.csv", folder.Path("first.csv"));
  fs::create_symlink("there/scores.csv", folder.Path("second.csv"));
  OutputFile output(folder.Path("first.csv"));
  output.Write("new");
  output.Commit();
  EXPECT_EQ(ReadFile(folder.Path("there/scores.csv")), "new");
  EXPECT_TRUE(fs::is_symlink(folder.Path("first.csv")));
  EXPECT_TRUE(fs::is_symlink(folder.Path("second.csv")));
}

TEST(OutputFile, TakesEveryNameThatAFileCanHave) {
  const TemporaryFolder folder;
  std::string wide;
  while (wide.size() < 254) wide += "\xC3\xA9";
  for (const std::string& name : {std::string(255, 'n'), wide, "n" + wide, std::string(238, 'n')}) {
    const std::string path = folder.Path(name);
    OutputFile output(path);
    for (const auto& file : fs::directory_iterator(folder.Path("."))) {
      const std::string unfinished = file.path().filename().string();
      const std::size_t end = unfinished.find(".unfinished-");
      EXPECT_EQ(end + 18, unfinished.size());
      EXPECT_TRUE(name.starts_with(unfinished.substr(0, end)));
      EXPECT_TRUE(end > 235 && (name[end] & 0xC0) != 0x80) << end;
    }
    output.Commit();
    EXPECT_TRUE(fs::remove(path));
  }
}

}  // namespace
}  // namespace svmscore::app
