// The store by itself: what its guards reject and keep.
#include "svm/model/model_data.h"

#include <gtest/gtest.h>

#include <climits>
#include <iomanip>
#include <sstream>

namespace MCZandor_850 {
namespace {

TEST(ModelDataTest, GuardsIgnoreUselessCalls) {
  SVMModelData data;
  EXPECT_FALSE(data.IsBinaryClassification() || data.IsMultiClassClassification());
  data.SetCateNumOfTarget(3);
  data.SetCateNumOfTarget(0);
  data.SetCateNumOfTarget(INT_MIN);
  EXPECT_EQ(data.GetCateNumOfTarget(), 3);

  data.AddVectorInstance("a", {1, 3}, {0.5, 2.0});
  data.AddVectorInstance("a", {2}, {9.0});
  data.AddVectorInstance("short", {1, 2}, {1.0});
  data.AddVectorInstance("empty", {}, {});
  data.AddVectorInstance("", {1}, {1.0});
  ASSERT_NE(data.GetVectorInstance("a"), nullptr);
  EXPECT_EQ(data.GetVectorInstance("a")->indices, (std::vector<int>{0, 2}));
  EXPECT_EQ(data.GetVectorInstance("a")->values, (std::vector<double>{0.5, 2.0}));
  for (const char* id : {"short", "empty", ""}) EXPECT_EQ(data.GetVectorInstance(id), nullptr);

  data.AddSupportVectorMachine(nullptr);
  EXPECT_EQ(data.GetSupportVectorMachines().size(), 1u) << "the place of an absent machine";
}

TEST(ModelDataTest, DataCasesDisplayPairsOrBareValues) {
  MCSVM_700::SVMDataCase instance;
  std::ostringstream os;
  instance.Display(os);
  instance.indices = {0, 2};
  instance.values = {0.5, -2};
  instance.Display(os);
  instance.indices.pop_back();
  instance.Display(os);
  os << std::showpos << std::setprecision(3);
  instance.values[0] = 0.12345;
  instance.Display(os);
  EXPECT_EQ(os.str(), "TVal=-1,\nTVal=-1,(0,0.5) (2,-2) \nTVal=-1,0.5 -2 \nTVal=-1,+0.123 -2 \n");
}

}  // namespace
}  // namespace MCZandor_850
