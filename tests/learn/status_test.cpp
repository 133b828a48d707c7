#include "svm/learn/status.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using MCSvm::MCStatus;

TEST(LearnerStatus, Severities) {
  EXPECT_TRUE(MCStatus().IsOK());
  EXPECT_TRUE(MCStatus(5, true).IsWarning());
  EXPECT_FALSE(MCStatus(5, true).IsOK());
  EXPECT_TRUE(MCStatus(5, false).IsError());
  EXPECT_EQ(MCStatus(5, false).GetErrorCode(), 5);
  EXPECT_TRUE(MCStatus(0, false).IsError());
}

TEST(LearnerStatus, EqualityLooksAtEverySlot) {
  EXPECT_EQ(MCStatus(), MCStatus());
  EXPECT_FALSE(MCStatus(5, true) == MCStatus(5, false));
  EXPECT_FALSE(MCStatus(5, true) == MCStatus(6, true));
  MCStatus status;
  status.SetDiscreteDatum(2, -1);
  EXPECT_EQ(status.GetDiscreteDatum(2), -1);
  EXPECT_FALSE(status == MCStatus());
  MCStatus zero;
  zero.SetScaleDatum(2, -0.0);
  EXPECT_EQ(zero, MCStatus());
  zero.SetScaleDatum(0, std::nan(""));
  EXPECT_FALSE(zero == zero);
}

}  // namespace
