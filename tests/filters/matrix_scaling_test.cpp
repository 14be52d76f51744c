#include "filters/matrix_scaling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace zvk::filters {
namespace {

using Way = MatrixScaling::Way;

uint8_t Told(int32_t sum, const MatrixResult &result) {
  const double value = (sum + result.delta) * result.scale;
  // What does not fit into 32 bits gives the most negative number.
  if (!(value > -2147483649.0 && value < 2147483648.0)) return 0;
  return static_cast<uint8_t>(std::clamp(static_cast<int32_t>(value), 0, 255));
}

template <Way kWay, class Sum>
std::vector<uint8_t> BytesBy(const MatrixScaling &scaling, const std::vector<Sum> &sums) {
  constexpr size_t kCount = 32;
  std::vector<uint8_t> bytes(sums.size());
  for (size_t i = 0; i < sums.size(); i += kCount) {
    Sum some[kCount] = {};
    uint8_t made[kCount];
    const auto count = static_cast<std::ptrdiff_t>(std::min(kCount, sums.size() - i));
    std::copy_n(sums.begin() + static_cast<std::ptrdiff_t>(i), count, some);
    FinishSums<kWay, kCount>(scaling, some, made);
    std::copy_n(made, count, bytes.begin() + static_cast<std::ptrdiff_t>(i));
  }
  return bytes;
}

template <class Sum>
std::vector<uint8_t> BytesOf(const MatrixScaling &scaling, const std::vector<Sum> &sums) {
  switch (scaling.way) {
    case Way::None:
      return BytesBy<Way::None>(scaling, sums);
    case Way::Words:
      if constexpr (sizeof(Sum) == 2) return BytesBy<Way::Words>(scaling, sums);
      break;
    case Way::Single:
      return BytesBy<Way::Single>(scaling, sums);
    case Way::Double:
      return BytesBy<Way::Double>(scaling, sums);
    case Way::Any:
      return BytesBy<Way::Any>(scaling, sums);
  }
  ADD_FAILURE() << "words of 32 bits";
  return {};
}

// Every sum in a range becomes the told byte. The way that was taken.
Way CheckNarrow(const MatrixResult &told, int32_t lowest, int32_t highest) {
  const MatrixScaling scaling(told, lowest, highest, true);
  std::vector<uint16_t> sums;
  for (int32_t sum = lowest; sum <= highest; ++sum) sums.push_back(static_cast<uint16_t>(sum + scaling.start));
  const std::vector<uint8_t> bytes = BytesOf(scaling, sums);
  for (size_t i = 0; i < sums.size(); ++i) {
    const int32_t sum = lowest + static_cast<int32_t>(i);
    if (bytes[i] == Told(sum, told)) continue;
    ADD_FAILURE() << sum << " + " << told.delta << ", x " << told.scale << " gives " << int{bytes[i]};
    break;
  }
  return scaling.way;
}

// The same of each `step`th sum, and of all around those at which the result becomes another one.
Way CheckWide(const MatrixResult &told, int32_t lowest, int32_t highest, int32_t step) {
  const MatrixScaling scaling(told, lowest, highest, false);
  std::vector<int32_t> sums = {lowest, highest};
  for (int64_t sum = lowest; sum <= highest; sum += step) sums.push_back(static_cast<int32_t>(sum));
  for (int32_t v = 1; v <= 256; ++v) {
    const double edge = v / told.scale - told.delta;
    for (int32_t d = -3; d <= 3; ++d) {
      const double near = std::floor(edge) + d;
      if (near >= lowest && near <= highest) sums.push_back(static_cast<int32_t>(near));
    }
  }
  const std::vector<uint8_t> bytes = BytesOf(scaling, sums);
  for (size_t i = 0; i < sums.size(); ++i) {
    if (bytes[i] == Told(sums[i], told)) continue;
    ADD_FAILURE() << sums[i] << " + " << told.delta << ", x " << told.scale << " gives " << int{bytes[i]};
    break;
  }
  return scaling.way;
}

TEST(MatrixScaling, AveragesOfNarrowSumsAreScaledAsWords) {
  for (const int32_t count : {2, 3, 4, 9, 10, 16, 25, 50, 81, 121, 169, 225}) {
    EXPECT_EQ(CheckNarrow({0, 1.0 / count}, 0, 255 * count), Way::Words) << count;
    EXPECT_EQ(CheckNarrow({count / 2, 1.0 / count}, 0, 255 * count), Way::Words) << count;
  }
}

// 49 x (1 / 49) is a little below 1 in double, 98 x (1 / 49) is 2: no product that errs less gives both.
TEST(MatrixScaling, AnAverageOf49IsScaledInDouble) {
  EXPECT_EQ(CheckNarrow({0, 1.0 / 49}, 0, 255 * 49), Way::Double);
  EXPECT_EQ(CheckWide({0, 1.0 / 49}, 0, 255 * 49, 1), Way::Double);
}

TEST(MatrixScaling, AScaleThatWordsCannotServeIsScaledInSinglePrecision) {
  // A step of 1.5 sums is too fine for a product cut to 16 bits.
  EXPECT_EQ(CheckNarrow({0, 1.5}, -1000, 2000), Way::Single);
  EXPECT_EQ(CheckNarrow({65000, 0.5}, 0, 60000), Way::Single);
  EXPECT_EQ(CheckWide({0, 0.01}, -91800, 137700, 1), Way::Single);
  for (const int32_t count : {9, 258, 625, 2401}) {
    EXPECT_EQ(CheckWide({0, 1.0 / count}, 0, 255 * count, 1), Way::Single) << count;
    EXPECT_EQ(CheckWide({count / 2, 1.0 / count}, -255 * count, 255 * count, 1), Way::Single) << count;
  }
}

TEST(MatrixScaling, EveryNarrowSumGivesTheToldByteWhateverTheScaleAndTheDelta) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<double> scales = {1.0,     0.0,         -0.0,        -1.0,          -0.25,     1.0 / 3,
                                      0.1,     0.3,         0.7,         0.999,         0.9999999, 1.000001,
                                      2.0,     255.0,       1e-9,        1e-300,        5e-324,    1e6,
                                      32896.5, 8421504.7,   1e300,       infinity,      -infinity, std::nan(""),
                                      0.00389, 1.0 / 65535, 1.0 / 65536, 255.0 / 65535, 0.00390625};
  for (const double scale : scales) {
    for (const int32_t delta : {0, 1, -1, 128, -1000, 40000, -70000, INT32_MAX, INT32_MIN}) {
      CheckNarrow({delta, scale}, 0, 65535);
      CheckNarrow({delta, scale}, -30000, 2000);
      CheckNarrow({delta, scale}, -65535, 0);
      CheckNarrow({delta, scale}, -5, 300);
    }
  }
}

TEST(MatrixScaling, EverySumGivesTheToldByteWhateverTheScaleAndTheDelta) {
  for (const double scale : {1.0, 0.0, 1.0 / 3, 0.1, 0.01, 0.003, 1.0 / 65537, 1e-5, 1.2e-5, 1e-6, 1.3e-7, 1.19e-7,
                             1e-8, 0.9999999, 1.7, 300.0, -0.001, 1e4, 1e300}) {
    for (const int32_t delta : {0, -128, 100000, -20000000, INT32_MAX, INT32_MIN}) {
      CheckWide({delta, scale}, -100000, 200000, 7);
      CheckWide({delta, scale}, INT32_MIN / 4, INT32_MAX / 4, 1000003);
      CheckWide({delta, scale}, 0, 0, 1);
    }
  }
}

TEST(MatrixScaling, StepsThatSinglePrecisionCannotTellAreTakenInDouble) {
  // 2^24 + 1 is the first whole number that it does not hold: steps so far out need 25 bits.
  EXPECT_EQ(CheckWide({0, 255.0 / 20000001}, 0, 30000000, 1009), Way::Double);
  EXPECT_EQ(CheckWide({0, -0.5}, -30000, 30000, 1), Way::Double);
}

TEST(MatrixScaling, WhatMayLeave32BitsIsScaledInAnyWay) {
  EXPECT_EQ(CheckWide({0, 1e6}, -100000, 100000, 1), Way::Any);
  EXPECT_EQ(CheckWide({INT32_MAX, 0.5}, 0, 255, 1), Way::Any);
  EXPECT_EQ(CheckWide({INT32_MIN, 0.5}, -255, 0, 1), Way::Any);
}

}  // namespace
}  // namespace zvk::filters
