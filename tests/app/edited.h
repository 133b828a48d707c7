// Documents made of others by changing them.
#ifndef TESTS_APP_EDITED_H_
#define TESTS_APP_EDITED_H_

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/app/temporary_folder.h"

namespace svmscore::app {

// Texts and what to write in their places, in turns; in all of them ' stands for ".
using Edits = std::vector<std::string>;

// Replaces the first occurrence of a text; after a leading *, every match of a pattern.
inline std::string Edited(std::string text, Edits edits) {
  for (std::string& edit : edits) std::replace(edit.begin(), edit.end(), '\'', '"');
  for (std::size_t i = 0; i + 1 < edits.size(); i += 2) {
    const std::size_t at = text.find(edits[i]);
    if (edits[i].starts_with('*')) {
      const std::regex pattern(edits[i].substr(1));
      EXPECT_TRUE(std::regex_search(text, pattern)) << "nothing to change: " << edits[i];
      text = std::regex_replace(text, pattern, edits[i + 1]);
    } else if (at == std::string::npos) {
      ADD_FAILURE() << "nothing to change: " << edits[i];
    } else {
      text.replace(at, edits[i].size(), edits[i + 1]);
    }
  }
  return text;
}

// The same with a file's text, for a new file of the folder.
inline std::string EditedFile(const TemporaryFolder& folder, const std::string& path,
                              const Edits& edits) {
  return folder.Write("model.pmml", Edited(ReadFile(path), edits));
}

}  // namespace svmscore::app

#endif  // TESTS_APP_EDITED_H_
