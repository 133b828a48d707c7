// Runs svmscore calibrate and scores with what it wrote; and a small model with a hold-out.
#ifndef TESTS_CALIBRATE_CALIBRATED_H_
#define TESTS_CALIBRATE_CALIBRATED_H_

#include <string>

#include <nlohmann/json.hpp>

#include "tests/app/columns_of.h"
#include "tests/app/run_program.h"
#include "tests/app/temporary_folder.h"

namespace svmscore::app {

// What the calibrated document scores, and what calibrate reported.
struct Calibrated {
  Ran run;
  nlohmann::json report;
  std::string document;
  Columns scores;
};
Calibrated Calibrate(const TemporaryFolder& folder, const std::string& document,
                     const std::string& holdout, const std::string& actual, Arguments options = {});

std::string Example(const std::string& name);
std::string Replaced(std::string text, const std::string& what, const std::string& by);

// Three vectors that a case is compared with, on a plane: f = x - y.
extern const char* const kPlane;
// 40 rows, of which some are mislabelled.
std::string PlaneCases();

}  // namespace svmscore::app

#endif  // TESTS_CALIBRATE_CALIBRATED_H_
