#include <array>
#include <string_view>

#include "fuzz/grammar.h"

namespace svmscore::fuzz {
namespace {

constexpr std::array<std::string_view, 14> kVersions = {
    "4.4", "4.4", "4.3", "4.2", "4.1", "4.0", "3.2", "3.1", "3.0", "4.4.1", "2.1", "5.0", "", "4"};
constexpr std::array<std::string_view, 5> kNamespaces = {"", "http://www.dmg.org/PMML-4_4",
                                                         "http://www.dmg.org/PMML-3_0",
                                                         "https://www.dmg.org/PMML-4_3", "urn:x"};
constexpr std::array<std::string_view, 6> kUsages = {
    "active", "active", "active", "supplementary", "predicted", "analysisWeight"};
constexpr std::array<std::string_view, 13> kFeatures = {"predictedValue",
                                                        "predictedDisplayValue",
                                                        "probability",
                                                        "residual",
                                                        "standardDeviation",
                                                        "confidenceIntervalLower",
                                                        "confidenceIntervalUpper",
                                                        "transformedValue",
                                                        "decision",
                                                        "warning",
                                                        "standardError",
                                                        "entityId",
                                                        ""};
constexpr std::array<std::string_view, 6> kResultTypes = {"double", "string", "integer",
                                                          "double", "float",  "boolean"};

// What the parts of a model have to know about one another.
struct Shape {
  bool classification;
  bool pairs;  // one against one
  bool coefficients;
  Names classes;
  Names inputs;   // fields of the dictionary
  Names numbers;  // fields that vector fields may name
  std::size_t fields = 0;
  std::size_t vectors = 0;
};

Shape MakeShape(Choices& choices) {
  Shape shape{choices.Half(), choices.Half(), choices.Below(8) == 7, {}, {}, {}};
  constexpr std::array<std::string_view, 5> kClasses = {"a", "b", "c", "yes", "1"};
  const std::size_t classes = 2 + choices.Below(4);
  for (std::size_t i = 0; i < classes; ++i) shape.classes.emplace_back(kClasses[i]);
  for (std::size_t i = 0, count = 1 + choices.Below(4); i < count; ++i) {
    shape.inputs.push_back("x" + std::to_string(i));
  }
  shape.fields = 1 + choices.Below(4);
  shape.vectors = shape.coefficients ? 0 : 1 + choices.Below(6);
  return shape;
}

Node Target(const Shape& shape, Choices& choices) {
  Node target("DataField");
  target.Set("name", "t");
  target.Set("optype", shape.classification ? "categorical" : "continuous");
  target.Set("dataType", choices.Rarely()       ? std::string(choices.Pick(kResultTypes))
                         : shape.classification ? "string"
                                                : "double");
  if (!shape.classification) return target;
  for (const std::string& name : shape.classes) {
    if (!choices.Rarely()) target.Add("Value").Set("value", name);
  }
  return target;
}

Node MiningSchema(const Shape& shape, Choices& choices) {
  constexpr std::array<std::string_view, 4> kInvalid = {"returnInvalid", "asIs", "asMissing",
                                                        "asValue"};
  constexpr std::array<std::string_view, 3> kOutliers = {"asIs", "asMissingValues",
                                                         "asExtremeValues"};
  Node schema("MiningSchema");
  for (const std::string& name : shape.inputs) {
    Node& field = schema.Add("MiningField").Set("name", name);
    if (choices.Rarely()) field.Set("usageType", std::string(choices.Pick(kUsages)));
    if (choices.Half()) field.Set("missingValueReplacement", NumberText(choices));
    if (choices.Rarely()) field.Set("missingValueTreatment", "returnInvalid");
    if (choices.Half()) {
      field.Set("invalidValueTreatment", std::string(choices.Pick(kInvalid)));
      field.Set("invalidValueReplacement", NumberText(choices));
    }
    if (!choices.Rarely()) continue;
    field.Set("outliers", std::string(choices.Pick(kOutliers)));
    field.Set("lowValue", NumberText(choices)).Set("highValue", NumberText(choices));
  }
  schema.Add("MiningField").Set("name", "t").Set("usageType", "target");
  return schema;
}

Node Output(const Shape& shape, const Names& fields, Choices& choices) {
  Node output("Output");
  Names visible = fields;
  for (std::size_t i = 0, count = 1 + choices.Below(5); i < count; ++i) {
    const std::string feature(choices.Pick(kFeatures));
    Node& field = output.Add("OutputField").Set("name", "o" + std::to_string(i));
    field.Set("feature", feature);
    if (choices.Half()) field.Set("dataType", std::string(choices.Pick(kResultTypes)));
    if (choices.Half()) field.Set("value", choices.Pick(shape.classes));
    if (choices.Rarely()) field.Set("isFinalResult", "false");
    if (feature == "decision") {
      field.Add("Decisions").Add("Decision").Set("value", Word(choices));
    }
    if (feature == "decision" || feature == "transformedValue") {
      field.Add(Expression(visible, 2, choices));
    }
    visible.push_back("o" + std::to_string(i));
  }
  return output;
}

Node Targets(const Shape& shape, Choices& choices) {
  constexpr std::array<std::string_view, 3> kCasts = {"round", "ceiling", "floor"};
  Node targets("Targets");
  Node& target = targets.Add("Target");
  target.Set("field", "t");
  for (const char* name : {"min", "max", "rescaleFactor", "rescaleConstant"}) {
    if (choices.Half()) target.Set(name, NumberText(choices));
  }
  if (choices.Half()) target.Set("castInteger", std::string(choices.Pick(kCasts)));
  for (const std::string& name : shape.classes) {
    Node& value = target.Add("TargetValue");
    if (!shape.classification) {
      value.Set("defaultValue", NumberText(choices));
      break;
    }
    value.Set("value", name).Set("displayValue", Word(choices));
    value.Set("priorProbability", NumberText(choices));
  }
  return targets;
}

Node Kernel(Choices& choices) {
  constexpr std::array<std::string_view, 4> kKernels = {
      "LinearKernelType", "PolynomialKernelType", "RadialBasisKernelType", "SigmoidKernelType"};
  Node kernel{std::string(choices.Pick(kKernels))};
  for (const char* name : {"gamma", "coef0", "degree"}) {
    if (choices.Half()) kernel.Set(name, NumberText(choices));
  }
  return kernel;
}

std::string List(std::size_t count, Choices& choices) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += NumberText(choices) + ' ';
  return text;
}

Node Vector(const Shape& shape, Choices& choices) {
  if (choices.Half()) {
    Node dense("Array");
    dense.Set("type", "real").Set("n", std::to_string(shape.fields));
    dense.text = List(shape.fields, choices);
    return dense;
  }
  Node sparse("REAL-SparseArray");
  sparse.Set("n", choices.Rarely() ? NumberText(choices) : std::to_string(shape.fields));
  if (choices.Rarely()) sparse.Set("defaultValue", NumberText(choices));
  std::string indices;
  std::size_t count = 0;
  for (std::size_t f = 0; f < shape.fields; ++f) {
    if (choices.Half()) continue;
    indices += (choices.Rarely() ? NumberText(choices) : std::to_string(f + 1)) + ' ';
    ++count;
  }
  sparse.Add("Indices").text = indices;
  sparse.Add(choices.Rarely() ? "Entries" : "REAL-Entries").text =
      List(count + (choices.Rarely() ? 1 : 0), choices);
  return sparse;
}

Node VectorDictionary(const Shape& shape, Choices& choices) {
  Node dictionary("VectorDictionary");
  dictionary.Set("numberOfVectors", std::to_string(shape.vectors));
  Node& fields = dictionary.Add("VectorFields");
  for (std::size_t i = 0; i < shape.fields; ++i) {
    const std::string name = choices.Pick(shape.numbers);
    if (choices.Below(4) == 3) {
      Node& predictor = fields.Add("CategoricalPredictor").Set("name", name);
      predictor.Set("value", choices.Half() ? NumberText(choices) : Word(choices));
      predictor.Set("coefficient", choices.Rarely() ? NumberText(choices) : "1");
    } else {
      fields.Add("FieldRef").Set("field", name);
    }
  }
  for (std::size_t i = 0; i < shape.vectors; ++i) {
    dictionary.Add("VectorInstance").Set("id", "v" + std::to_string(i)).Add(Vector(shape, choices));
  }
  return dictionary;
}

void AddExtensions(const Shape& shape, Node& machine, Choices& choices) {
  if (!choices.Half()) return;
  Node& extension = machine.Add("Extension").Set("extender", "svmscore");
  if (shape.classification) {
    extension.Add("ResponseCategory")
        .Set("response", choices.Pick(shape.classes))
        .Set("nonResponse", choices.Pick(shape.classes));
    extension.Add("ProbabilityParameters")
        .Set("A", NumberText(choices))
        .Set("B", NumberText(choices));
  } else {
    extension.Add("StandardDeviation").text = NumberText(choices);
  }
}

Node Machine(const Shape& shape, const std::string& target, const std::string& alternate,
             Choices& choices) {
  Node machine("SupportVectorMachine");
  if (!target.empty()) machine.Set("targetCategory", target);
  if (!alternate.empty()) machine.Set("alternateTargetCategory", alternate);
  if (choices.Rarely()) machine.Set("threshold", NumberText(choices));
  AddExtensions(shape, machine, choices);
  const std::size_t terms = shape.coefficients ? shape.fields : choices.Below(5);
  if (!shape.coefficients) {
    Node& vectors = machine.Add("SupportVectors");
    for (std::size_t i = 0; i < terms; ++i) {
      vectors.Add("SupportVector").Set("vectorId", "v" + std::to_string(choices.Below(6)));
    }
  }
  Node& coefficients = machine.Add("Coefficients").Set("absoluteValue", NumberText(choices));
  for (std::size_t i = 0; i < terms; ++i) {
    coefficients.Add("Coefficient").Set("value", NumberText(choices));
  }
  return machine;
}

void AddMachines(const Shape& shape, Node& model, Choices& choices) {
  const Names& classes = shape.classes;
  if (!shape.classification) {
    model.Add(Machine(shape, "", "", choices));
    return;
  }
  for (std::size_t i = 0; i < classes.size(); ++i) {
    if (!shape.pairs) model.Add(Machine(shape, classes[i], "", choices));
    for (std::size_t j = i + 1; shape.pairs && j < classes.size(); ++j) {
      model.Add(Machine(shape, classes[i], classes[j], choices));
    }
  }
}

Node Verification(const Shape& shape, Choices& choices) {
  Node verification("ModelVerification");
  Node& fields = verification.Add("VerificationFields");
  Names columns = shape.inputs;
  columns.emplace_back(choices.Half() ? "t" : "o0");
  for (const std::string& column : columns) {
    Node& field = fields.Add("VerificationField").Set("field", column).Set("column", column);
    if (choices.Rarely()) field.Set("precision", NumberText(choices));
  }
  Node& table = verification.Add("InlineTable");
  for (std::size_t left = 1 + choices.Below(3); left > 0; --left) {
    Node& row = table.Add("row");
    for (const std::string& column : columns) row.Add(column).text = NumberText(choices);
  }
  return verification;
}

Node Model(Shape& shape, Choices& choices) {
  Node model("SupportVectorMachineModel");
  model.Set("functionName", shape.classification ? "classification" : "regression");
  if (!choices.Rarely()) {
    model.Set("classificationMethod", shape.pairs ? "OneAgainstOne" : "OneAgainstAll");
  }
  if (choices.Half()) model.Set("maxWins", choices.Half() ? "true" : "false");
  if (choices.Half()) model.Set("threshold", NumberText(choices));
  if (shape.coefficients) model.Set("svmRepresentation", "Coefficients");
  if (choices.Rarely()) model.Set("alternateBinaryTargetCategory", choices.Pick(shape.classes));
  model.Add(MiningSchema(shape, choices));
  Names derived = shape.numbers;
  Node local("LocalTransformations");
  if (choices.Below(4) == 3) local = Transformations(local.name, "l", derived, choices);
  if (choices.Half()) model.Add(Output(shape, derived, choices));
  if (choices.Half()) model.Add(Targets(shape, choices));
  if (!local.children.empty()) model.Add(std::move(local));
  shape.numbers = std::move(derived);
  model.Add(Kernel(choices));
  model.Add(VectorDictionary(shape, choices));
  AddMachines(shape, model, choices);
  if (choices.Half()) model.Add(Verification(shape, choices));
  return model;
}

}  // namespace

Node Document(Choices& choices) {
  Shape shape = MakeShape(choices);
  Node root("PMML");
  root.Set("version", std::string(choices.Rarely() ? choices.Pick(kVersions) : kVersions[0]));
  const std::string name_space(choices.Pick(kNamespaces));
  if (!name_space.empty()) root.Set("xmlns", name_space);
  root.Add("Header").Add("Application").Set("name", "fuzz");
  Node& dictionary = root.Add("DataDictionary");
  for (const std::string& name : shape.inputs) {
    if (choices.Half()) {
      dictionary.Add(DataField(name, choices));
    } else {
      dictionary.Add("DataField")
          .Set("name", name)
          .Set("optype", "continuous")
          .Set("dataType", "double");
    }
  }
  dictionary.Add(Target(shape, choices));
  shape.numbers = shape.inputs;
  if (choices.Below(4) == 3) {
    root.Add(Transformations("TransformationDictionary", "d", shape.numbers, choices));
  }
  root.Add(Model(shape, choices));
  return root;
}

}  // namespace svmscore::fuzz
