// Every finding has a page, every page belongs to a finding, and page and index agree with the
// catalogue.
#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "host/findings/finding.h"
#include "tests/app/temporary_folder.h"

namespace svmscore {
namespace {

std::string OnOneLine(const std::string& text) {
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string LabelOf(const FindingKind& kind) {
  const bool hidden = kind.of_class == FindingClass::kError && !kind.IsRefusedWhenStrict();
  return std::string(ClassName(kind.of_class)) + (hidden ? ", for doctor alone" : "");
}

TEST(Findings, HaveAPageEach) {
  const std::filesystem::path folder(FINDINGS_FOLDER);
  std::set<std::string> pages;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    pages.insert(entry.path().stem());
  }
  EXPECT_EQ(pages.erase("README"), 1u);
  const std::string index = app::ReadFile(folder / "README.md");
  std::set<std::string> names;
  for (const FindingKind& kind : AllFindingKinds()) {
    const std::string name(kind.name);
    const std::string consequence(kind.consequence);
    EXPECT_TRUE(names.insert(name).second) << name << " is the name of two kinds";
    EXPECT_NE(
        index.find("[" + name + "](" + name + ".md) | " + LabelOf(kind) + " | " + consequence),
        std::string::npos)
        << "the index lacks " << name;
    if (!std::filesystem::exists(folder / (name + ".md"))) continue;
    const std::string page = OnOneLine(app::ReadFile(folder / (name + ".md")));
    EXPECT_TRUE(page.ends_with("Consequence (" + LabelOf(kind) + "): " + consequence +
                               ". Remedy: " + std::string(kind.remedy) + "."))
        << page;
  }
  EXPECT_EQ(pages, names);
}

}  // namespace
}  // namespace svmscore
