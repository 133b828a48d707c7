#include <gtest/gtest.h>

#include <sstream>

#include "tests/model/model_fixture.h"

namespace {

using namespace svmscore_test;  // NOLINT

std::string Shown(const SVMModel& model) {
  std::ostringstream os;
  model.Display(os);
  return os.str();
}

TEST(ModelDisplay, ByteForByte) {
  const std::string begin =
      "\nBegin Display of SupportVectorMachineModel.\nInput Vector fields is:  Only prediction? ";
  SVMModel bare;
  EXPECT_EQ(Shown(bare), begin +
                             "False.\nTarget variable: Target categories: "
                             "End of SupportVectorMachineModel display.\n");
  const auto model = Classifier({"A", "B"}).Model();
  model->SetPredictionOnly(true);
  EXPECT_EQ(Shown(*model), begin +
                               "True.\nTarget variable: y\nTarget categories: AB"
                               "End of SupportVectorMachineModel display.\n");
  model->SetTargetVar(nullptr);
  model->SetPredictionOnly(false);
  EXPECT_EQ(Shown(*model), begin +
                               "False.\nTarget variable: Target categories: AB"
                               "End of SupportVectorMachineModel display.\n");
}

}  // namespace
