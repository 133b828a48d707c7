// Documents put together from parts, and what becomes of them: as trees, as steps, as scores.
#ifndef TESTS_INTAKE_DOCUMENT_PARTS_H_
#define TESTS_INTAKE_DOCUMENT_PARTS_H_

#include <string>
#include <utility>
#include <vector>

#include "host/intake/make_readable.h"
#include "host/load/loader.h"
#include "host/model/ss_exception.h"

namespace svmscore_test {

std::string Field(const std::string& name, const std::string& optype = "continuous",
                  const std::string& type = "double", const std::string& values = "");
// The attributes of a root, with the namespace of the version.
std::string Version(char major, char minor);

// A regression over the numbers x and y: one linear machine with the vectors a and b, the
// coefficients 2 and -3 and the absolute value 0.5. Tests replace the parts that they are about.
struct Parts {
  std::string root = Version('4', '4');
  std::string fields = Field("x") + Field("y") + Field("colour", "categorical", "string");
  std::string target = Field("t");
  std::string global;  // between the dictionary and the model
  std::string model = "functionName='regression'";
  std::string schema =
      "<MiningField name='x'/><MiningField name='y'/><MiningField name='colour'/>"
      "<MiningField name='t' usageType='target'/>";
  std::string local;  // between the schema and the kernel
  std::string kernel = "<LinearKernelType/>";
  std::string positions = "<FieldRef field='x'/><FieldRef field='y'/>";
  std::string vectors =
      "<VectorInstance id='a'><REAL-SparseArray n='2'><Indices>1 2</Indices>"
      "<REAL-Entries>0.25 -1.5</REAL-Entries></REAL-SparseArray></VectorInstance>"
      "<VectorInstance id='b'><REAL-SparseArray n='2'><Indices>2</Indices>"
      "<REAL-Entries>0.1</REAL-Entries></REAL-SparseArray></VectorInstance>";
  std::string machines = Machine("");

  // A machine over both vectors.
  static std::string Machine(const std::string& attributes);
  // One that decides between two categories.
  static std::string Machine(const std::string& category, const std::string& alternate);
  // Makes it a classification into yes and no, or by a target of other categories.
  void Classify();
  void Classify(const std::vector<std::string>& categories, const std::string& type = "string");
  std::string Text() const;
};

// A Machine's extension that gives it probabilities.
std::string Sigmoid(const std::string& response, const std::string& other, int a, int b);

// Replaces every `from`; there must be at least one.
std::string Replaced(std::string text, const std::string& from, const std::string& to);

struct Reading {
  svmscore::PmmlDocument document;
  std::vector<svmscore::Finding> findings;

  // Like "dense-array 2, zero-vector": the kinds of findings in order, with their places where
  // not 1.
  std::string Steps() const;
  // The n-th element of that name as XML text without white space between elements; attributes by
  // name.
  std::string Show(const std::string& name, std::size_t n = 0) const;
};

// The document as it is written.
Reading Unread(const std::string& text);
// Made readable. Checks that making it readable again changes nothing.
Reading Read(const std::string& text, svmscore::IntakeMode mode = svmscore::IntakeMode::kTolerate);
// The error that reading ends in: code, element and line, like "260153 Array:6"; for a step that
// the strict mode refuses also its name, like "260307 dense-array Array:6".
std::string Refusal(const std::string& text,
                    svmscore::IntakeMode mode = svmscore::IntakeMode::kTolerate);

// Inputs by name; an input that is left out or empty is missing.
using Case = std::vector<std::pair<std::string, std::string>>;
Case At(const std::string& x, const std::string& y);
// The prediction of the loaded document, a number in its shortest exact form; for a case that
// cannot be scored the status, like "status 90027"; for a document that is refused, its refusal.
std::string Score(const std::string& text, const Case& inputs,
                  svmscore::LoadChecks checks = svmscore::LoadChecks::kRefuse);
svmscore::LoadedModel Load(const std::string& text, svmscore::LoadChecks checks);
// The same for a document that predicts a number.
double Predict(const std::string& text, const Case& inputs);

// Derived fields and functions of the whole document, as Parts::global.
inline std::string Global(const std::string& content) {
  return "<TransformationDictionary>" + content + "</TransformationDictionary>";
}

}  // namespace svmscore_test

#endif  // TESTS_INTAKE_DOCUMENT_PARTS_H_
