#include "scaling/digit_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "scaling/short_lists.h"
#include "tests/scaling/made_lists.h"

namespace zvk::scaling {
namespace {

constexpr double kOne = 1 << kDigitBits;

// The weight of a column, out of its digits.
int32_t WeightOf(const int32_t *digits, int32_t column) {
  int32_t weight = 0;
  for (int32_t digit = kDigits - 1; digit >= 0; --digit) {
    const int32_t four = digits[column / kColumnsOfQuad * kDigits + digit];
    weight = weight * 256 + static_cast<int8_t>(four >> 8 * (column % kColumnsOfQuad));
  }
  return weight;
}

// One value as the kernels sum it. Expects that the sums fit 32 bits.
double DigitValue(const DigitLists &lists, const ScaleTapList &told, const std::vector<uint8_t> &samples) {
  const DigitList &list = lists[0];
  int64_t sum = list.start, size = std::abs(int64_t{list.start});
  for (int32_t t = 0; t < told.TapCount; ++t) {
    const int32_t weight = WeightOf(lists.WeightsOf(list), told.Taps[t].SourceIndex - list.quad * kColumnsOfQuad);
    sum += int64_t{weight} * samples[static_cast<size_t>(told.Taps[t].SourceIndex)];
    size += std::abs(int64_t{weight}) * 255;
  }
  EXPECT_LE(size, INT32_MAX);
  return static_cast<double>(sum) / kOne;
}

TEST(DigitLists, ThreeDigitsOfEachColumnAreItsWeight) {
  const MadeList made({{-0.25F, 6}, {0.75F, 7}, {1.0F, 9}}, 1.5F);
  const DigitLists lists({&made.list, 1}, 0.5);
  ASSERT_TRUE(lists);
  EXPECT_EQ(lists[0].quad, 1);
  EXPECT_EQ(lists[0].quads, 2);
  const double expected[] = {0, 0, -0.25 / 1.5, 0.5, 0, 1.0 / 1.5, 0, 0};
  for (int32_t column = 0; column < 8; ++column) {
    EXPECT_EQ(WeightOf(lists.WeightsOf(lists[0]), column), std::nearbyint(expected[column] * kOne)) << column;
  }
  EXPECT_EQ(&lists.Told(0), &made.list);
}

TEST(DigitLists, AListWithoutTapsWithoutASumOrTooHeavyIsNeverSure) {
  const MadeList nothing({}, 0.0F), endless({{1.0F, 0}, {-1.0F, 1}}, 0.0F), heavy({{2.0F, 0}, {-1.0F, 2}}, 1.0F);
  for (const MadeList *made : {&nothing, &endless, &heavy}) {
    const DigitLists lists({&made->list, 1}, 0.5);
    EXPECT_GT(2 * lists[0].edge, 1 << kDigitBits);
  }
}

TEST(DigitLists, NoSumIsFartherFromTheToldOneThanTheEdgeAndATwelfthOfItWouldBeWrong) {
  for (const double rounding : {0.5, 0.0}) {
    double worst = 0.0;
    int32_t sureLists = 0;
    ForEachFilterList([&](const ScaleTapList &list, std::mt19937 &random) {
      const DigitLists lists({&list, 1}, rounding);
      if (2 * lists[0].edge > 1 << kDigitBits) return;
      ++sureLists;
      for (const auto &samples : Adversaries<uint8_t>(list, random)) {
        const double value = DigitValue(lists, list, samples), told = ToldValue(list, samples, rounding);
        if (lists[0].edge == 0) {
          ASSERT_EQ(std::floor(value), std::floor(told));
        } else {
          worst = std::max(worst, std::abs(value - told) * kOne / lists[0].edge);
        }
      }
    });
    EXPECT_LE(worst, 1.0);
    EXPECT_GT(worst, 1.0 / 12.0);
    EXPECT_GT(sureLists, 1000);
  }
}

}  // namespace
}  // namespace zvk::scaling
