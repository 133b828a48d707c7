// The parts of a document that checks look at.
#ifndef TOOLS_FINDINGS_INSPECTED_H_
#define TOOLS_FINDINGS_INSPECTED_H_

#include <string>
#include <unordered_set>
#include <vector>

#include "host/load/loader.h"
#include "host/xml/attributes.h"
#include "tools/findings/vector_index.h"

namespace svmscore::tools {

// Points into the document, and into the model if there is one.
struct Inspected {
  const PmmlDocument& document;
  const Element* root;   // PMML
  const Element* model;  // SupportVectorMachineModel
  VectorIndex vectors;
  bool classification;
  std::string target;                      // the name of the target field; empty without one
  std::vector<std::string> categories;     // texts of the target's categories
  std::unordered_set<std::string> fields;  // the names of the data dictionary
  const output::OutputPlan* output;        // null where it could not be read
};

// [one thread] for each document, as the form below. Lives: the argument, longer than the result.
// Fails: std::bad_alloc.
Inspected Inspect(const LoadedModel& loaded);
// The same for a document without its model, from its declarations. REQUIRES: it has a model
// element.
Inspected Inspect(const PmmlDocument& document);

}  // namespace svmscore::tools

#endif  // TOOLS_FINDINGS_INSPECTED_H_
