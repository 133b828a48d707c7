#include "tools/convert/libsvm_document.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

#include "host/text/number_text.h"
#include "tools/convert/document_names.h"
#include "tools/convert/document_text.h"
#include "tools/convert/libsvm_model.h"
#include "tools/convert/scale_ranges.h"

namespace svmscore::tools {
namespace {

// A decision value up to the threshold means the second category of a pair, and LIBSVM takes that
// for 0 too. This is the smallest number above 0 that no reader takes for 0 or refuses.
constexpr double kAboveZero = std::numeric_limits<double>::min();

// Whole numbers in their shortest spelling, of which an integer field's categories may be.
bool IsPlainWhole(const std::string& text) {
  const auto number = ParseInteger(text);
  return number && std::to_string(*number) == text;
}

void WriteDictionary(DocumentText& text, const LibsvmModel& model, const DocumentNames& names) {
  text.Element("DataDictionary").Attribute("numberOfFields", names.features.size() + 1).Open();
  for (const std::string& name : names.features) {
    text.Element("DataField").Attribute("name", name).Attribute("optype", "continuous");
    text.Attribute("dataType", "double").Close();
  }
  text.Element("DataField").Attribute("name", names.target);
  if (model.IsRegression()) {
    text.Attribute("optype", "continuous").Attribute("dataType", "double").Close();
  } else {
    const bool whole = std::all_of(names.labels.begin(), names.labels.end(), IsPlainWhole);
    text.Attribute("optype", "categorical").Attribute("dataType", whole ? "integer" : "string");
    text.Open();
    for (const std::string& label : names.labels) {
      text.Element("Value").Attribute("value", label).Close();
    }
    text.End();
  }
  text.End();
}

void WriteSchema(DocumentText& text, const DocumentNames& names) {
  text.Element("MiningSchema").Open();
  for (const std::string& name : names.features) {
    text.Element("MiningField").Attribute("name", name).Close();
  }
  text.Element("MiningField").Attribute("name", names.target).Attribute("usageType", "target");
  text.Close();
  text.End();
}

// What the model was trained on is scaled; the prediction is not.
void WriteTargets(DocumentText& text, const ScaleRanges::Target& target,
                  const DocumentNames& names) {
  const double factor =
      (target.source.to - target.source.from) / (target.scaled.to - target.scaled.from);
  const double constant = target.source.from - target.scaled.from * factor;
  if (!std::isfinite(factor) || !std::isfinite(constant)) {
    throw ConversionError(ConversionInput::kRanges, 0,
                          "the scale of the answers is beyond any number",
                          "scale them to a wider range");
  }
  text.Element("Targets").Open();
  text.Element("Target").Attribute("field", names.target).Attribute("optype", "continuous");
  text.Attribute("rescaleFactor", factor).Attribute("rescaleConstant", constant).Close();
  text.End();
}

void WriteConstant(DocumentText& text, double number) {
  text.Element("Constant").Attribute("dataType", "double").Content(std::array{number});
}

DocumentText& WriteApply(DocumentText& text, const char* function) {
  return text.Element("Apply").Attribute("function", function);
}

// The steps in which svm-scale computes.
void WriteLine(DocumentText& text, const std::string& name, const ScaleRange& source,
               const ScaleRange& scaled) {
  WriteApply(text, "+").Open();
  WriteConstant(text, scaled.from);
  WriteApply(text, "/").Open();
  WriteApply(text, "*").Open();
  WriteConstant(text, scaled.to - scaled.from);
  WriteApply(text, "-").Open();
  text.Element("FieldRef").Attribute("field", name).Close();
  WriteConstant(text, source.from);
  text.End();
  text.End();
  WriteConstant(text, source.to - source.from);
  text.End();
  text.End();
}

void WriteScaled(DocumentText& text, const std::string& name, const ScaleRange& source,
                 const ScaleRange& scaled) {
  const double width = source.to - source.from;
  // svm-scale does not compute the ends. The lower one comes out either way.
  if (scaled.from + (scaled.to - scaled.from) * width / width == scaled.to) {
    return WriteLine(text, name, source, scaled);
  }
  WriteApply(text, "if").Open();
  WriteApply(text, "equal").Open();
  text.Element("FieldRef").Attribute("field", name).Close();
  WriteConstant(text, source.to);
  text.End();
  WriteConstant(text, scaled.to);
  WriteLine(text, name, source, scaled);
  text.End();
}

void WriteTransformations(DocumentText& text, const ScaleRanges& ranges,
                          const DocumentNames& names) {
  text.Element("LocalTransformations").Open();
  for (std::size_t i = 0; i < names.features.size(); ++i) {
    text.Element("DerivedField").Attribute("name", names.scaled[i]);
    text.Attribute("optype", "continuous").Attribute("dataType", "double").Open();
    const auto range = ranges.features.find(static_cast<std::int32_t>(i + 1));
    if (range != ranges.features.end()) {
      WriteScaled(text, names.features[i], range->second, ranges.scaled);
    } else {
      // 0 whatever the value, and an input like the others, so that inputs keep their order.
      WriteApply(text, "*").Attribute("mapMissingTo", "0").Open();
      WriteConstant(text, 0.0);
      text.Element("FieldRef").Attribute("field", names.features[i]).Close();
      text.End();
    }
    text.End();
  }
  text.End();
}

void WriteKernel(DocumentText& text, const LibsvmModel& model) {
  switch (model.kernel) {
    case LibsvmKernel::kLinear:
      return text.Element("LinearKernelType").Close();
    case LibsvmKernel::kPolynomial:
      text.Element("PolynomialKernelType").Attribute("gamma", model.gamma);
      return text.Attribute("coef0", model.coef0).Attribute("degree", model.degree).Close();
    case LibsvmKernel::kRbf:
      return text.Element("RadialBasisKernelType").Attribute("gamma", model.gamma).Close();
    case LibsvmKernel::kSigmoid:
      text.Element("SigmoidKernelType").Attribute("gamma", model.gamma);
      return text.Attribute("coef0", model.coef0).Close();
  }
}

void WriteVector(DocumentText& text, std::size_t id, std::size_t length,
                 std::span<const std::int32_t> indices, std::span<const double> values) {
  text.Element("VectorInstance").Attribute("id", id).Open();
  text.Element("REAL-SparseArray").Attribute("n", length).Open();
  if (values.empty()) {  // readers disagree on an array without entries
    text.Element("Indices").Content(std::array{1});
    text.Element("REAL-Entries").Content(std::array{0.0});
  } else {
    text.Element("Indices").Content(indices);
    text.Element("REAL-Entries").Content(values);
  }
  text.End();
  text.End();
}

// The ids of vectors count from 1. A model without vectors has one, of zeros.
void WriteVectors(DocumentText& text, const LibsvmModel& model, const DocumentNames& names) {
  const std::size_t count = std::max<std::size_t>(model.vector_count, 1);
  text.Element("VectorDictionary").Attribute("numberOfVectors", count).Open();
  text.Element("VectorFields").Attribute("numberOfFields", names.features.size()).Open();
  for (const std::string& name : names.scaled.empty() ? names.features : names.scaled) {
    text.Element("FieldRef").Attribute("field", name).Close();
  }
  text.End();
  const std::span indices(model.indices);
  const std::span values(model.values);
  std::size_t begin = 0;
  for (std::size_t v = 0; v < model.vector_count; ++v) {
    const std::size_t size = model.entry_ends[v] - begin;
    WriteVector(text, v + 1, names.features.size(), indices.subspan(begin, size),
                values.subspan(begin, size));
    begin = model.entry_ends[v];
  }
  if (model.vector_count == 0) WriteVector(text, 1, names.features.size(), {}, {});
  text.End();
}

struct Term {
  std::size_t vector_id;
  double coefficient;
};

// A machine needs terms. Where it has none there are two that cancel each other: a coefficient of 0
// looks like a lost one.
void WriteTerms(DocumentText& text, std::vector<Term> terms, double rho) {
  if (terms.empty()) terms = {{1, 1.0}, {1, -1.0}};
  text.Element("SupportVectors").Attribute("numberOfSupportVectors", terms.size()).Open();
  for (const Term& term : terms) {
    text.Element("SupportVector").Attribute("vectorId", term.vector_id).Close();
  }
  text.End();
  text.Element("Coefficients").Attribute("numberOfCoefficients", terms.size());
  text.Attribute("absoluteValue", 0.0 - rho).Open();
  for (const Term& term : terms) {
    text.Element("Coefficient").Attribute("value", term.coefficient).Close();
  }
  text.End();
}

// Adds the terms of the vectors of a class, in a row of their coefficients.
void AddTerms(const LibsvmModel& model, std::size_t begin, std::size_t end, std::size_t row,
              std::vector<Term>& terms) {
  for (std::size_t v = begin; v < end; ++v) {
    const double coefficient = model.Coefficient(v, row);
    if (coefficient != 0.0) terms.push_back({v + 1, coefficient});
  }
}

// LIBSVM's decision values are positive for the first class of a pair, and PMML's target category
// is the one below the threshold.
void OpenMachine(DocumentText& text, const std::string& first, const std::string& second) {
  text.Element("SupportVectorMachine").Attribute("targetCategory", second);
  text.Attribute("alternateTargetCategory", first).Open();
}

void WriteProbability(DocumentText& text, const std::string& first, const std::string& second,
                      double a, double b) {
  text.Element("Extension").Attribute("extender", "svmscore").Open();
  text.Element("ResponseCategory").Attribute("response", first).Attribute("nonResponse", second);
  text.Close();
  text.Element("ProbabilityParameters").Attribute("A", a).Attribute("B", b).Close();
  text.End();
}

void WritePairs(DocumentText& text, const LibsvmModel& model, const DocumentNames& names) {
  const auto begin_of = [&model](std::size_t c) { return c == 0 ? 0 : model.class_ends[c - 1]; };
  std::size_t machine = 0;
  for (std::size_t i = 0; i < names.labels.size(); ++i) {
    for (std::size_t j = i + 1; j < names.labels.size(); ++j, ++machine) {
      OpenMachine(text, names.labels[i], names.labels[j]);
      if (!model.prob_b.empty()) {
        WriteProbability(text, names.labels[i], names.labels[j], model.prob_a[machine],
                         model.prob_b[machine]);
      }
      std::vector<Term> terms;
      AddTerms(model, begin_of(i), model.class_ends[i], j - 1, terms);
      AddTerms(model, begin_of(j), model.class_ends[j], i, terms);
      WriteTerms(text, std::move(terms), model.rho[machine]);
      text.End();
    }
  }
}

void WriteOneMachine(DocumentText& text, const LibsvmModel& model, const DocumentNames& names) {
  std::vector<Term> terms;
  AddTerms(model, 0, model.vector_count, 0, terms);
  if (model.IsRegression()) {
    text.Element("SupportVectorMachine").Open();
    if (!model.prob_a.empty()) {
      text.Element("Extension").Attribute("extender", "svmscore").Open();
      text.Element("StandardDeviation").Content(model.prob_a);
      text.End();
    }
  } else {
    OpenMachine(text, names.labels[0], names.labels[1]);
  }
  WriteTerms(text, std::move(terms), model.rho[0]);
  text.End();
}

void WriteModel(DocumentText& text, const LibsvmModel& model,
                const std::optional<ScaleRanges>& ranges, const DocumentNames& names) {
  text.Element("SupportVectorMachineModel");
  text.Attribute("functionName", model.IsRegression() ? "regression" : "classification");
  text.Attribute("algorithmName", NameOf(model.type));
  text.Attribute("svmRepresentation", "SupportVectors");
  if (!model.IsRegression()) {
    text.Attribute("classificationMethod", "OneAgainstOne").Attribute("threshold", kAboveZero);
  }
  text.Open();
  WriteSchema(text, names);
  if (ranges && ranges->target) WriteTargets(text, *ranges->target, names);
  if (ranges) WriteTransformations(text, *ranges, names);
  WriteKernel(text, model);
  WriteVectors(text, model, names);
  if (model.IsClassification()) {
    WritePairs(text, model, names);
  } else {
    WriteOneMachine(text, model, names);
  }
  text.End();
}

}  // namespace

std::string LibsvmToPmml(std::string_view model_text, const LibsvmOptions& options) {
  const LibsvmModel model = ReadLibsvmModel(model_text);
  std::optional<ScaleRanges> ranges;
  if (options.ranges) ranges = ReadScaleRanges(*options.ranges);
  if (ranges && ranges->target && !model.IsRegression()) {
    throw ConversionError(ConversionInput::kRanges, 1,
                          "the answers are scaled, and the model is no regression",
                          "give the file with which the data of this model were scaled");
  }
  const DocumentNames names = NamesOf(model, ranges, options);
  DocumentText text;
  text.Element("PMML").Attribute("xmlns", "http://www.dmg.org/PMML-4_4");
  text.Attribute("version", "4.4").Open();
  text.Element("Header").Attribute("description", "a model of LIBSVM").Open();
  text.Element("Application").Attribute("name", "svmscore").Attribute("version", SVMSCORE_VERSION);
  text.Close();
  text.End();
  WriteDictionary(text, model, names);
  WriteModel(text, model, ranges, names);
  text.End();
  return text.Finish();
}

}  // namespace svmscore::tools
