#include "filters/tone_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/filters/tone_lists.h"
#include "tests/support/plugin_host.h"

namespace zvk::filters {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// --- solarize ---

TEST(SolarizeTable, EverySampleIsTheListed) {
  const std::vector<int> list = filter_testing::SolarizeList();
  ASSERT_EQ(list.size(), 256u);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(kSolarizeTable[i], list[i]) << i;
}

TEST(SolarizeTable, IsAVWithItsFootInTheMiddle) {
  EXPECT_EQ(kSolarizeTable[0], 255);
  EXPECT_EQ(kSolarizeTable[127], 0);
  EXPECT_EQ(kSolarizeTable[128], 0);
  EXPECT_EQ(kSolarizeTable[255], 255);
  for (int i = 0; i < 256; ++i) {
    EXPECT_NEAR(kSolarizeTable[static_cast<size_t>(i)], std::abs(2 * i - 255), 2) << i;
  }
  for (size_t i = 1; i < 256; ++i) EXPECT_EQ(kSolarizeTable[i] == kSolarizeTable[i - 1], i == 128) << i;
}

// --- gamma ---

TEST(GammaTable, OneIsTheIdentity) {
  const ToneTable table = GammaTable(1.0);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[static_cast<size_t>(i)], i);
}

TEST(GammaTable, AHalfSquares) {
  const ToneTable table = GammaTable(0.5);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[static_cast<size_t>(i)], (2 * i * i + 255) / 510) << i;
}

TEST(GammaTable, AQuarterTakesTheFourthPower) {
  const ToneTable table = GammaTable(0.25);
  const int64_t cube = int64_t{255} * 255 * 255;
  for (int64_t i = 0; i < 256; ++i) {
    EXPECT_EQ(table[static_cast<size_t>(i)], (2 * i * i * i * i + cube) / (2 * cube)) << i;
  }
}

TEST(GammaTable, TwoTakesTheSquareRootAndRounds) {
  const ToneTable table = GammaTable(2.0);
  for (int i = 0; i < 256; ++i) {
    int root = 0;  // the largest v with (v - 1/2)^2 at or below 255 i
    while ((2 * root + 1) * (2 * root + 1) <= 4 * 255 * i) ++root;
    EXPECT_EQ(table[static_cast<size_t>(i)], root) << i;
  }
}

TEST(GammaTable, ZeroLeavesNothingButWhite) {
  const ToneTable table = GammaTable(0.0);
  for (size_t i = 0; i < 255; ++i) EXPECT_EQ(table[i], 0);
  EXPECT_EQ(table[255], 255);
}

TEST(GammaTable, BelowZeroIsAboveWhiteAndBeyondTheIntegersZero) {
  const ToneTable table = GammaTable(-1.0);
  EXPECT_EQ(table[0], 0);  // an infinite value
  for (size_t i = 1; i < 256; ++i) EXPECT_EQ(table[i], 255);
  // (255 / i) to the power 4 times 255 leaves 32 bits up to i = 4: 255 x 63.75^4 is above 2^31, 255 x 51^4 is not.
  const ToneTable steep = GammaTable(-0.25);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(steep[i], 0) << i;
  for (size_t i = 5; i < 256; ++i) EXPECT_EQ(steep[i], 255) << i;
}

TEST(GammaTable, WhatIsNoNumberGivesZeroButForWhite) {
  const ToneTable table = GammaTable(std::nan(""));
  for (size_t i = 0; i < 255; ++i) EXPECT_EQ(table[i], 0);
  EXPECT_EQ(table[255], 255);
  const ToneTable negativeZero = GammaTable(-0.0);
  for (size_t i = 0; i < 255; ++i) EXPECT_EQ(negativeZero[i], 0);
  EXPECT_EQ(negativeZero[255], 255);
}

TEST(GammaTable, InfinityIsWhite) {
  const ToneTable table = GammaTable(kInfinity);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], 255);
}

// --- gain and bias ---

TEST(GainTable, TwoHalvesAreTheIdentity) {
  const ToneTable table = GainTable(0.5, 0.5);
  for (int i = 0; i < 256; ++i) EXPECT_EQ(table[static_cast<size_t>(i)], i);
}

TEST(GainTable, AGainOfThreeQuartersSquaresBothHalvesAndTruncates) {
  const ToneTable table = GainTable(0.75, 0.5);
  for (int i = 0; i < 128; ++i) EXPECT_EQ(table[static_cast<size_t>(i)], 2 * i * i / 255) << i;
  for (int i = 128; i < 256; ++i) {
    const int k = 255 - i;
    EXPECT_EQ(table[static_cast<size_t>(i)], 255 - (2 * k * k + 254) / 255) << i;
  }
}

// The table holds numerator / denominator, cut off. Where that is whole, rounding decides on which side it falls.
void ExpectQuotient(int value, int numerator, int denominator, int i) {
  const bool whole = numerator % denominator == 0;
  EXPECT_GE(value, numerator / denominator - (whole ? 1 : 0)) << i;
  EXPECT_LE(value, numerator / denominator) << i;
}

TEST(GainTable, ABiasOfAQuarterDarkens) {
  // x / ((1 - x) 2 + 1)
  const ToneTable table = GainTable(0.5, 0.25);
  for (int i = 0; i < 256; ++i) ExpectQuotient(table[static_cast<size_t>(i)], 255 * i, 765 - 2 * i, i);
}

TEST(GainTable, ABiasOfThreeQuartersLightens) {
  // x / (1 - (1 - x) 2 / 3)
  const ToneTable table = GainTable(0.5, 0.75);
  for (int i = 0; i < 256; ++i) ExpectQuotient(table[static_cast<size_t>(i)], 765 * i, 255 + 2 * i, i);
}

TEST(GainTable, ABiasOfOneHasNoMiddle) {
  // y / y, but for 0.
  const ToneTable table = GainTable(0.5, 1.0);
  EXPECT_EQ(table[0], 0);
  for (size_t i = 1; i < 256; ++i) EXPECT_GE(table[i], 254) << i;
}

TEST(GainTable, ABiasBeyondOneLeavesTheRangeAndIsCut) {
  // b is -1.5, so the divisor 1 - 1.5 (1 - y) is negative below a third and then less than y.
  const ToneTable table = GainTable(0.5, 2.0);
  for (size_t i = 1; i < 85; ++i) EXPECT_EQ(table[i], 0) << i;
  for (size_t i = 86; i < 256; ++i) EXPECT_EQ(table[i], 255) << i;
}

TEST(GainTable, AGainOfOneIsAStep) {
  const ToneTable table = GainTable(1.0, 0.5);
  for (size_t i = 0; i < 128; ++i) EXPECT_EQ(table[i], 0);
  for (size_t i = 128; i < 256; ++i) EXPECT_EQ(table[i], 255);
}

TEST(GainTable, AGainOfZeroIsGrayButForTheEnds) {
  const ToneTable table = GainTable(0.0, 0.5);
  EXPECT_EQ(table[0], 0);
  for (size_t i = 1; i < 255; ++i) EXPECT_EQ(table[i], 127);
  EXPECT_EQ(table[255], 255);
}

TEST(GainTable, AGainAboveOneIsNoNumberAndZeroButForTheEnds) {
  const ToneTable table = GainTable(1.5, 0.5);
  for (size_t i = 0; i < 255; ++i) EXPECT_EQ(table[i], 0);
  EXPECT_EQ(table[255], 255);
}

TEST(GainTable, ABiasOfZeroIsBlackThroughout) {
  // White is 1 / (0 x infinity + 1), no number.
  const ToneTable table = GainTable(0.5, 0.0);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], 0);
}

// --- the caller's table ---

class TransferTableTest : public testing::Test {
 protected:
  ToneTable Of(std::vector<int32_t> values) { return TransferTable(host_.NewArray(std::move(values))->ArrayHandle()); }

  PluginHost host_;
};

TEST_F(TransferTableTest, AnEmptyOrNilArrayIsAllZeros) {
  EXPECT_EQ(Of({}), ToneTable{});
  EXPECT_EQ(TransferTable(nullptr), ToneTable{});
}

TEST_F(TransferTableTest, TheHostIsNotAskedAboutANilArray) {
  TransferTable(nullptr);
  EXPECT_EQ(host_->Calls("RuntimeUBound"), 0);
}

TEST_F(TransferTableTest, AShortArrayMapsTheRestTo0) {
  ToneTable expected = {};
  expected[0] = 9;
  expected[1] = 8;
  EXPECT_EQ(Of({9, 8}), expected);
}

TEST_F(TransferTableTest, ALongArrayLosesItsTail) {
  std::vector<int32_t> values(300, 77);
  for (size_t i = 0; i < 256; ++i) values[i] = static_cast<int32_t>(255 - i);
  const ToneTable table = Of(values);
  for (size_t i = 0; i < 256; ++i) EXPECT_EQ(table[i], 255 - i);
}

TEST_F(TransferTableTest, TheLowByteIsStored) {
  const ToneTable table = Of({256, -1, 300, 255, -256, INT32_MIN, INT32_MAX});
  EXPECT_EQ(std::vector<int>(table.begin(), table.begin() + 7), (std::vector<int>{0, 255, 44, 255, 0, 0, 255}));
}

}  // namespace
}  // namespace zvk::filters
