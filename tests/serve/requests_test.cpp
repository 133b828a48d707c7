// What requests mean, without a connection.
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/serve/page.h"
#include "tools/serve/case_cell.h"
#include "tools/serve/json_scanner.h"
#include "tools/serve/model_files.h"
#include "tools/serve/request_checks.h"
#include "tools/serve/route.h"

namespace svmscore::serve {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// What the scanner says is wrong; empty where nothing is.
std::string FaultOf(std::string text, bool takes_nan = false) {
  try {
    JsonScanner scanner(text, takes_nan);
    scanner.Skip();
    scanner.Finish();
    return {};
  } catch (const JsonError& error) {
    return error.what();
  }
}

TEST(JsonScanner, ReadsWhatIsJsonAndNothingElse) {
  for (const char* text :
       {"{}", " [ ] ", "0", "-0", "1.5e-7", "\"\"", "true", "false", "null", "[1,[2,{\"a\":[]}]]",
        "{\"a\":1,\"b\":{\"a\":2}}", "\"\\u00e4\\n\\/\\ud83d\\ude00\"", "\"\xC3\xA4\"", "1e999"}) {
    EXPECT_THAT(FaultOf(text), IsEmpty()) << text;
  }
  const std::string deep(JsonScanner::kMostDepth + 1, '[');
  const std::vector<std::pair<std::string, std::string>> faults = {
      {"", "ends"},
      {"[1,]", "a value"},
      {"{\"a\":1,}", "name"},
      {"[1 2]", "comma"},
      {"01", "0 too many"},
      {"1.", "digit"},
      {"-", "number"},
      {"+1", "a value"},
      {"\"\x01\"", "control"},
      {"\"\xFF\"", "UTF-8"},
      {"\"\\ud800\"", "surrogate"},
      {"\"\\udc00\"", "surrogate"},
      {"\"\\ud800\\u0041\"", "surrogate"},
      {"\"\\u12", "inside"},
      {"\"\\q\"", "escape"},
      {"nul", "null"},
      {"{} {}", "follows"},
      {"NaN", "NaN"},
      {"{\"a\":1,\"\\u0061\":2}", "twice"},
      {"{\"a\" 1}", "colon"},
      {deep, "deep"},
      {"{\"a\":0,\"b\":0,\"c\":0,\"d\":0,\"e\":0,\"f\":0,\"g\":0,\"h\":0,\"i\":0,\"b\":0}",
       "twice"}};
  for (const auto& [text, fault] : faults) EXPECT_THAT(FaultOf(text), HasSubstr(fault)) << text;
  EXPECT_THAT(FaultOf("[NaN]", true), IsEmpty());
}

TEST(JsonScanner, RewritesTextsInPlace) {
  std::string text = "{\"\\u0041\\u00df\\u20ac\\ud83d\\ude00z\":\"a\\\"b\"}";
  JsonScanner scanner(text);
  std::string_view key;
  scanner.EnterObject();
  ASSERT_TRUE(scanner.NextKey(key));
  EXPECT_EQ(key, "A\xC3\x9F\xE2\x82\xAC\xF0\x9F\x98\x80z");
  EXPECT_EQ(scanner.String(), "a\"b");
  EXPECT_FALSE(scanner.NextKey(key));
}

TEST(CaseCells, KeepWholeNumbers) {
  for (const auto& [spelling, type] :
       std::vector<std::pair<std::string, std::string>>{{"9223372036854775807", "INT64"},
                                                        {"-9223372036854775808", "INT64"},
                                                        {"1234567890123456789", "INT64"},
                                                        {"9223372036854775808", "FP64"},
                                                        {"1e300", "FP64"}}) {
    std::string text = spelling;
    JsonScanner scanner(text);
    CaseCell cell;
    double number = 0.0;
    ASSERT_TRUE(ReadCell(scanner, cell));
    EXPECT_TRUE(cell.IsOf(type)) << spelling;
    EXPECT_EQ(cell.IsOf("INT64"), type == "INT64") << spelling;
    EXPECT_EQ(cell.IsNumber(number), spelling == "1e300") << spelling;  // the others are no doubles
  }
}

TEST(Routes, AreFoundByTheirPaths) {
  const std::vector<std::tuple<std::string, Resource, std::string>> paths = {
      {"/", Resource::kPage, ""},
      {"/model", Resource::kModels, ""},
      {"/model/", Resource::kModels, ""},
      {"/openscoring/model/a.b?x=/", Resource::kModel, "a.b"},
      {"/model/%61%2E", Resource::kModel, "a."},
      {"/model/a/batch", Resource::kBatch, "a"},
      {"/v2/", Resource::kServer, ""},
      {"/v2/models/a/versions/1/infer", Resource::kInfer, "a"},
      {"/v2/models/a/ready", Resource::kInferenceReady, "a"}};
  for (const auto& [path, resource, id] : paths) {
    EXPECT_EQ(RouteOf(path).resource, resource) << path;
    EXPECT_EQ(RouteOf(path).id, id) << path;
  }
  for (const char* path :
       {"", "*", "model", "//", "/model//", "/model/.a", "/model/..", "/model/a%2fb",
        "/model/%2e%2e", "/model/a%00", "/model/%252e", "/model/a%", "/model/\xC3\xA4",
        "/openscoring", "/openscoring/v2", "/v2/models/a/versions/2", "/model/a/b/c"}) {
    EXPECT_EQ(RouteOf(path).resource, Resource::kUnknown) << path;
  }
  EXPECT_EQ(QueryValue("a=1&b=%3B&c", "b"), ";");
  EXPECT_EQ(QueryValue("a=1&b=%3B&c", "c"), "");
}

TEST(Hosts, AreThoseThatAreAllowed) {
  AccessRules rules;
  rules.hosts = {"localhost", "127.0.0.1", "[::1]"};
  for (const char* host : {"localhost", "LOCALHOST:80", "127.0.0.1:1", "[::1]", "[::1]:8080"}) {
    EXPECT_TRUE(IsKnownHost(host, rules)) << host;
  }
  for (const char* host : {"", "10.0.0.1", "localhost.", "a@localhost", "[::2]:1", "localhost/x",
                           "[::1]evil.example", "localhost:a@evil.example", "[::1", "[]:80x"}) {
    EXPECT_FALSE(IsKnownHost(host, rules)) << host;
  }
  rules.any_address = true;
  EXPECT_TRUE(IsKnownHost("10.0.0.1:80", rules));
  EXPECT_FALSE(IsKnownHost("10.0.0.1.example", rules));
}

TEST(ModelFiles, AreNamedByIds) {
  for (const auto& [name, id] : std::vector<std::pair<const char*, const char*>>{{"a.pmml", "a"},
                                                                                 {"a.b.xml", "a.b"},
                                                                                 {"a.pmml.gz", "a"},
                                                                                 {"a.xml.zst", "a"},
                                                                                 {".a.pmml", ""},
                                                                                 {"a b.pmml", ""},
                                                                                 {"a.txt", ""},
                                                                                 {".pmml", ""},
                                                                                 {"a.gz", ""}}) {
    EXPECT_EQ(IdOfFile(name), id) << name;
  }
}

TEST(ModelFiles, AreStoredWholeAndCleanedUp) {
  std::string folder = std::filesystem::temp_directory_path() / "svmscore-XXXXXX";
  ASSERT_NE(mkdtemp(folder.data()), nullptr);
  const ModelFile stored = StoreFile(folder, "a", "one");
  EXPECT_EQ(FilesIn(folder).at("a").mark, stored.mark);
  EXPECT_EQ(ReadFile(stored.path, 3), "one");
  EXPECT_THROW(ReadFile(stored.path, 2), FileFault);
  const std::string pipe = folder + "/pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
  EXPECT_THROW(ReadFile(pipe, 3), FileFault);  // and nobody waits for a writer
  EXPECT_NE(StoreFile(folder, "a", "two").mark, stored.mark);
  std::filesystem::copy_file(stored.path, folder + "/a.gz.xml");
  std::filesystem::copy_file(stored.path, folder + "/.unfinished-123456");
  RemoveUnfinished(folder);
  EXPECT_EQ(FilesIn(folder).size(), 2U);
  EXPECT_FALSE(std::filesystem::exists(folder + "/.unfinished-123456"));
  RemoveFile(folder, stored.path);
  EXPECT_FALSE(FilesIn(folder).contains("a"));
  std::filesystem::remove_all(folder);
  EXPECT_THROW(StoreFile(folder, "a", "x"), FileFault);
  EXPECT_THROW(FilesIn(folder), FileFault);
}

TEST(Page, HoldsItsScriptsAndTheirDigests) {
  const app::Page page =
      app::MakePage({{"index.html",
                      "<link rel=\"stylesheet\" href=\"a.css\">"
                      "<script src=\"b.js\"></script><script src=\"c.js\"></script>"},
                     {"a.css", "p{}"},
                     {"b.js", "alert('b.js')"}});
  EXPECT_EQ(page.html,
            "<style>p{}</style><script>alert('b.js')</script><script src=\"c.js\"></script>");
  EXPECT_THAT(page.content_security_policy, StartsWith("default-src 'none'; style-src 'sha256-"));
  EXPECT_THAT(page.content_security_policy,
              HasSubstr("script-src 'sha256-HlK8Ple8EPrAMSAPC+nBSUCUL+ubNvM3VzVj9tW5/As=';"));
  EXPECT_TRUE(app::MakePage({}).html.empty());
}

}  // namespace
}  // namespace svmscore::serve
