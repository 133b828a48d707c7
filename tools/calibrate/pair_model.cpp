#include "tools/calibrate/pair_model.h"

#include <string>

#include <fmt/format.h>

#include "host/model/batch_model.h"
#include "tools/base/bad_input.h"
#include "tools/base/case_columns.h"
#include "tools/calibrate/calibrated_text.h"
#include "tools/score/case_batch.h"

namespace svmscore::tools {
namespace {

std::string PairDocument(std::size_t categories, const std::vector<Sigmoid>& sigmoids) {
  const std::size_t pairs = sigmoids.size();
  std::string fields;
  std::string schema;
  std::string references;
  std::string vectors;
  for (std::size_t m = 0; m < pairs; ++m) {
    fields += fmt::format(R"(<DataField name="d{}" optype="continuous" dataType="double"/>)", m);
    schema += fmt::format(R"(<MiningField name="d{}"/>)", m);
    references += fmt::format(R"(<FieldRef field="d{}"/>)", m);
    vectors += fmt::format(
        R"(<VectorInstance id="v{}"><REAL-SparseArray n="{}"><Indices>{}</Indices><REAL-Entries>1)"
        R"(</REAL-Entries></REAL-SparseArray></VectorInstance>)",
        m, pairs, m + 1);
  }
  std::string values;
  std::string machines;
  std::size_t m = 0;
  for (std::size_t i = 0; i < categories; ++i) {
    values += fmt::format(R"(<Value value="c{}"/>)", i);
    for (std::size_t j = i + 1; j < categories; ++j, ++m) {
      MachineCalibration pair;
      pair.response = fmt::format("c{}", i);
      pair.other = fmt::format("c{}", j);
      pair.sigmoid = sigmoids[m];
      machines += fmt::format(
          R"(<SupportVectorMachine targetCategory="{}" alternateTargetCategory="{}">{})"
          R"(<SupportVectors numberOfSupportVectors="1" numberOfAttributes="{}">)"
          R"(<SupportVector vectorId="v{}"/></SupportVectors><Coefficients )"
          R"(numberOfCoefficients="1" absoluteValue="0"><Coefficient value="1"/></Coefficients>)"
          R"(</SupportVectorMachine>)",
          pair.response, pair.other, ExtensionText(pair, true, ""), pairs, m);
    }
  }
  return fmt::format(
      R"(<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4"><Header/><DataDictionary>{})"
      R"(<DataField name="y" optype="categorical" dataType="string">{}</DataField>)"
      R"(</DataDictionary><SupportVectorMachineModel functionName="classification" )"
      R"(classificationMethod="OneAgainstOne"><MiningSchema>{}<MiningField name="y" )"
      R"(usageType="target"/></MiningSchema><LinearKernelType/><VectorDictionary )"
      R"(numberOfVectors="{}"><VectorFields numberOfFields="{}">{}</VectorFields>{})"
      R"(</VectorDictionary>{}</SupportVectorMachineModel></PMML>)",
      fields, values, schema, pairs, pairs, references, vectors, machines);
}

}  // namespace

PairModel::PairModel(const Plugin& plugin, std::size_t categories,
                     const std::vector<Sigmoid>& sigmoids, const Limits& limits)
    : categories_(categories),
      pairs_(sigmoids.size()),
      loaded_(LoadModel(plugin, PmmlDocument::FromText(PairDocument(categories, sigmoids),
                                                       "the model of decision values", limits))) {}

PairModel::Scores PairModel::Score(const std::vector<double>& decisions) {
  auto* model = dynamic_cast<BatchModel*>(loaded_.model.get());
  if (model == nullptr || model->EntryCount() != pairs_) {
    throw BadDocument("the plug-in tells no decision values");
  }
  const MCZandor_850::InputCaseRecord record(InputsOf(loaded_), true, false);
  model->FixPositions(record);
  const std::size_t cases = decisions.size() / pairs_;
  const std::size_t most = CasesAtOnce(model, 1);
  CaseBatch batch(*model, categories_, most, false);
  const output::TargetRules& targets = loaded_.output->Targets();
  Scores scores;
  scores.percents.reserve(cases * categories_);
  for (std::size_t begin = 0; begin < cases; begin += most) {
    const std::size_t count = std::min(most, cases - begin);
    batch.Reset(count);
    for (std::size_t e = 0; e < pairs_; ++e) {
      for (std::size_t c = 0; c < count; ++c) {
        batch.EntriesOf(e)[c] = decisions[(begin + c) * pairs_ + e];
      }
    }
    batch.Score();
    for (std::size_t c = 0; c < count; ++c) {
      const output::Outcome outcome = targets.Finish(batch.Results(), c);
      scores.predicted.push_back(outcome.category);
      for (std::size_t k = 0; k < categories_; ++k) {
        scores.percents.push_back(outcome.category < 0 ? 0.0 : targets.PercentOf(outcome, k));
      }
    }
  }
  return scores;
}

}  // namespace svmscore::tools
