// Documents put together from parts, and what becomes of them: as trees, as steps, as scores.
#ifndef TESTS_INTAKE_READING_H_
#define TESTS_INTAKE_READING_H_

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "host/pmml/intake.h"
#include "host/ss_exception.h"

namespace svmscore_test {

// A regression over the numbers x and y: one linear machine with the vectors a and b, the
// coefficients 2 and -3 and the absolute value 0.5. Tests replace the parts that they are about.
struct Parts {
  std::string root = R"(version="4.4")";  // without a namespace it gets that of its version
  std::string fields = R"(<DataField name="x" optype="continuous" dataType="double"/>)"
                       R"(<DataField name="y" optype="continuous" dataType="double"/>)"
                       R"(<DataField name="colour" optype="categorical" dataType="string"/>)";
  std::string target = R"(<DataField name="t" optype="continuous" dataType="double"/>)";
  std::string global;  // between the dictionary and the model
  std::string model = R"(functionName="regression")";
  std::string schema =
      R"(<MiningField name="x"/><MiningField name="y"/><MiningField name="colour"/>)"
      R"(<MiningField name="t" usageType="target"/>)";
  std::string local;  // between the schema and the kernel
  std::string kernel = "<LinearKernelType/>";
  std::string positions = R"(<FieldRef field="x"/><FieldRef field="y"/>)";
  std::string vectors =
      R"(<VectorInstance id="a"><REAL-SparseArray n="2"><Indices>1 2</Indices>)"
      R"(<REAL-Entries>0.25 -1.5</REAL-Entries></REAL-SparseArray></VectorInstance>)"
      R"(<VectorInstance id="b"><REAL-SparseArray n="2"><Indices>2</Indices>)"
      R"(<REAL-Entries>0.1</REAL-Entries></REAL-SparseArray></VectorInstance>)";
  std::string machines = Machine("");

  // A machine over both vectors.
  static std::string Machine(const std::string& attributes);
  // Makes it a classification into yes and no.
  void Classify();
  std::string Text() const;
};

// Replaces every `from`; there must be some.
std::string Replaced(std::string text, const std::string& from, const std::string& to);

struct Reading {
  svmscore::PmmlDocument document;
  std::vector<svmscore::IntakeStep> steps;

  // Like "dense-array 2, zero-vector 1": the steps in order with their counts.
  std::string Steps() const;
  // The n-th element of that name as XML text without white space between elements; attributes by
  // name.
  std::string Show(const std::string& name, std::size_t n = 0) const;
};

Reading Read(const std::string& text, svmscore::IntakeMode mode = svmscore::IntakeMode::kRefuse);
// The exception in which reading ends, its place in words.
MCZandor_850::SSException Refusal(const std::string& text,
                                  svmscore::IntakeMode mode = svmscore::IntakeMode::kRefuse);

// Inputs by name; an input that is left out is missing.
using Case = std::initializer_list<std::pair<std::string, std::string>>;
// The prediction of the loaded document, a number in its shortest exact form; for a case that
// cannot be scored the status, like "status 90027".
std::string Score(const std::string& text, Case inputs);

}  // namespace svmscore_test

#endif  // TESTS_INTAKE_READING_H_
