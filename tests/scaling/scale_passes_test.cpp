#include "scaling/scale_passes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "scaling/scale_engine.h"
#include "tests/scaling/hostile_column.h"
#include "tests/scaling/scale_testing.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {
namespace {

constexpr int32_t kTriangle = 1;
constexpr int32_t kLanczos3 = 3;

Outcome ScaleOutcome(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode, int32_t width,
                     int32_t height) {
  return OutcomeOf(dest, source, temp, [&] {
    return PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), mode, width, height) != 0;
  });
}

void ExpectNaive(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode, int32_t width,
                 int32_t height) {
  ASSERT_TRUE(ScaleOutcome(dest, source, temp, mode, width, height) ==
              NaiveOutcome(dest, source, temp, mode, width, height))
      << source.Record().ImageFormat << " to " << dest.Record().ImageFormat << ", filter " << mode << ", "
      << source.Record().Width << " x " << source.Record().Height << " to " << width << " x " << height;
}

// --- every pair ---

class ScalePassesOfFilter : public testing::TestWithParam<int32_t> {};
INSTANTIATE_TEST_SUITE_P(Filters, ScalePassesOfFilter, testing::Range(1, 8));

TEST_P(ScalePassesOfFilter, AllFormatsGiveTheNaiveBytes) {
  // Row counts on both sides of every batch; sizes up and down in either direction.
  constexpr int32_t kSizes[][4] = {{13, 9, 7, 21}, {5, 35, 11, 4}, {3, 25, 3, 25}, {40, 2, 9, 3}};
  uint32_t seed = 0;
  for (int32_t sourceFormat = 1; sourceFormat <= 41; ++sourceFormat) {
    for (int32_t destFormat = 1; destFormat <= 41; ++destFormat) {
      if (sourceFormat == 14 || destFormat == 14) continue;
      const auto &[sourceWidth, sourceHeight, width, height] = kSizes[++seed % 4];
      TestImage source(sourceWidth, sourceHeight, sourceFormat), dest(width + 2, height + 1, destFormat);
      source.FillNoise(seed);
      dest.FillNoise(seed + 1);
      ExpectNaive(dest, source, MakeTemp(dest, source, width).FillNoise(7), GetParam(), width, height);
    }
  }
}

TEST_P(ScalePassesOfFilter, WideRowsAreStagedInStretches) {
  for (const auto &[sourceWidth, width] : {std::pair{1500, 400}, {700, 1}, {300, 900}, {257, 257}, {5000, 3}}) {
    TestImage source(sourceWidth, 9, ImageFormatRGB), dest(width, 2, ImageFormatRGB);
    source.FillNoise(static_cast<uint32_t>(width));
    ExpectNaive(dest, source, MakeTemp(dest, source, width), GetParam(), width, 2);
  }
}

TEST(ScalePasses, ListsMayLieAnywhereInTheSource) {
  // Lists that begin left of the one before, none of which a filter makes at the edge of a stretch; and empty ones.
  constexpr int32_t kFirst[] = {700, 690, 0, 5, 3, 400, 143, 900, 901, 899, 0, 555};
  constexpr int32_t kTaps[] = {10, 20, 256, 1, 0, 2, 257, 3, 1, 9, 0, 300};
  constexpr int32_t kWidth = 12;
  std::vector<naive::Taps> taps(kWidth);
  std::vector<std::vector<ScaleTap>> storage(kWidth);
  std::vector<ScaleTapList> lists;
  for (int32_t x = 0; x < kWidth; ++x) {
    taps[x].weightSum = 0.5f * static_cast<float>(kTaps[x]);
    for (int32_t t = 0; t < kTaps[x]; ++t) {
      const float weight = 0.2f + 0.1f * static_cast<float>((t + x) % 7);
      taps[x].positions.push_back(kFirst[x] + t);
      taps[x].weights.push_back(weight);
      storage[x].push_back({weight, kFirst[x] + t});
    }
    lists.push_back({storage[x].data(), kTaps[x], taps[x].weightSum});
  }
  TestImage source(1000, 19, ImageFormatRGBA), dest(kWidth, 1, ImageFormatRGBA);
  source.FillNoise(1);
  const TestImage temp = MakeTemp(dest, source, kWidth);
  naive::PassOverColumns(*naive::PairFor(source.Record(), dest.Record()), source.Record(), temp.Record(), taps);
  const Bytes expected = temp.Storage();
  TestImage(temp).FillNoise(2);
  const Bytes margins = temp.Storage();
  const ScaleJob told{&source.Record(), &dest.Record(), 1, kWidth, &temp.Record(), lists.data()};
  const PassJob job(told, ShortenColumns(told, RGBA_to_RGBA, kRoundToNearest, false));
  const int32_t end = 19;
  PassesOf(RGBA_to_RGBA).Horizontal(job, {0, end, nullptr}, kRoundToNearest);
  for (int32_t y = 0; y < end; ++y) {
    const ptrdiff_t position = temp.Pixel(0, y) - temp.Storage().data();
    EXPECT_EQ(temp.Row(y, kWidth), Bytes(&expected[position], &expected[position] + 4 * kWidth)) << y;
  }
  EXPECT_EQ(std::memcmp(temp.Storage().data(), margins.data(), TestImage::kMargin), 0);
}

// --- the order of row fetches ---

TEST(ScalePasses, RowsOfAMappedSourceAreFetchedOnceEach) {
  TestImage source(6, 5, ImageFormatRGB), dest(3, 4, ImageFormatRGB);
  source.FillNoise(1).Map();
  const TestImage temp = MakeTemp(dest, source, 3);
  fetches.clear();
  ASSERT_TRUE(PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), kTriangle, 3, 4));
  std::vector<Fetch> expected;
  for (int32_t y = 0; y < 5; ++y) expected.push_back({&source.Record(), y});
  EXPECT_EQ(fetches, expected);
}

TEST(ScalePasses, RowsOfAMappedTempAreFetchedForEveryPixelAndForEveryTap) {
  TestImage source(2, 2, ImageFormatG), dest(2, 4, ImageFormatG);
  source.FillNoise(1);
  TestImage temp = MakeTemp(dest, source, 2);
  temp.Map();
  const ImageClassData *record = &temp.Record();
  fetches.clear();
  ASSERT_TRUE(PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), kTriangle, 2, 4));
  // Two columns of two rows written; then the rows that each of the four output rows takes, for each of two columns.
  const std::vector<Fetch> expected = {{record, 0}, {record, 0}, {record, 1}, {record, 1}, {record, 0}, {record, 0},
                                       {record, 0}, {record, 1}, {record, 0}, {record, 1}, {record, 0}, {record, 1},
                                       {record, 0}, {record, 1}, {record, 1}, {record, 1}};
  EXPECT_EQ(fetches, expected);
}

TEST(ScalePasses, RowsOfAMappedDestinationAreFetchedForEveryPixel) {
  TestImage source(2, 2, ImageFormatG), dest(3, 2, ImageFormatG);
  dest.Map();
  const TestImage temp = MakeTemp(dest, source, 3);
  const ImageClassData *record = &dest.Record();
  fetches.clear();
  ASSERT_TRUE(PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), kTriangle, 3, 2));
  const std::vector<Fetch> expected = {{record, 0}, {record, 0}, {record, 0}, {record, 1}, {record, 1}, {record, 1}};
  EXPECT_EQ(fetches, expected);
}

TEST(ScalePasses, AllMappedImagesAreFetchedInTheNaiveOrder) {
  for (const auto &[sourceFormat, destFormat] : {std::pair{ImageFormatRGBA, ImageFormatGA},
                                                 {ImageFormatGray16, ImageFormatGray16},
                                                 {ImageFormatG, ImageFormatRGB}}) {
    TestImage source(9, 7, sourceFormat), dest(5, 11, destFormat);
    source.FillNoise(3).Map();
    dest.Map();
    TestImage temp = MakeTemp(dest, source, 5);
    temp.Map();
    fetches.clear();
    const Outcome outcome = ScaleOutcome(dest, source, temp, kLanczos3, 5, 11);
    const std::vector<Fetch> fetched = fetches;
    fetches.clear();
    EXPECT_TRUE(outcome == NaiveOutcome(dest, source, temp, kLanczos3, 5, 11));
    EXPECT_EQ(fetched, fetches);
  }
}

// --- nil rows ---

uint8_t *NoRow2(ImageClassData *record, int32_t row) { return row == 2 ? nullptr : GetRowLinear(record, row); }

TEST(ScalePasses, ANilRowDropsItsPixelsOrTapsSilently) {
  for (const bool mapped : {false, true}) {
    TestImage source(6, 6, ImageFormatRGB), dest(5, 5, ImageFormatRGB);
    source.FillNoise(5);
    dest.FillNoise(6);
    TestImage temp = MakeTemp(dest, source, 5).FillNoise(8);
    temp.Record().GetRow = NoRow2;
    temp.Record().IsMapping = mapped;
    const Outcome withoutTempRow = ScaleOutcome(dest, source, temp, kLanczos3, 5, 5);
    EXPECT_TRUE(withoutTempRow.result);
    EXPECT_TRUE(withoutTempRow == NaiveOutcome(dest, source, temp, kLanczos3, 5, 5));

    temp.Record().GetRow = GetRowLinear;
    dest.Record().GetRow = NoRow2;
    dest.Record().IsMapping = mapped;
    const Outcome withoutDestRow = ScaleOutcome(dest, source, temp, kLanczos3, 5, 5);
    EXPECT_TRUE(withoutDestRow.result);
    EXPECT_TRUE(withoutDestRow == NaiveOutcome(dest, source, temp, kLanczos3, 5, 5));
  }
}

TEST(ScalePasses, ANilSourceRowLeavesItsTempRowAsItWas) {
  for (const bool mapped : {false, true}) {
    TestImage source(6, 40, ImageFormatRGB), dest(5, 5, ImageFormatRGB);
    source.FillNoise(5);
    const TestImage temp = MakeTemp(dest, source, 5).FillNoise(8);
    const Bytes row2 = temp.Row(2, 5);
    const Outcome whole = NaiveOutcome(dest, source, temp, kLanczos3, 5, 5);
    ScaleTapTable columns;
    ASSERT_TRUE(columns.Build(*FindScaleFilter(ScaleLanczos3), kHorizontalAxis, 5, 5.0 / 6, 6, nullptr));
    const ScaleJob told{&source.Record(), nullptr, 0, 5, &temp.Record(), columns.Lists()};
    const PassJob job(told, ShortenColumns(told, RGB_to_RGB, kRoundToNearest, false));
    source.Record().GetRow = NoRow2;
    source.Record().IsMapping = mapped;
    const int32_t end = 40;
    PassesOf(RGB_to_RGB).Horizontal(job, {0, end, nullptr}, kRoundToNearest);
    EXPECT_EQ(temp.Row(2, 5), row2);
    const Bytes made = temp.Storage();
    temp.Storage() = whole.temp;
    temp.SetRow(2, row2);
    EXPECT_EQ(made, temp.Storage());
  }
}

// --- shared storage ---

TEST(ScalePasses, SourceAndDestinationMayBeTheSameImage) {
  for (const auto &[width, height] : {std::pair{12, 9}, {5, 4}}) {
    TestImage image(12, 9, ImageFormatRGBA);
    image.FillNoise(1);
    ExpectNaive(image, image, MakeTemp(image, image, width), kLanczos3, width, height);
  }
}

TEST(ScalePasses, ATempOverTheSourceSeesWhatItHasOverwritten) {
  for (const ptrdiff_t position : {0, 1, 4, 40, 123}) {
    TestImage source(12, 9, ImageFormatRGB, 64), dest(7, 6, ImageFormatRGB);
    source.FillNoise(2);
    const TestImage temp(source, position, 7, 9, ImageFormatScaling4, 50);
    ExpectNaive(dest, source, temp, kLanczos3, 7, 6);
  }
}

TEST(ScalePasses, ATempOverTheDestinationSeesWhatItHasOverwritten) {
  for (const ptrdiff_t position : {0, 1, 30, 111}) {
    TestImage source(12, 9, ImageFormatRGB), dest(12, 30, ImageFormatRGB, 64);
    source.FillNoise(2);
    dest.FillNoise(3);
    const TestImage temp(dest, position, 12, 9, ImageFormatScaling4, 64);
    ExpectNaive(dest, source, temp, kLanczos3, 12, 17);
  }
}

// --- rows ---

TEST(ScalePasses, ARunCoversItsRowsAndNoOthers) {
  TestImage source(20, 50, ImageFormatRGB), dest(9, 40, ImageFormatRGB);
  source.FillNoise(1);
  dest.FillNoise(2);
  TestImage temp = MakeTemp(dest, source, 9).FillNoise(3);
  const Bytes tempBefore = temp.Storage(), destBefore = dest.Storage();
  const Outcome whole = NaiveOutcome(dest, source, temp, kLanczos3, 9, 40);

  ScaleTapTable columns;
  ASSERT_TRUE(columns.Build(*FindScaleFilter(ScaleLanczos3), kHorizontalAxis, 9, 9.0 / 20, 20, nullptr));
  ScaleJob told{&source.Record(), &dest.Record(), 40, 9, &temp.Record(), columns.Lists()};
  const int32_t end = 33;
  const PassJob columnJob(told, ShortenColumns(told, RGB_to_RGB, kRoundToNearest, false));
  PassesOf(RGB_to_RGB).Horizontal(columnJob, {4, end, nullptr}, kRoundToNearest);
  for (int32_t y = 0; y < 50; ++y) {
    const auto *row = reinterpret_cast<const char *>(y >= 4 && y < end ? whole.temp.data() : tempBefore.data());
    const ptrdiff_t position = temp.Pixel(0, y) - temp.Storage().data();
    ASSERT_EQ(std::memcmp(temp.Pixel(0, y), row + position, 36), 0) << y;
  }

  temp.Storage() = whole.temp;
  ScaleTapTable rows;
  ASSERT_TRUE(rows.Build(*FindScaleFilter(ScaleLanczos3), kVerticalAxis, 40, 40.0 / 50, 50, nullptr));
  told.Table = rows.Lists();
  const PassJob rowJob(told, ShortenRows(told, RGB_to_RGB));
  PassesOf(RGB_to_RGB).Vertical(rowJob, {11, end, nullptr}, kRoundToNearest);
  for (int32_t y = 0; y < 40; ++y) {
    const auto *row = reinterpret_cast<const char *>(y >= 11 && y < end ? whole.dest.data() : destBefore.data());
    const ptrdiff_t position = dest.Pixel(0, y) - dest.Storage().data();
    ASSERT_EQ(std::memcmp(dest.Pixel(0, y), row + position, 27), 0) << y;
  }
}

TEST(ScalePasses, WithoutTheHalfTheHorizontalPassTruncates) {
  // 10 and 13 make 11.5, in all three ways of running.
  for (const bool mapped : {false, true}) {
    TestImage source(2, 33, ImageFormatG), dest(1, 33, ImageFormatG);
    for (int32_t y = 0; y < 33; ++y) source.SetRow(y, {10, 13});
    TestImage temp = MakeTemp(dest, source, 1);
    if (mapped) temp.Map();
    ScaleTapTable table;
    ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleBox), kHorizontalAxis, 1, 0.5, 2, nullptr));
    const ScaleJob told{&source.Record(), &dest.Record(), 33, 1, &temp.Record(), table.Lists()};
    const int32_t end = 33;
    const PassJob cut(told, ShortenColumns(told, G_to_G, kRoundTowardZero, false));
    PassesOf(G_to_G).Horizontal(cut, {0, end, nullptr}, kRoundTowardZero);
    for (int32_t y = 0; y < end; ++y) EXPECT_EQ(*temp.Pixel(0, y), 11);
    const PassJob rounded(told, ShortenColumns(told, G_to_G, kRoundToNearest, false));
    PassesOf(G_to_G).Horizontal(rounded, {0, end, nullptr}, kRoundToNearest);
    for (int32_t y = 0; y < end; ++y) EXPECT_EQ(*temp.Pixel(0, y), 12);
  }
}

TEST(ScalePasses, ARunOfNoRowsDoesNothing) {
  TestImage source(2, 2, ImageFormatG), dest(2, 2, ImageFormatG);
  source.FillNoise(1);
  TestImage temp = MakeTemp(dest, source, 2).FillNoise(2);
  const Bytes before = temp.Storage(), destBefore = dest.Storage();
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleBox), kHorizontalAxis, 2, 1.0, 2, nullptr));
  const ScaleJob job{&source.Record(), &dest.Record(), 2, 2, &temp.Record(), table.Lists()};
  const int32_t end = 0;
  PassesOf(G_to_G).Horizontal(job, {1, end, nullptr}, kRoundToNearest);
  PassesOf(G_to_G).Vertical(job, {1, end, nullptr}, kRoundToNearest);
  EXPECT_EQ(temp.Storage(), before);
  EXPECT_EQ(dest.Storage(), destBefore);
}

// --- short sums ---

TEST(ScalePasses, AColumnThatIsHardOnShortSumsGivesTheNaiveBytes) {
  constexpr int32_t kLanczos8 = 4;
  const std::vector<uint8_t> column = HostileColumn();
  const auto rows = static_cast<int32_t>(column.size());
  TestImage source(100, rows, ImageFormatG), dest(100, 5, ImageFormatG);
  for (int32_t y = 0; y < rows; ++y) source.SetRow(y, Bytes(100, column[static_cast<size_t>(y)]));
  ExpectNaive(dest, source, MakeTemp(dest, source, 100), kLanczos8, 100, 5);
}

// --- time for the host ---

TEST(ScalePasses, WhatHappensInAYieldIsSeenByTheNextRow) {
  PluginHost host;
  static uint32_t ticks;
  ticks = 100;
  host->SetEntry(
      "TickCount", +[]() -> uint32_t { return ++ticks; });
  TestImage source(3, 40, ImageFormatG), dest(3, 40, ImageFormatG);
  TestImage temp = MakeTemp(dest, source, 3);
  dest.Record().Yield.YieldTicks = 1;
  int32_t yields = 0;
  host->onYield = [&] {
    ++yields;
    // Only the row that comes next changes.
    if (yields < 40) *source.Pixel(1, yields) = static_cast<uint8_t>(yields);
  };
  ScaleTapTable table;
  ASSERT_TRUE(table.Build(*FindScaleFilter(ScaleTriangle), kHorizontalAxis, 3, 1.0, 3, nullptr));
  const ScaleJob told{&source.Record(), &dest.Record(), 40, 3, &temp.Record(), table.Lists()};
  const PassJob job(told, ShortenColumns(told, G_to_G, kRoundToNearest, true));
  const int32_t end = 40;
  PassesOf(G_to_G).Horizontal(job, {0, end, &dest.Record()}, kRoundToNearest);
  EXPECT_EQ(yields, 40);
  for (int32_t y = 0; y < 40; ++y) EXPECT_EQ(*temp.Pixel(1, y), y) << y;
}

// --- memory to work in ---

TEST(ScalePasses, WithoutMemoryToWorkInTheBytesAreTheSame) {
  for (const auto &[sourceFormat, destFormat] :
       {std::pair{ImageFormatRGB, ImageFormatRGB}, {ImageFormatGray16, ImageFormatGray16}}) {
    TestImage source(30, 40, sourceFormat), dest(11, 13, destFormat);
    source.FillNoise(4);
    const TestImage temp = MakeTemp(dest, source, 11);
    const Outcome expected = NaiveOutcome(dest, source, temp, kLanczos3, 11, 13);
    int refused = 0, made = 0;
    for (int nth = 1;; ++nth) {
      faults::Heap heap;
      heap.FailCallocAt(nth);
      const Outcome outcome = ScaleOutcome(dest, source, temp, kLanczos3, 11, 13);
      const auto failed = std::ranges::count_if(heap.Allocations(), [](const auto &allocation) {
        return allocation.zeroed && allocation.address == nullptr;
      });
      if (failed == 0) break;
      EXPECT_EQ(failed, 1) << nth;
      outcome.result ? ++made : ++refused;
      if (outcome.result) {
        EXPECT_TRUE(outcome == expected) << nth;
      }
    }
    EXPECT_EQ(refused, 2);  // the tables
    EXPECT_GT(made, 2);
  }
}

}  // namespace
}  // namespace zvk::scaling
