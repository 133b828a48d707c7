#include "tools/describe/model_summary.h"

#include <array>
#include <unordered_set>

#include "host/model/batch_model.h"
#include "host/text/field_types.h"
#include "host/text/number_text.h"
#include "tools/findings/inspected.h"

namespace svmscore::tools {
namespace {

using MCZandor_850::ScoreDictVar;
using MCZandor_850::ScoreModel;

struct Kernel {
  const char* element;
  const char* name;
  std::vector<std::string> parameters;
};

std::string OpTypeName(int type_code) {
  constexpr std::array kNames = {"continuous", "ordinal", "cyclic", "categorical"};
  return kNames.at(static_cast<std::size_t>(type_code));
}

// A kernel's parameter as scoring uses it: 1 if it is absent or -1.
double ParameterOf(const Element* kernel, const std::string& name) {
  const double number = ParseNumber(AttributeText(kernel, name)).value_or(-1.0);
  return number == -1.0 ? 1.0 : number;
}

void SummariseKernel(const Element* model, ModelSummary& summary) {
  const std::array kernels = {
      Kernel{"LinearKernelType", "linear", {}},
      Kernel{"PolynomialKernelType", "polynomial", {"gamma", "coef0", "degree"}},
      Kernel{"RadialBasisKernelType", "radial basis", {"gamma"}},
      Kernel{"SigmoidKernelType", "sigmoid", {"gamma", "coef0"}}};
  for (const Kernel& kernel : kernels) {
    const Element* element = FindChild(model, kernel.element);
    if (element == nullptr) continue;
    summary.kernel = kernel.name;
    for (const std::string& name : kernel.parameters) {
      summary.parameters.emplace_back(name, ParameterOf(element, name));
    }
    return;
  }
}

void SummariseMachines(const Element* model, const VectorIndex& vectors, ModelSummary& summary) {
  for (const Element* element : Children(model, "SupportVectorMachine")) {
    MachineSummary machine;
    if (summary.scheme.method != Method::kRegression) {
      machine.target = AttributeText(element, "targetCategory");
      machine.alternate = AttributeText(element, "alternateTargetCategory");
    }
    machine.threshold =
        ParseNumber(AttributeText(element, "threshold")).value_or(summary.threshold);
    const Element* coefficients = FindChild(element, "Coefficients");
    machine.offset = ParseNumber(AttributeText(coefficients, "absoluteValue")).value_or(0.0);
    machine.terms = TermsOf(element, vectors).kept;
    summary.terms += machine.terms;
    summary.machines.push_back(std::move(machine));
  }
}

// Fields that vectors read are inputs, even if the mining schema does not make them active.
void SummariseInputs(const LoadedModel& loaded, ModelSummary& summary) {
  const auto add = [&summary](const ScoreDictVar& var, bool needed) {
    InputSummary input{var.GetName(), std::string(DataTypeName(var.GetFieldType().data)),
                       OpTypeName(var.GetTypeCode()), needed, std::nullopt};
    if (const auto* value = var.GetMissingReplacement()) input.replacement = value->GetText();
    summary.inputs.push_back(std::move(input));
  };
  for (const ScoreDictVar* var : loaded.needed) add(*var, true);
  const std::unordered_set<const ScoreDictVar*> needed(loaded.needed.begin(), loaded.needed.end());
  for (const ScoreDictVar* var : loaded.active) {
    if (!needed.contains(var)) add(*var, false);
  }
}

std::string PolicyName(ScoreModel::MVPolicy policy) {
  if (policy == ScoreModel::kReplaceMissing) return "replace";
  return policy == ScoreModel::kPredictMissing ? "predict-missing" : "fail";
}

std::string ProducerOf(const Element* root) {
  const Element* application = FindChild(FindChild(root, "Header"), "Application");
  const std::string name = AttributeText(application, "name");
  const std::string version = AttributeText(application, "version");
  return version.empty() ? name : name + " " + version;
}

}  // namespace

ModelSummary Summarise(const LoadedModel& loaded) {
  const Element* root = loaded.document.Dom()->getDocumentElement();
  const Element* model = FindModelElement(loaded.document.Dom());
  const ScoreDictVar& target = *loaded.model->GetTargetVar();
  const Inspected inspected = Inspect(loaded);
  const VectorIndex& vectors = inspected.vectors;
  ModelSummary summary;
  summary.file = loaded.document.Name();
  summary.pmml_version = AttributeText(root, "version");
  summary.producer = ProducerOf(root);
  summary.model_name = AttributeText(model, "modelName");
  summary.scheme = output::SchemeOf(model, target.GetCategories().size());
  summary.max_wins = AttributeText(model, "maxWins") == "true";
  summary.threshold = ParseNumber(AttributeText(model, "threshold")).value_or(0.0);
  SummariseKernel(model, summary);
  summary.target = target.GetName();
  summary.target_type = DataTypeName(target.GetFieldType().data);
  for (const auto* category : target.GetCategories()) {
    summary.categories.push_back(category->GetText());
  }
  summary.missing_policy = PolicyName(loaded.model->GetMissingValuePolicy());
  const auto* batch = dynamic_cast<const BatchModel*>(loaded.model.get());
  const VoteLevels votes = batch != nullptr ? batch->Votes() : VoteLevels{};
  summary.votes_by = votes.level;
  summary.why_exact = votes.why_exact != nullptr ? votes.why_exact : "";
  SummariseInputs(loaded, summary);
  const auto* derived = loaded.model->GetTransformationDictionary();
  summary.derived_fields = derived == nullptr ? 0 : derived->GetVariables().size();
  summary.vector_fields = vectors.Fields().size();
  summary.vectors = vectors.KeptCount();
  SummariseMachines(model, vectors, summary);
  if (loaded.output != nullptr) {
    for (const int field : loaded.output->FinalFields()) {
      summary.output_fields.push_back(
          loaded.output->Fields()[static_cast<std::size_t>(field)].name);
    }
  }
  summary.findings = loaded.findings;
  return summary;
}

std::string NameOf(Method method) {
  switch (method) {
    case Method::kRegression:
      return "regression";
    case Method::kBinary:
      return "binary";
    case Method::kOneAgainstOne:
      return "one-against-one";
    case Method::kOneAgainstAll:
      return "one-against-all";
  }
  return {};
}

std::string NameOf(Percentages percentages) {
  switch (percentages) {
    case Percentages::kNone:
      return "none";
    case Percentages::kVoteShares:
      return "vote shares";
    case Percentages::kProbabilities:
      return "calibrated probabilities";
  }
  return {};
}

}  // namespace svmscore::tools
