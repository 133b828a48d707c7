// Documents with faults, and what doctor finds in them.
#ifndef TESTS_DOCTOR_PATIENTS_H_
#define TESTS_DOCTOR_PATIENTS_H_

#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "app/finding.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {

inline std::string Example(const std::string& name) {
  return std::string(EXAMPLES_FOLDER "/") + name;
}

// A place of a document and what to write there; a pattern where `all` is set.
struct Edit {
  std::string from;
  std::string to;
  bool all = false;
};

inline std::string Edited(const std::string& path, const std::vector<Edit>& edits) {
  std::string text = ReadFile(path);
  for (const Edit& edit : edits) {
    if (edit.all) {
      text = std::regex_replace(text, std::regex(edit.from), edit.to);
      continue;
    }
    const std::size_t at = text.find(edit.from);
    EXPECT_NE(at, std::string::npos) << edit.from;
    if (at != std::string::npos) text.replace(at, edit.from.size(), edit.to);
  }
  return text;
}

struct Diagnosis {
  int status = -1;
  std::vector<std::string> findings;  // as "NAME at ELEMENT", in the order of the report
  nlohmann::json json;
};

inline Diagnosis Diagnose(const std::string& document, const std::vector<std::string>& more = {}) {
  const TemporaryFolder folder;
  std::vector<std::string> arguments = {"doctor", folder.Write("model.pmml", document), "--json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const Ran ran = RunProgram(arguments);
  Diagnosis diagnosis{ran.status, {}, nlohmann::json::parse(ran.out, nullptr, false)};
  EXPECT_FALSE(diagnosis.json.is_discarded()) << ran.out << ran.err;
  if (diagnosis.json.is_discarded()) return diagnosis;
  bool changes = false;
  for (const auto& finding : diagnosis.json["findings"]) {
    const std::string name = finding["name"];
    const bool placed = finding["element"].is_string();
    diagnosis.findings.push_back(placed ? name + " at " + finding["element"].get<std::string>()
                                        : name);
    changes = changes || finding["severity"] == "error";
  }
  EXPECT_EQ(ran.status, changes ? 1 : 0);
  return diagnosis;
}

}  // namespace svmscore::app

#endif  // TESTS_DOCTOR_PATIENTS_H_
