// Documents with derived fields, to be explained.
#ifndef TESTS_EXPLAIN_DOCUMENTS_H_
#define TESTS_EXPLAIN_DOCUMENTS_H_

#include <string>
#include <vector>

namespace svmscore::tools {

inline constexpr const char* kRadial = "<RadialBasisKernelType gamma='0.25'/>";

// A regression of the inputs a, b, c (numbers), colour (red, blue) and u, with a machine of three
// vectors. `transformations` and `fields` are elements; ' stands for ".
inline std::string ExplainedDocument(const std::string& transformations,
                                     const std::vector<std::string>& fields,
                                     const std::string& kernel = kRadial,
                                     const std::string& output = "") {
  std::string text =
      "<PMML xmlns='http://www.dmg.org/PMML-4_4' version='4.4'><Header/><DataDictionary>"
      "<DataField name='a' optype='continuous' dataType='double'/>"
      "<DataField name='b' optype='continuous' dataType='double'/>"
      "<DataField name='c' optype='continuous' dataType='double'>"
      "<Interval closure='closedClosed' leftMargin='-9' rightMargin='9'/></DataField>"
      "<DataField name='colour' optype='categorical' dataType='string'>"
      "<Value value='red'/><Value value='blue'/></DataField>"
      "<DataField name='u' optype='continuous' dataType='double'/>"
      "<DataField name='y' optype='continuous' dataType='double'/></DataDictionary>";
  const bool local = transformations.find("<LocalTransformations") != std::string::npos;
  if (!local) text += transformations;
  text +=
      "<SupportVectorMachineModel functionName='regression'><MiningSchema>"
      "<MiningField name='a'/><MiningField name='b'/><MiningField name='c'/>"
      "<MiningField name='colour'/><MiningField name='u'/>"
      "<MiningField name='y' usageType='target'/></MiningSchema>" +
      output;
  if (local) text += transformations;
  text += kernel + "<VectorDictionary><VectorFields>";
  for (const std::string& field : fields) text += field;
  text += "</VectorFields>";
  for (int v = 0; v < 3; ++v) {
    text += "<VectorInstance id='v" + std::to_string(v) + "'><Array type='real' n='" +
            std::to_string(fields.size()) + "'>";
    // Whole numbers, so that an indicator has values that it can have.
    for (int e = 0; e < static_cast<int>(fields.size()); ++e) {
      text += std::to_string((v * v + e * (v + 1)) % 2) + " ";
    }
    text += "</Array></VectorInstance>";
  }
  text += "</VectorDictionary><SupportVectorMachine><SupportVectors>";
  for (int v = 0; v < 3; ++v) text += "<SupportVector vectorId='v" + std::to_string(v) + "'/>";
  text +=
      "</SupportVectors><Coefficients absoluteValue='0.5'><Coefficient value='1.5'/>"
      "<Coefficient value='-2'/><Coefficient value='0.75'/></Coefficients>"
      "</SupportVectorMachine></SupportVectorMachineModel></PMML>";
  for (char& c : text) c = c == '\'' ? '"' : c;
  return text;
}

inline std::string Derived(const std::string& name, const std::string& expression) {
  return "<DerivedField name='" + name + "' optype='continuous' dataType='double'>" + expression +
         "</DerivedField>";
}
inline std::string Ref(const std::string& field) {
  return "<FieldRef field='" + field + "'/>";
}
inline std::string Apply(const std::string& function, const std::string& arguments) {
  return "<Apply function='" + function + "'>" + arguments + "</Apply>";
}
inline std::string Global(const std::string& fields) {
  return "<TransformationDictionary>" + fields + "</TransformationDictionary>";
}
inline std::string Local(const std::string& fields) {
  return "<LocalTransformations>" + fields + "</LocalTransformations>";
}

// Of a and the product of b and c: z = a / 2, bc = b * c, square = bc * bc.
inline std::string DocumentWithProduct(const std::string& kernel = kRadial) {
  return ExplainedDocument(Global(Derived("z", Apply("/", Ref("a") + "<Constant>2</Constant>")) +
                                  Derived("bc", Apply("*", Ref("b") + Ref("c"))) +
                                  Derived("square", Apply("*", Ref("bc") + Ref("bc")))),
                           {Ref("z"), Ref("square"), Ref("a"),
                            "<CategoricalPredictor name='colour' value='blue' coefficient='1'/>"},
                           kernel);
}

}  // namespace svmscore::tools

#endif  // TESTS_EXPLAIN_DOCUMENTS_H_
