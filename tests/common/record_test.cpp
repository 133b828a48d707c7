#include "common/record.h"

#include <gtest/gtest.h>

namespace {

using MCCommon_850::Record;

TEST(Record, CountsAndZeros) {
  const Record record(3);
  EXPECT_EQ(record.Size(), 3);
  EXPECT_EQ(record[0] + record[1] + record[2], 0.0);
  EXPECT_EQ(Record(-3).Size(), 1);
  EXPECT_EQ(Record(0).Size(), 0);
}

TEST(Record, CopiesAreItsOwn) {
  Record record(2);
  Record copy(record);
  copy[1] = 6;
  EXPECT_EQ(record[1], 0.0);
  record = copy;
  EXPECT_EQ(record.GetAll()[1], 6.0);
  ASSERT_TRUE(copy.Resize(-1));
  record = copy;
  EXPECT_EQ(record.GetAll(), nullptr);
}

TEST(Record, ResizeReplacesTheArrayUnlessTheSizeStays) {
  Record record(2);
  const double* before = record.GetAll();
  EXPECT_TRUE(record.Resize(2));
  EXPECT_EQ(record.GetAll(), before);
  EXPECT_TRUE(record.Resize(4));
  EXPECT_EQ(record.Size(), 4);
  EXPECT_TRUE(record.Resize(-4));
  EXPECT_EQ(record.Size(), 0);
  EXPECT_EQ(record.GetAll(), nullptr);
}

}  // namespace
