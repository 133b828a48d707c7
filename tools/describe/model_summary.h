// A summary of a model, gathered from its document and its dictionary.
#ifndef TOOLS_DESCRIBE_MODEL_SUMMARY_H_
#define TOOLS_DESCRIBE_MODEL_SUMMARY_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/load/loader.h"
#include "host/output/scheme.h"
#include "tools/findings/finding_list.h"

namespace svmscore::tools {

using output::Method;
using output::Percentages;
using output::Scheme;

struct InputSummary {
  std::string name;
  std::string type;  // the data type as documents spell it
  std::string optype;
  bool needed = false;
  std::optional<std::string> replacement;  // of a missing value
};

struct MachineSummary {
  std::string target;     // empty if the machine names none
  std::string alternate;  // likewise
  double threshold = 0.0;
  double offset = 0.0;  // added to the sum of the kernel's terms
  std::size_t terms = 0;
};

struct ModelSummary {
  std::string file;
  std::string pmml_version;
  std::string producer;  // name and version of the program that wrote the document
  std::string model_name;
  Scheme scheme;
  bool max_wins = false;
  double threshold = 0.0;
  std::string kernel;  // linear, polynomial, radial basis, sigmoid
  std::vector<std::pair<std::string, double>> parameters;  // that the kernel uses
  std::string target;
  std::string target_type;
  std::vector<std::string> categories;
  std::string missing_policy;  // as --missing-policy spells it
  std::string votes_by;        // what decides votes first: single, double, exact
  std::string why_exact;       // why nothing but exact decision values does; empty where more does
  std::vector<InputSummary> inputs;
  std::size_t derived_fields = 0;
  std::size_t vector_fields = 0;
  std::size_t vectors = 0;
  std::size_t terms = 0;
  std::vector<MachineSummary> machines;
  std::vector<std::string> output_fields;  // the columns that the document names
  std::optional<std::string> refused;      // why scoring with the model is refused
  std::vector<Finding> findings;           // how the document is read, and what of it has no effect
  std::optional<std::string> listing;      // the model's own Display text, if it was asked for
};

// Leaves `refused` and `listing` to the caller. [one thread] for each document. Owns: the caller.
// Lives: the model for the call. Fails: std::bad_alloc.
ModelSummary Summarise(const LoadedModel& loaded);

// The names that a summary uses. [any thread] Fails: std::bad_alloc.
std::string NameOf(Method method);
std::string NameOf(Percentages percentages);

}  // namespace svmscore::tools

#endif  // TOOLS_DESCRIBE_MODEL_SUMMARY_H_
