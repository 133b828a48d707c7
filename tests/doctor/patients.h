// Documents with faults, and what doctor finds in them.
#ifndef TESTS_DOCTOR_PATIENTS_H_
#define TESTS_DOCTOR_PATIENTS_H_

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/app/edited.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {

inline std::string Example(const std::string& name) {
  return std::string(EXAMPLES_FOLDER "/") + name;
}

// A document with a fault.
struct Patient {
  std::string findings;  // worst first; every one that the document has
  Edits edits;
  std::string base = "";  // what is edited: one of the examples or of tests/app, or the sound one

  friend void PrintTo(const Patient& patient, std::ostream* os) {
    *os << patient.base << ": " << patient.findings;
  }
};
std::string TextOf(const Patient& patient);

// document_patients.cpp, machine_patients.cpp: found where the document is read.
std::vector<Patient> DocumentPatients();
std::vector<Patient> VectorPatients();
std::vector<Patient> MachinePatients();
// suspicion_patients.cpp: found by doctor.
std::vector<Patient> SuspicionPatients();
// scores_test.cpp: the kinds that only scores show.
std::vector<std::string> KindsOfScores();
// labelled_cases_test.cpp: the kinds that only cases whose outcome is known show.
std::vector<std::string> KindsOfLabelledCases();

struct Diagnosis {
  int status = -1;
  std::string findings;  // as "NAME at ELEMENT, NAME", in the order of the report
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
    if (!diagnosis.findings.empty()) diagnosis.findings += ", ";
    diagnosis.findings += finding["name"].get<std::string>();
    const auto& element = finding["element"];
    if (element.is_string()) diagnosis.findings += " at " + element.get<std::string>();
    changes = changes || finding["severity"] == "error";
  }
  EXPECT_EQ(ran.status, changes ? 1 : 0);
  return diagnosis;
}

}  // namespace svmscore::app

#endif  // TESTS_DOCTOR_PATIENTS_H_
