#include "scaling/scale_taps.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/naive/scale.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {
namespace {

using Taps = std::vector<std::pair<int32_t, float>>;

Taps TapsOf(const ScaleTapList &list) {
  Taps taps;
  for (int32_t i = 0; i < list.TapCount; ++i) taps.emplace_back(list.Taps[i].SourceIndex, list.Taps[i].Weight);
  return taps;
}

// A built table of its own.
struct Built : ScaleTapTable {
  Built(const ScaleFilter &filter, const ScaleAxis &axis, int32_t count, double scale, int32_t sourceSize) {
    EXPECT_TRUE(Build(filter, axis, count, scale, sourceSize, nullptr));
  }
  const ScaleTapList &operator[](int32_t index) const { return Lists()[index]; }
};

TEST(ScaleTaps, TriangleFromTwoToFour) {
  for (const ScaleAxis *axis : {&kHorizontalAxis, &kVerticalAxis}) {
    const Built table(*FindScaleFilter(ScaleTriangle), *axis, 4, 2.0, 2);
    EXPECT_EQ(TapsOf(table[0]), (Taps{{0, 0.75f}}));
    EXPECT_EQ(table[0].WeightSum, 0.75f);
    EXPECT_EQ(TapsOf(table[1]), (Taps{{0, 0.75f}, {1, 0.25f}}));
    EXPECT_EQ(table[1].WeightSum, 1.0f);
    EXPECT_EQ(TapsOf(table[2]), (Taps{{0, 0.25f}, {1, 0.75f}}));
    EXPECT_EQ(TapsOf(table[3]), (Taps{{1, 0.75f}}));
  }
}

TEST(ScaleTaps, TriangleFromFourToTwoWidensTheWindow) {
  const Built table(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 2, 0.5, 4);
  EXPECT_EQ(TapsOf(table[0]), (Taps{{0, 0.75f}, {1, 0.75f}, {2, 0.25f}}));
  EXPECT_EQ(table[0].WeightSum, 1.75f);
  EXPECT_EQ(TapsOf(table[1]), (Taps{{1, 0.25f}, {2, 0.75f}, {3, 0.75f}}));
}

TEST(ScaleTaps, TriangleOverOnePixelHasOneTapAtEveryPosition) {
  const Built table(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 5, 5.0, 1);
  for (int32_t i = 0; i < 5; ++i) {
    ASSERT_EQ(table[i].TapCount, 1);
    EXPECT_EQ(table[i].Taps[0].SourceIndex, 0);
  }
}

TEST(ScaleTaps, AScaleOfOneDoesNotWiden) {
  const Built box(*FindScaleFilter(ScaleBox), kHorizontalAxis, 3, 1.0, 3);
  for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(TapsOf(box[i]), (Taps{{i, 1.0f}}));
  // The candidates at a distance of 1 are exactly 0.
  const Built triangle(*FindScaleFilter(ScaleTriangle), kVerticalAxis, 3, 1.0, 3);
  for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(TapsOf(triangle[i]), (Taps{{i, 1.0f}}));
  const Built poly3(*FindScaleFilter(ScalePoly3), kHorizontalAxis, 3, 1.0, 3);
  for (int32_t i = 0; i < 3; ++i) EXPECT_EQ(TapsOf(poly3[i]), (Taps{{i, 1.0f}}));
}

TEST(ScaleTaps, AWeightWithinRoundingOfZeroStaysInTheList) {
  const Built table(*FindScaleFilter(ScaleCubic), kHorizontalAxis, 3, 1.0, 3);
  const auto tiny = static_cast<float>(1.3333333333333333 - 2.3333333333333335 + 1.0);
  ASSERT_EQ(table[1].TapCount, 3);
  EXPECT_EQ(table[1].Taps[0].Weight, tiny);
  EXPECT_EQ(table[1].Taps[1].Weight, 1.0f);
  EXPECT_EQ(table[1].Taps[2].Weight, tiny);
}

TEST(ScaleTaps, BoxTakesASampleOnTheEdgeOnBothSides) {
  const Built table(*FindScaleFilter(ScaleBox), kHorizontalAxis, 3, 1.5, 2);
  EXPECT_EQ(TapsOf(table[0]), (Taps{{0, 1.0f}}));
  EXPECT_EQ(TapsOf(table[1]), (Taps{{0, 1.0f}, {1, 1.0f}}));
  EXPECT_EQ(table[1].WeightSum, 2.0f);
  EXPECT_EQ(TapsOf(table[2]), (Taps{{1, 1.0f}}));
}

TEST(ScaleTaps, TheSumIsOfTheUnroundedWeights) {
  // From 10 positions to 7: sums of rounded and of unrounded weights differ somewhere.
  const double scale = 7.0 / 10.0;
  const Built table(*FindScaleFilter(ScaleLanczos8), kHorizontalAxis, 7, scale, 10);
  bool differs = false;
  for (int32_t i = 0; i < 7; ++i) {
    double unrounded = 0.0;
    float rounded = 0.0f;
    for (int32_t j = 0; j < 10; ++j) {
      const double distance = std::abs(((i + 0.5) / scale - j - 0.5) * scale);
      if (distance >= 8.0) continue;
      unrounded += FindScaleFilter(ScaleLanczos8)->FilterKernel(distance);
      rounded += static_cast<float>(FindScaleFilter(ScaleLanczos8)->FilterKernel(distance));
    }
    EXPECT_EQ(table[i].WeightSum, static_cast<float>(unrounded));
    differs |= table[i].WeightSum != rounded;
  }
  EXPECT_TRUE(differs);
}

TEST(ScaleTaps, AnEmptyAxisGivesEmptyLists) {
  const Built table(*FindScaleFilter(ScaleLanczos3), kHorizontalAxis, 3, std::numeric_limits<double>::infinity(), 0);
  for (int32_t i = 0; i < 3; ++i) {
    EXPECT_NE(table[i].Taps, nullptr);
    EXPECT_EQ(table[i].TapCount, 0);
    EXPECT_EQ(table[i].WeightSum, 0.0f);
  }
}

TEST(ScaleTaps, Capacities) {
  struct Expected {
    const ScaleFilter &filter;
    const ScaleAxis &axis;
    double scale;
    size_t taps;
  };
  for (const Expected &expected : {
           Expected{*FindScaleFilter(ScaleBox), kHorizontalAxis, 1.0, 2},
           {*FindScaleFilter(ScaleBox), kVerticalAxis, 1.0, 3},
           {*FindScaleFilter(ScaleLanczos8), kHorizontalAxis, 3.7, 18},
           {*FindScaleFilter(ScalePoly3), kVerticalAxis, 2.0, 10},
           {*FindScaleFilter(ScaleBox), kHorizontalAxis, 0.2, 6},        // window 2.5: 2 x (2 + 1)
           {*FindScaleFilter(ScaleBox), kVerticalAxis, 0.2, 7},          // trunc(5 + 2)
           {*FindScaleFilter(ScaleLanczos3), kHorizontalAxis, 0.4, 16},  // window 7.5: 2 x (7 + 1)
           {*FindScaleFilter(ScaleLanczos3), kVerticalAxis, 0.4, 17},    // trunc(15 + 2)
           {*FindScaleFilter(ScalePoly3), kHorizontalAxis, 0.25, 34},    // window 16, twice as wide as the kernel
           {*FindScaleFilter(ScalePoly3), kVerticalAxis, 0.25, 34},
       }) {
    faults::Heap heap;
    const Built table(expected.filter, expected.axis, 7, expected.scale, 50);
    const auto allocations = heap.Allocations();
    ASSERT_EQ(allocations.size(), 1u);
    EXPECT_EQ(allocations[0].count * allocations[0].size,
              7 * (sizeof(ScaleTapList) + expected.taps * sizeof(ScaleTap)));
  }
}

TEST(ScaleTaps, NoTapIsLostToTheCapacity) {
  // Windows whose widened width comes out just below a whole number are where rounding could add a candidate.
  for (int32_t mode = 1; mode <= 7; ++mode) {
    for (const int32_t count : {9, 12, 15, 18, 21}) {
      const int32_t size = count * 59 / 3;
      const double scale = static_cast<double>(count) / size;
      const Built columns(*FindScaleFilter(mode), kHorizontalAxis, count, scale, size);
      const Built rows(*FindScaleFilter(mode), kVerticalAxis, count, scale, size);
      for (int32_t i = 0; i < count; ++i) {
        const auto taps = static_cast<int32_t>(naive::TapsAt(mode, true, i, scale, size).positions.size());
        EXPECT_EQ(columns[i].TapCount, taps);
        EXPECT_EQ(rows[i].TapCount, taps);
      }
    }
  }
}

TEST(ScaleTaps, ARefusedCapacityGivesNoTapsAndAsksForNoMemoryForThem) {
  // 8 / 5e-8 is a window of 160000000, so a list of more than 2 GiB; the second window fits no 32-bit integer.
  for (const double scale : {5e-8, 1e-9}) {
    for (const ScaleAxis *axis : {&kHorizontalAxis, &kVerticalAxis}) {
      const faults::Heap heap;
      const Built table(*FindScaleFilter(ScaleLanczos8), *axis, 2, scale, 20000000);
      const auto allocations = heap.Allocations();
      ASSERT_EQ(allocations.size(), 1u);
      EXPECT_EQ(allocations[0].count * allocations[0].size, 2 * sizeof(ScaleTapList));
      for (int32_t i = 0; i < 2; ++i) {
        EXPECT_EQ(table[i].Taps, nullptr);
        EXPECT_EQ(table[i].TapCount, 0);
        EXPECT_EQ(table[i].WeightSum, 0.0f);
      }
    }
  }
}

TEST(ScaleTaps, AllListsTogetherMayBeLargerThanEachMayBe) {
  // Windows of 8000 have 16002 taps, so 20000 lists have 320040000 of them.
  faults::Heap heap;
  size_t asked = 0;
  heap.FailCalloc([&](size_t count, size_t size) {
    asked = count * size;
    return true;
  });
  ScaleTapTable table;
  EXPECT_FALSE(table.Build(*FindScaleFilter(ScaleLanczos8), kHorizontalAxis, 20000, 0.001, 20000000, nullptr));
  EXPECT_EQ(table.Lists(), nullptr);
  EXPECT_EQ(asked, sizeof(size_t) == 4 ? 0 : 20000 * sizeof(ScaleTapList) + 320040000ull * sizeof(ScaleTap));
}

TEST(ScaleTaps, ARebuiltTableForgetsWhatItWas) {
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 3, 1.0, 3, nullptr));
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleBox), kVerticalAxis, 2, 0.5, 4, nullptr));
  EXPECT_EQ(TapsOf(table.Lists()[0]), (Taps{{0, 1.0f}, {1, 1.0f}}));
  EXPECT_EQ(TapsOf(table.Lists()[1]), (Taps{{2, 1.0f}, {3, 1.0f}}));
  faults::Heap heap;
  heap.FailCallocAt(1);
  EXPECT_FALSE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 3, 1.0, 3, nullptr));
  EXPECT_EQ(table.Lists(), nullptr);
}

TEST(ScaleTaps, AllMemoryComesBack) {
  faults::Heap heap;
  {
    ScaleTapTable table;
    ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleMitchell), kHorizontalAxis, 3, 0.5, 6, nullptr));
    EXPECT_EQ(heap.Outstanding(), 1u);
    ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleMitchell), kVerticalAxis, 5, 0.5, 10, nullptr));
    EXPECT_EQ(heap.Outstanding(), 1u);
  }
  EXPECT_EQ(heap.Outstanding(), 0u);
}

TEST(ScaleTaps, ATableThatIsRefusedOrCannotBeHadIsFalse) {
  faults::Heap heap;
  const auto build = [](int32_t count) {
    ScaleTapTable table;
    return table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, count, 1.0, 3, nullptr);
  };
  EXPECT_FALSE(build(INT32_MAX));
  EXPECT_FALSE(build(0));
  EXPECT_EQ(heap.CallocCalls(), 0);
  heap.FailCallocAt(1);
  EXPECT_FALSE(build(3));
  EXPECT_TRUE(build(3));
}

TEST(ScaleTaps, TheImageIsGivenTimeAfterEachEntry) {
  PluginHost host;
  static uint32_t ticks;
  ticks = 100;
  host->SetEntry(
      "TickCount", +[]() -> uint32_t { return ++ticks; });
  ImageClassData image{};
  image.Yield.YieldTicks = 1;
  int32_t yields = 0;
  host->onYield = [&] { ++yields; };
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 7, 1.0, 7, &image));
  EXPECT_EQ(yields, 7);
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 7, 1.0, 7, nullptr));
  EXPECT_EQ(yields, 7);
}

}  // namespace
}  // namespace zvk::scaling
