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
  model.SetSupportVectorMachineModel(new SVMModelData);
  EXPECT_EQ(model.GetModelType(), 30);
  auto* data = new SVMModelData;
  data->SetFunctionName(true);
  model.SetSupportVectorMachineModel(data);
  EXPECT_EQ(model.GetModelType(), 29);
  model.SetSupportVectorMachineModel(nullptr);
  model.SetSupportVectorMachineModel(data);
  EXPECT_EQ(model.GetModelType(), 29);
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
    // An unknown kernel is no kernel; nothing is added then, nor for a machine that is not there.
    model.ScoreSVMByKernelType({0}, {2.0}, -1, value);
    model.ScoreSVMByKernelType({0}, {2.0}, 1, value);
    data->SetSVMKernelType(static_cast<SVMConst::KernelFunctionType>(4));
    model.SetUpSVMKFEvaluate(data);
    model.ScoreSVMByKernelType({0}, {2.0}, 0, value);
    EXPECT_DOUBLE_EQ(value, kernel.value + 0.25) << kernel.type;
  }
}

// Terms in order, the absolute value last, all on top of what the caller has: any other order loses
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
  Classifier classifier({"a", "b"});
  classifier.Add(0, 1);
  const auto model = classifier.Model();
  EXPECT_EQ(model->GetVarsOfRole(ScoreModel::kActiveRole), nullptr);
  model->SetVarRole(std::string("x0"), ScoreModel::kActiveRole);
  const std::unique_ptr<BaseDictionary> active(model->GetVarsOfRole(ScoreModel::kActiveRole));
  ASSERT_NE(active, nullptr);
  EXPECT_EQ(active->GetVariables(),
            std::vector<ScoreDictVar*>{model->GetDictionary()->FindVar("x0")});
  const std::unique_ptr<BaseDictionary> target(model->GetVarsOfRole(ScoreModel::kTargetRole));
  ASSERT_NE(target, nullptr);
  EXPECT_NE(target->FindVar("y"), nullptr);
  EXPECT_EQ(SVMModel().GetVarsOfRole(ScoreModel::kTargetRole), nullptr);
}

TEST(ModelDisplay, ByteForByte) {
  const std::string begin =
      "\nBegin Display of SupportVectorMachineModel.\nInput Vector fields is:  Only prediction? ";
  EXPECT_EQ(Shown(SVMModel()), begin +
                                   "False.\nTarget variable: Target categories: "
                                   "End of SupportVectorMachineModel display.\n");
  const auto model = Classifier({"A", "B"}).Model();
  model->SetPredictionOnly(true);
  EXPECT_EQ(Shown(*model), begin +
                               "True.\nTarget variable: y\nTarget categories: AB"
                               "End of SupportVectorMachineModel display.\n");
}

TEST(SetUp, SlotOrder) {
  EXPECT_EQ(SlotOf<void (ScoreModel::*)(ScoreDictionary*)>(&ScoreModel::SetScoreDictionary), 2u);
  EXPECT_EQ(SlotOf(&ScoreModel::SetTransformationScoreDictionary), 3u);
  EXPECT_EQ(SlotOf(&ScoreModel::SetResultScoreDictionary), 4u);
  using Role = ScoreModel::VarRole;
  EXPECT_EQ(SlotOf<void (ScoreModel::*)(const ScoreDictVar*, Role)>(&ScoreModel::SetVarRole), 5u);
  EXPECT_EQ(SlotOf<void (ScoreModel::*)(const std::string&, Role)>(&ScoreModel::SetVarRole), 6u);
  EXPECT_EQ(SlotOf(&ScoreModel::SetMissingValuePolicy), 7u);
  EXPECT_EQ(SlotOf(&ScoreModel::SetVersionInfo), 8u);
  EXPECT_EQ(SlotOf<Role (ScoreModel::*)(const ScoreDictVar*) const>(&ScoreModel::GetVarRole), 10u);
  EXPECT_EQ(SlotOf<Role (ScoreModel::*)(const std::string&) const>(&ScoreModel::GetVarRole), 11u);
  EXPECT_EQ(SlotOf(&ScoreModel::GetVersionInfo), 12u);
  EXPECT_EQ(SlotOf(&ScoreModel::GetTargetVar), 14u);
  EXPECT_EQ(SlotOf(&ScoreModel::GetDictionary), 15u);
  EXPECT_EQ(SlotOf(&ScoreModel::GetTransformationDictionary), 16u);
  EXPECT_EQ(SlotOf(&ScoreModel::GetResultDictionary), 17u);
  EXPECT_EQ(SlotOf(&ScoreModel::GetMissingValuePolicy), 19u);
  EXPECT_EQ(SlotOf(&SVMModel::GetModelType), 20u);
  EXPECT_EQ(SlotOf<void (ScoreModel::*)(ScoreDictionary*, bool)>(&ScoreModel::SetScoreDictionary),
            23u);
  EXPECT_EQ(SlotOf(&SVMModel::SetPredictionOnly), 9u);
  EXPECT_EQ(SlotOf(&SVMModel::GetVarsOfRole), 13u);
  EXPECT_EQ(SlotOf(&SVMModel::GetScore), 18u);
  EXPECT_EQ(SlotOf(&SVMModel::GetPredictionOnly), 21u);
  EXPECT_EQ(SlotOf(&SVMModel::Display), 22u);
}

}  // namespace
