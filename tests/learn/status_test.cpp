#include "svm/learn/status.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using MCSvm::MCStatus;

TEST(LearnerStatus, SeverityAndEquality) {
  EXPECT_TRUE(MCStatus().IsOK());
  EXPECT_TRUE(MCStatus(5, true).IsWarning());
  EXPECT_TRUE(MCStatus(0, false).IsError());
  EXPECT_FALSE(MCStatus(5, true) == MCStatus(5, false));
  MCStatus status;
  status.SetScaleDatum(2, -0.0);
  EXPECT_EQ(status, MCStatus());
  status.SetDiscreteDatum(2, -1);
  EXPECT_FALSE(status == MCStatus());
  status.SetScaleDatum(0, std::nan(""));
  EXPECT_FALSE(status == status);
}

}  // namespace
