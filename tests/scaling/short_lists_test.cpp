#include "scaling/short_lists.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "tests/scaling/made_lists.h"

namespace zvk::scaling {
namespace {

MadeList Uniform(int32_t count, float weight) {
  std::vector<ScaleTap> taps;
  for (int32_t i = 0; i < count; ++i) taps.push_back({weight, i});
  return {taps, weight * static_cast<float>(count)};
}

constexpr ShortSums kPlain{0.5, 1};

TEST(ShortLists, WeightsAddUpToOneAndPositionsWithoutATapWeighNothing) {
  const MadeList made({{0.5F, 7}, {-0.25F, 9}, {1.75F, 10}}, 2.0F);
  const ShortLists lists({&made.list, 1}, {0.5, 4});
  ASSERT_TRUE(lists);
  const ShortList &list = lists[0];
  EXPECT_EQ(list.source, 7);
  EXPECT_EQ(list.count, 4);
  const float *weights = lists.WeightsOf(list);
  EXPECT_EQ((std::vector<float>(weights, weights + 4)), (std::vector<float>{0.25F, 0.0F, -0.125F, 0.875F}));
}

TEST(ShortLists, EachListIsPaddedToWholeTurnsOfItsPartialSums) {
  const MadeList three = Uniform(3, 1.0F), five = Uniform(5, 1.0F);
  const ScaleTapList both[] = {three.list, five.list, three.list};
  const ShortLists lists(both, {0.5, 4});
  EXPECT_EQ(lists[1].firstWeight - lists[0].firstWeight, 4);
  EXPECT_EQ(lists[2].firstWeight - lists[1].firstWeight, 8);
  EXPECT_EQ(lists.WeightsOf(lists[0])[3], 0.0F);
  EXPECT_EQ(lists.WeightsOf(lists[1])[7], 0.0F);
  EXPECT_EQ(&lists.Told(1), &both[1]);
}

TEST(ShortLists, AListWithoutTapsOrWithoutASumIsNeverSure) {
  const MadeList nothing({}, 0.0F), endless({{1.0F, 0}, {-1.0F, 1}}, 0.0F),
      huge({{1e30F, 0}, {-1e30F, 1}, {1.0F, 2}}, 1.0F);
  for (const MadeList *made : {&nothing, &endless, &huge}) {
    const ShortLists lists({&made->list, 1}, kPlain);
    EXPECT_GT(lists[0].spread, 1.0F);
    EXPECT_GT(BoundOfShortSum(made->list, kPlain), 0.25);
  }
}

TEST(ShortLists, TiesAreMovedAwayFromTheWholeNumbers) {
  // Of four equal weights every value is a multiple of an eighth with the half: the nearest to a whole number is moved
  // by a sixteenth.
  const MadeList box = Uniform(4, 1.0F);
  EXPECT_EQ(HalfStepOf(box.list), 0.0625);
  const ShortLists lists({&box.list, 1}, kPlain);
  EXPECT_EQ(lists[0].start, 0.5F + 128.0F + 0.0625F);
  EXPECT_EQ(lists[0].spread, 0.0F);
  EXPECT_EQ(HalfStepOf(MadeList({{0.5F, 0}, {0.25F, 1}}, 0.75F).list), 0.25 / 3.0);
  EXPECT_EQ(HalfStepOf(MadeList({{0x1p-12F, 0}}, 1.0F).list), 0.25 / 4096.0);
  EXPECT_EQ(HalfStepOf(MadeList({{0x1p-13F, 0}}, 1.0F).list), 0.0);
  EXPECT_EQ(HalfStepOf(MadeList({{1.0F / 3.0F, 0}}, 1.0F).list), 0.0);
}

TEST(ShortLists, NoValueOfAMovedListLiesAsNearToAWholeNumberAsItsBound) {
  for (const auto &[weights, sum] : {std::pair{std::vector<float>{1, 1, 1}, 3.0F},
                                     {{0.25F, 0.75F, 1, 0.5F}, 2.5F},
                                     {{-0.0625F, 0.5625F, 0.5625F, -0.0625F}, 1.0F}}) {
    std::vector<ScaleTap> taps;
    for (size_t i = 0; i < weights.size(); ++i) taps.push_back({weights[i], static_cast<int32_t>(i)});
    const MadeList made(taps, sum);
    const double halfStep = HalfStepOf(made.list), bound = BoundOfShortSum(made.list, kPlain);
    ASSERT_GT(halfStep, bound);
    std::mt19937 random(3);
    for (int32_t i = 0; i < 10000; ++i) {
      double value = 0.0;
      for (const float weight : weights) value += double{weight} * (random() % 256);
      value = value / double{sum} + 0.5;
      const double moved = value + halfStep;
      ASSERT_EQ(std::floor(moved), std::floor(value));
      ASSERT_GE(std::min(moved - std::floor(moved), std::ceil(moved) - moved), halfStep * 0.999);
    }
  }
}

// --- the bound ---

// One value as the kernels sum it, with fused products or without.
double ShortValue(const ShortLists &lists, const std::vector<uint8_t> &samples, int32_t chains, bool fused) {
  const ShortList &list = lists[0];
  const float *weights = lists.WeightsOf(list);
  std::vector<float> sums(static_cast<size_t>(chains), 0.0F);
  for (int32_t t = 0; t < list.count; ++t) {
    float &sum = sums[static_cast<size_t>(t % chains)];
    const auto sample = static_cast<float>(samples[static_cast<size_t>(t)] - 128);
    if (fused) {
      sum = std::fma(sample, weights[t], sum);
    } else {
      const float product = sample * weights[t];
      sum = sum + product;
    }
  }
  for (int32_t chain = 1; chain < chains; ++chain) sums[0] = sums[0] + sums[static_cast<size_t>(chain)];
  const float value = sums[0] + list.start;
  return value;
}

// The largest distance of a short value from the told one, as a part of the bound.
double WorstPartOfBound(int32_t chains, bool fused) {
  double worst = 0.0;
  ForEachFilterList([&](const ScaleTapList &list, std::mt19937 &random) {
    const ShortSums sums{0.5, chains};
    const ShortLists lists({&list, 1}, sums);
    if (lists[0].spread > 1.0F) return;
    const double bound = BoundOfShortSum(list, sums), moved = lists[0].spread == 0.0F ? HalfStepOf(list) : -bound;
    for (const auto &samples : Adversaries<uint8_t>(list, random)) {
      const double off = std::abs(ShortValue(lists, samples, chains, fused) - moved - ToldValue(list, samples, 0.5));
      worst = std::max(worst, off / bound);
    }
  });
  return worst;
}

TEST(ShortLists, NoShortSumIsFartherFromTheToldOneThanTheBoundAndABoundATwelfthOfItWouldBeWrong) {
  for (const int32_t chains : {1, 2, 4}) {
    for (const bool fused : {false, true}) {
      const double worst = WorstPartOfBound(chains, fused);
      EXPECT_LE(worst, 1.0);
      EXPECT_GT(worst, 1.0 / 12.0);
    }
  }
}

TEST(ShortLists, TheBoundGrowsWithTapsWeightsAndRoundingsAndShrinksWithPartialSums) {
  const MadeList few = Uniform(8, 1.0F), many = Uniform(80, 1.0F), wide({{3.0F, 0}, {-2.0F, 1}}, 1.0F),
                 narrow({{0.5F, 0}, {0.5F, 1}}, 1.0F);
  EXPECT_LT(BoundOfShortSum(few.list, kPlain), BoundOfShortSum(many.list, kPlain));
  EXPECT_LT(BoundOfShortSum(narrow.list, kPlain), BoundOfShortSum(wide.list, kPlain));
  EXPECT_LT(BoundOfShortSum(many.list, {0.5, 4}), BoundOfShortSum(many.list, kPlain));
  EXPECT_LT(BoundOfShortSum(many.list, kPlain), BoundOfShortSum(many.list, {0.5, 1, kRoundingsOfGray}));
}

}  // namespace
}  // namespace zvk::scaling
