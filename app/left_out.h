// What a model's document says and scoring does not use: all that is passed over in silence while
// the document is read, told in words.
#ifndef APP_LEFT_OUT_H_
#define APP_LEFT_OUT_H_

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/elements.h"
#include "app/vector_index.h"
#include "host/pmml/loader.h"

namespace svmscore::app {

struct Finding {
  std::string kind;         // the same for all findings of one check
  std::string element;      // the name of the element at fault
  long line = 0;            // of its start tag; 0 where it is not known
  std::string consequence;  // what is the matter, and what it means for scores
};

// Gathers findings in the order in which the checks meet them.
class FindingList {
 public:
  explicit FindingList(const PmmlDocument& document) : document_(document) {}
  void Add(std::string_view kind, const Element* element, std::string consequence);
  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  const PmmlDocument& document_;
  std::vector<Finding> findings_;
};

// What the checks look at.
struct Inspected {
  const LoadedModel& loaded;
  const Element* root;   // PMML
  const Element* model;  // SupportVectorMachineModel
  const VectorIndex& vectors;
  bool classification;
  std::vector<std::string> categories;  // texts of the target's categories
};

// One file each: the document and the model's own attributes, its fields, its vectors, its
// machines.
void CheckDocument(const Inspected& inspected, FindingList& findings);
void CheckFields(const Inspected& inspected, FindingList& findings);
void CheckVectors(const Inspected& inspected, FindingList& findings);
void CheckMachines(const Inspected& inspected, FindingList& findings);

// Tells when the element's count attribute is given and is not `actual`.
void CheckCount(const Element* element, const std::string& attribute, std::size_t actual,
                std::string_view what, FindingList& findings);

std::vector<Finding> WhatIsLeftOut(const LoadedModel& loaded, const VectorIndex& vectors);

}  // namespace svmscore::app

#endif  // APP_LEFT_OUT_H_
