#include "host/truncate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zvk::host {
namespace {

TEST(Truncate, GoesTowardZero) {
  EXPECT_EQ(Truncate(0.0), 0);
  EXPECT_EQ(Truncate(-0.0), 0);
  EXPECT_EQ(Truncate(0.999), 0);
  EXPECT_EQ(Truncate(-0.999), 0);
  EXPECT_EQ(Truncate(255.5), 255);
  EXPECT_EQ(Truncate(-3.7), -3);
}

TEST(Truncate, KeepsEverythingThatFits) {
  EXPECT_EQ(Truncate(2147483647.0), 2147483647);
  EXPECT_EQ(Truncate(2147483647.9), 2147483647);
  EXPECT_EQ(Truncate(-2147483648.0), INT32_MIN);
  EXPECT_EQ(Truncate(-2147483647.5), -2147483647);
  EXPECT_EQ(Truncate(-2147483648.9), INT32_MIN);
}

TEST(Truncate, WhatDoesNotFitIsTheMostNegativeInteger) {
  EXPECT_EQ(Truncate(2147483648.0), INT32_MIN);
  EXPECT_EQ(Truncate(1e300), INT32_MIN);
  EXPECT_EQ(Truncate(-2147483649.0), INT32_MIN);
  EXPECT_EQ(Truncate(-1e300), INT32_MIN);
  EXPECT_EQ(Truncate(std::numeric_limits<double>::infinity()), INT32_MIN);
  EXPECT_EQ(Truncate(-std::numeric_limits<double>::infinity()), INT32_MIN);
  EXPECT_EQ(Truncate(std::nan("")), INT32_MIN);
}

}  // namespace
}  // namespace zvk::host
