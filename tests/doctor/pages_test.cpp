// Every finding has a page, every page a finding, and the index names them all.
#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/app/temporary_folder.h"
#include "tools/findings/finding_list.h"

namespace svmscore::tools {
namespace {

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
    EXPECT_TRUE(names.insert(name).second) << name << " is the name of two kinds";
    EXPECT_NE(index.find("](" + name + ".md) | " + std::string(SeverityName(kind.severity))),
              std::string::npos)
        << "the index lacks " << name;
  }
  EXPECT_EQ(pages, names);
}

}  // namespace
}  // namespace svmscore::tools
