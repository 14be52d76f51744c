#include "scaling/word_lists.h"

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

constexpr double kOne = 1 << kWordPointBits;

int32_t Half(int32_t weights, int32_t position) { return static_cast<int16_t>(weights >> 16 * (position % 2)); }

// One value as the kernels sum it, in exact whole numbers. Expects that all sums fit 32 bits in any order of samples.
double WordValue(const WordLists &lists, const ScaleTapList &told, const std::vector<uint16_t> &samples) {
  const WordList &list = lists[0];
  int64_t upper = 0, lower = 0, upperSize = 0, lowerSize = 0;
  for (int32_t t = 0; t < told.TapCount; ++t) {
    const int32_t position = told.Taps[t].SourceIndex - 2 * list.pair;
    const WordWeights &weights = lists.WeightsOf(list)[position / 2];
    const int64_t sample = samples[static_cast<size_t>(told.Taps[t].SourceIndex)] - 32768;
    upper += sample * Half(weights.upper, position);
    lower += sample * Half(weights.lower, position);
    upperSize += 32768 * std::abs(int64_t{Half(weights.upper, position)});
    lowerSize += 32768 * std::abs(int64_t{Half(weights.lower, position)});
  }
  EXPECT_LE(upperSize + std::abs(int64_t{list.start}) + (lowerSize >> list.shift), INT32_MAX);
  EXPECT_LE(lowerSize, INT32_MAX);
  return static_cast<double>(upper + (lower >> list.shift) + list.start) / kOne;
}

TEST(WordLists, TheDigitsOfPairsAreTheWeights) {
  // A quarter and a half of three quarters, the first one at an odd position.
  const MadeList made({{0.25F, 3}, {0.5F, 5}}, 0.75F);
  const WordLists lists({&made.list, 1}, 0.5);
  ASSERT_TRUE(lists);
  const WordList &list = lists[0];
  EXPECT_EQ(list.pair, 1);
  EXPECT_EQ(list.pairs, 2);
  const WordWeights *weights = lists.WeightsOf(list);
  for (const auto &[pair, weight] : {std::pair{0, 1.0 / 3.0}, {1, 2.0 / 3.0}}) {
    EXPECT_EQ(Half(weights[pair].upper, 0), 0);
    EXPECT_EQ(Half(weights[pair].lower, 0), 0);
    const double unit = kOne * (1 << list.shift);
    const double made =
        (Half(weights[pair].upper, 1) * static_cast<double>(1 << list.shift) + Half(weights[pair].lower, 1)) / unit;
    EXPECT_NEAR(made, weight, 0.5000001 / unit);
  }
  EXPECT_EQ(&lists.Told(0), &made.list);
}

TEST(WordLists, AListWithoutTapsWithoutASumOrTooHeavyIsNeverSure) {
  const MadeList nothing({}, 0.0F), endless({{1.0F, 0}, {-1.0F, 1}}, 0.0F), heavy({{2.0F, 0}, {-1.0F, 2}}, 1.0F);
  for (const MadeList *made : {&nothing, &endless, &heavy}) {
    const WordLists lists({&made->list, 1}, 0.5);
    EXPECT_GT(2 * lists[0].edge, 1 << kWordPointBits);
  }
}

TEST(WordLists, TiesAreMovedAwayFromTheWholeNumbers) {
  const MadeList box({{1.0F, 0}, {1.0F, 1}, {1.0F, 2}, {1.0F, 3}}, 4.0F);
  const WordLists lists({&box.list, 1}, 0.5);
  EXPECT_EQ(lists[0].edge, 0);
  EXPECT_EQ(lists[0].start, static_cast<int32_t>((0.5 + 32768.0 + HalfStepOf(box.list)) * kOne));
}

TEST(WordLists, NoSumIsFartherFromTheToldOneThanTheEdgeAndATwelfthOfItWouldBeWrong) {
  double worst = 0.0;
  int32_t sureLists = 0;
  ForEachFilterList([&](const ScaleTapList &list, std::mt19937 &random) {
    const WordLists lists({&list, 1}, 0.5);
    if (2 * lists[0].edge > 1 << kWordPointBits) return;
    ++sureLists;
    for (const auto &samples : Adversaries<uint16_t>(list, random)) {
      const double value = WordValue(lists, list, samples), told = ToldValue(list, samples, 0.5);
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

}  // namespace
}  // namespace zvk::scaling
