#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "tests/model/model_fixture.h"
#include "tests/slot_order.h"

namespace {

using namespace svmscore_test;  // NOLINT

std::string Shown(const SVMModel& model) {
  std::ostringstream os;
  model.Display(os);
  return os.str();
}

TEST(SetUp, ModelTypeFollowsTheData) {
  SVMModel model;
  EXPECT_EQ(model.GetModelType(), 0);
  for (const bool classifies : {false, true}) {
    auto* data = new SVMModelData;
    data->SetFunctionName(classifies);
    for (SVMModelData* given : {data, data, static_cast<SVMModelData*>(nullptr)}) {
      model.SetSupportVectorMachineModel(given);
      EXPECT_EQ(model.GetModelType(), classifies ? 29 : 30);
    }
  }
}

TEST(SetUp, KernelAndItsParametersFollowTheData) {
  const struct {
    SVMConst::KernelFunctionType type;
    double value;  // for dot 2 and squared distance 1
  } kernels[] = {{SVMConst::kLinear, 2},
                 {SVMConst::kPolynomial, 27},
                 {SVMConst::kRadialBasis, std::exp(-0.5)},
                 {SVMConst::kSigmoid, std::tanh(3)}};
  for (const auto& kernel : kernels) {
    SVMModel model;
    auto* data = new SVMModelData;
    EchoMachine(*data, 0, -1, -1, 0.25);
    data->SetSVMKernelType(kernel.type);
    data->SetSVMKernelTypeGamma(0.5);
    data->SetSVMKernelTypeCoef0(2);
    data->SetSVMKernelTypeDegree(3);
    model.SetSupportVectorMachineModel(data);
    double value = 0;
    model.ScoreSVMByKernelType({0}, {2.0}, 0, value);
    EXPECT_DOUBLE_EQ(value, kernel.value + 0.25) << kernel.type;
    // An unknown kernel counts as no kernel; then nothing is added, nor for an absent machine.
    model.ScoreSVMByKernelType({0}, {2.0}, -1, value);
    model.ScoreSVMByKernelType({0}, {2.0}, 1, value);
    data->SetSVMKernelType(static_cast<SVMConst::KernelFunctionType>(4));
    model.SetUpSVMKFEvaluate(data);
    model.ScoreSVMByKernelType({0}, {2.0}, 0, value);
    EXPECT_DOUBLE_EQ(value, kernel.value + 0.25) << kernel.type;
  }
}

// The caller's value first, then the terms in order, the absolute value last: any other order loses
// the 1.
TEST(SetUp, DecisionValueIsSummedInOrder) {
  SVMModel model;
  auto* data = new SVMModelData;
  Machine* machine = EchoMachine(*data, 0, -1, -1, 1.0);
  machine->coefficients = {1.0, 1e16, -1e16};
  machine->support_vectors.resize(3, machine->support_vectors[0]);
  model.SetSupportVectorMachineModel(data);
  double value = 0.5;
  model.ScoreSVMByKernelType({0}, {1.0}, 0, value);
  EXPECT_EQ(value, 0.5 + 1 + 1e16 - 1e16 + 1);
  value = 0;
  model.ScoreSVMByKernelType({}, {}, 0, value);
  EXPECT_EQ(value, 1.0) << "an empty case leaves the absolute value";
}

TEST(SetUp, VariablesOfARole) {
  using Variables = std::vector<ScoreDictVar*>;
  Classifier classifier(2);
  classifier.Add(0, 1);
  const auto model = classifier.Model();
  EXPECT_EQ(model->GetVarsOfRole(ScoreModel::kActiveRole), nullptr);
  EXPECT_EQ(SVMModel().GetVarsOfRole(ScoreModel::kTargetRole), nullptr);
  model->SetVarRole(std::string("x0"), ScoreModel::kActiveRole);
  for (const auto& [role, name] :
       {std::pair{ScoreModel::kActiveRole, "x0"}, {ScoreModel::kTargetRole, "y"}}) {
    const std::unique_ptr<BaseDictionary> found(model->GetVarsOfRole(role));
    ASSERT_NE(found, nullptr) << name;
    EXPECT_EQ(found->GetVariables(), Variables{model->GetDictionary()->FindVar(name)});
  }
  // A second variable of that role is not the target.
  model->SetVarRole(std::string("x0"), ScoreModel::kTargetRole);
  const std::unique_ptr<BaseDictionary> target(model->GetVarsOfRole(ScoreModel::kTargetRole));
  EXPECT_EQ(target->GetVariables(), Variables{model->GetDictionary()->FindVar("y")});
}

TEST(ModelDisplay, ByteForByte) {
  const std::string begin =
      "\nBegin Display of SupportVectorMachineModel.\nInput Vector fields is:  Only prediction? ";
  EXPECT_EQ(Shown(SVMModel()), begin +
                                   "False.\nTarget variable: Target categories: "
                                   "End of SupportVectorMachineModel display.\n");
  Classifier classifier(2);
  classifier.dictionary->FindVar("y")->DeclareCategory("\n\x1B", "");
  const auto model = classifier.Model();
  model->SetPredictionOnly(true);
  EXPECT_EQ(Shown(*model), begin +
                               "True.\nTarget variable: y\nTarget categories: ab\n\x1B"
                               "End of SupportVectorMachineModel display.\n");
}

template <typename... Arguments>
using Setter = void (ScoreModel::*)(Arguments...);
template <typename Argument>
using RoleGetter = ScoreModel::VarRole (ScoreModel::*)(Argument) const;

TEST(SetUp, SlotOrder) {
  using Host = ScoreModel;
  const auto slots =
      [](auto... functions) {
        return std::vector{SlotOf(functions)...};
      }(Setter<ScoreDictionary*>(&Host::SetScoreDictionary),
        &Host::SetTransformationScoreDictionary, &Host::SetResultScoreDictionary,
        Setter<const ScoreDictVar*, Host::VarRole>(&Host::SetVarRole),
        Setter<const std::string&, Host::VarRole>(&Host::SetVarRole), &Host::SetMissingValuePolicy,
        &Host::SetVersionInfo, &SVMModel::SetPredictionOnly,
        RoleGetter<const ScoreDictVar*>(&Host::GetVarRole),
        RoleGetter<const std::string&>(&Host::GetVarRole), &Host::GetVersionInfo,
        &SVMModel::GetVarsOfRole, &Host::GetTargetVar, &Host::GetDictionary,
        &Host::GetTransformationDictionary, &Host::GetResultDictionary, &SVMModel::GetScore,
        &Host::GetMissingValuePolicy, &SVMModel::GetModelType, &SVMModel::GetPredictionOnly,
        &SVMModel::Display, Setter<ScoreDictionary*, bool>(&Host::SetScoreDictionary));
  for (std::size_t i = 0; i < slots.size(); ++i) EXPECT_EQ(slots[i], i + 2);
}

}  // namespace
