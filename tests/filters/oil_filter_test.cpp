#include "filters/oil_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tests/filters/filter_testing.h"
#include "tests/naive/neighbourhood.h"
#include "tests/scenes/row_log.h"
#include "tests/support/faults.h"
#include "tests/support/file_faults.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class OilFilterTest : public FilterTest {
 protected:
  static Image Paint(const Image &image, const Image &dest, int32_t levels, int32_t range) {
    return Adopt(OilFilter(image, dest, levels, range));
  }
  Image Gray(const Grid &grid) {
    return New(static_cast<int32_t>(grid[0].size()), static_cast<int32_t>(grid.size()), ImageFormatG, grid);
  }
};

// --- bins ---

TEST_F(OilFilterTest, ASampleInABinOfItsOwnIsCopied) {
  for (const int32_t format : {ImageFormatG, ImageFormatGA, ImageFormatRGB, ImageFormatABGR, ImageFormatCMYKA}) {
    const Image image = Noise(30, 10, format);
    EXPECT_EQ(PixelsOf(Paint(image, {}, 256, 0)), PixelsOf(image));
  }
}

TEST_F(OilFilterTest, TheFullestBinOfAWindowGivesItsMean) {
  // Bins of 128: 10, 20 and 33 (mean 21) against 200 and 201 in the whole row.
  EXPECT_EQ(PixelsOf(Paint(Gray({{10, 200, 20, 201, 33}}), {}, 2, 4)), (Grid{{21, 21, 21, 21, 21}}));
  // Windows of three: 10 200; 10 200 20; 200 20 201; 20 201 33; 201 33.
  EXPECT_EQ(PixelsOf(Paint(Gray({{10, 200, 20, 201, 33}}), {}, 2, 1)), (Grid{{10, 15, 200, 26, 33}}));
}

TEST_F(OilFilterTest, TheWindowHasRowsAsWellAsColumns) {
  EXPECT_EQ(PixelsOf(Paint(Gray({{10, 200}, {210, 220}, {12, 14}}), {}, 2, 1)), (Grid{{210, 210}, {12, 12}, {13, 13}}));
}

TEST_F(OilFilterTest, ATieStaysWithTheLowerBin) {
  EXPECT_EQ(PixelsOf(Paint(Gray({{250, 3, 7, 240}}), {}, 16, 3)), (Grid{{5, 5, 5, 5}}));
  EXPECT_EQ(PixelsOf(Paint(Gray({{250, 240}}), {}, 256, 1)), (Grid{{240, 240}}));
}

TEST_F(OilFilterTest, OneLevelGivesTheTruncatedMean) {
  EXPECT_EQ(PixelsOf(Paint(Gray({{0, 255, 100}}), {}, 1, 1)), (Grid{{127, 118, 177}}));
}

TEST_F(OilFilterTest, ABinIsTheSampleTimesTheLevelsOver256) {
  // With 3 levels bins begin at 0, 86 and 171: 85 and 86 are apart, 86 and 170 together.
  EXPECT_EQ(PixelsOf(Paint(Gray({{85, 86, 170}}), {}, 3, 2)), (Grid{{128, 128, 128}}));
  EXPECT_EQ(PixelsOf(Paint(Gray({{86, 170, 171}}), {}, 3, 2)), (Grid{{128, 128, 128}}));
}

TEST_F(OilFilterTest, MoreThan256LevelsAre256) {
  const Image image = Noise(30, 10, ImageFormatRGB);
  const Grid expected = PixelsOf(Paint(image, {}, 256, 2));
  for (const int32_t levels : {257, 1000, INT32_MAX}) EXPECT_EQ(PixelsOf(Paint(image, {}, levels, 2)), expected);
}

TEST_F(OilFilterTest, AFlatImageStaysFlat) {
  const Image image = New(9, 7, ImageFormatBGRA);
  std::fill_n(Record(image).Buffer, Record(image).TotalSize, uint8_t{173});
  for (const int32_t levels : {1, 7, 256}) EXPECT_EQ(PixelsOf(Paint(image, {}, levels, 2)), PixelsOf(image));
}

// Sums have 32 bits, and a quotient of one that has wrapped keeps its low byte.
TEST_F(OilFilterTest, AWindowOfMillionsOfSamplesCountsThemAllInSumsThatWrap) {
  constexpr int32_t kWidth = 8400000;  // 16800000 samples of 255 in each window
  const Image image = New(kWidth, 2, ImageFormatG);
  std::fill_n(Record(image).Buffer, Record(image).TotalSize, uint8_t{255});
  const auto sum = static_cast<int32_t>(static_cast<uint32_t>(int64_t{255} * 2 * kWidth));
  const auto expected = static_cast<uint8_t>(sum / (2 * kWidth));
  EXPECT_NE(expected, 255);  // it does wrap
  const Image result = Paint(image, {}, 8, kWidth);
  for (int32_t y = 0; y < 2; ++y) {
    EXPECT_EQ(std::count(Row(result, y), Row(result, y) + kWidth, expected), kWidth);
  }
}

// --- channels ---

TEST_F(OilFilterTest, ChannelsAreBinnedByThemselvesAndFillerStays) {
  const Image image = New(3, 1, ImageFormatRGB, {{10, 200, 60, 12, 202, 10, 200, 40, 60}});
  const Image dest = New(3, 1, ImageFormatXBGR, {{1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3}});
  EXPECT_EQ(PixelsOf(Paint(image, dest, 16, 2)), (Grid{{1, 60, 201, 11, 2, 60, 201, 11, 3, 60, 201, 11}}));
}

TEST_F(OilFilterTest, AlphaIsAChannel) {
  EXPECT_EQ(PixelsOf(Paint(New(3, 1, ImageFormatAG, {{9, 1, 200, 1, 11, 1}}), {}, 2, 2)),
            (Grid{{10, 1, 10, 1, 10, 1}}));
}

TEST_F(OilFilterTest, AnImageOfNoFamilyLeavesDestAsItIs) {
  const Image dest = New(2, 1, ImageFormatScaling1, {{1, 2}});
  EXPECT_EQ(PixelsOf(Paint(Noise(2, 1, ImageFormatScaling1), dest, 2, 1)), (Grid{{1, 2}}));
}

// --- ranges ---

TEST_F(OilFilterTest, WithoutAPixelInRange255IsWritten) {
  for (const int32_t range : {-1, -2, -100, INT32_MIN}) {
    EXPECT_EQ(PixelsOf(Paint(Noise(2, 2, ImageFormatG), {}, 16, range)), (Grid{{255, 255}, {255, 255}})) << range;
    EXPECT_EQ(PixelsOf(Paint(Noise(1, 1, ImageFormatRGBA), {}, 16, range)), (Grid{{255, 255, 255, 255}})) << range;
  }
}

TEST_F(OilFilterTest, WithoutAPixelInRangeMagentaAndYellowAreLeftAndWrittenToCyan) {
  const Image dest = New(1, 1, ImageFormatCMYK, {{1, 2, 3, 4}});
  EXPECT_EQ(PixelsOf(Paint(Noise(1, 1, ImageFormatCMYK), dest, 16, -1)), (Grid{{255, 2, 3, 255}}));
  const Image withAlpha = New(1, 1, ImageFormatAKYMC, {{1, 2, 3, 4, 5}});
  EXPECT_EQ(PixelsOf(Paint(Noise(1, 1, ImageFormatCMYKA), withAlpha, 16, -1)), (Grid{{255, 255, 3, 4, 255}}));
  // In a dest of another family cyan's place is the first byte, as are those of the other inks.
  const Image colours = New(1, 1, ImageFormatRGB, {{1, 2, 3}});
  EXPECT_EQ(PixelsOf(Paint(Noise(1, 1, ImageFormatCMYK), colours, 16, -1)), (Grid{{255, 2, 3}}));
}

TEST_F(OilFilterTest, ARangeBeyondTheImageTakesAllOfIt) {
  const Image image = Gray({{10, 200}, {20, 33}});
  for (const int32_t range : {1, 2, 1000, INT32_MAX - 5}) {
    EXPECT_EQ(PixelsOf(Paint(image, {}, 2, range)), (Grid{{21, 21}, {21, 21}})) << range;
  }
}

// The largest number added to a place beyond the first one wraps, and nothing is in range.
TEST_F(OilFilterTest, ARangeThatWrapsHasNoPixel) {
  EXPECT_EQ(PixelsOf(Paint(Gray({{10, 200}, {20, 33}}), {}, 2, INT32_MAX)), (Grid{{21, 255}, {255, 255}}));
}

TEST_F(OilFilterTest, BelowOneLevelDestIsAsItWas) {
  for (const int32_t levels : {0, -1, INT32_MIN}) {
    const Image dest = Gray({{1, 2}});
    const Image result = Paint(Noise(2, 1, ImageFormatG), dest, levels, 1);
    EXPECT_EQ(result.Handle(), dest.Handle());
    EXPECT_EQ(PixelsOf(result), (Grid{{1, 2}}));
  }
}

// --- dest ---

// The second pixel sees the first one as it has become.
TEST_F(OilFilterTest, InPlaceTheFilterReadsWhatItHasWritten) {
  const Image image = Gray({{0, 240, 250}});
  EXPECT_EQ(PixelsOf(Paint(image, image, 1, 1)), (Grid{{120, 203, 226}}));
}

TEST_F(OilFilterTest, WhatTheFrameRefusesIsNil) {
  EXPECT_FALSE(Paint(Noise(3, 2, ImageFormatGray16), {}, 16, 1));
  EXPECT_FALSE(Paint(Noise(3, 2, ImageFormatG), host_.New("PictureZVK"), 16, 1));
  ExpectNothingRaised();
}

TEST_F(OilFilterTest, WithoutMemoryForRowsTheResultIsTheSame) {
  const Image image = Noise(20, 9, ImageFormatRGB), dest = New(20, 9, ImageFormatRGB);
  const Grid expected = PixelsOf(Paint(image, {}, 16, 2));
  faults::Heap heap;
  heap.FailCalloc([](size_t, size_t) { return true; });
  EXPECT_EQ(PixelsOf(Paint(image, dest, 16, 2)), expected);
}

// --- rows of mapped images ---

TEST_F(OilFilterTest, TheRowsOfAWindowAreFetchedForEachPixel) {
  const auto paint = [](REALobject image, REALobject dest) { return OilFilter(image, dest, 4, 1); };
  EXPECT_EQ(FetchesFor(host_, 2, 3, paint), "d0 s0 s1 s0 s1 d1 s0 s1 s2 s0 s1 s2 d2 s1 s2 s1 s2");
}

TEST_F(OilFilterTest, RowsOfAFileThatCannotBeMappedAreLeftOut) {
  const Image file = NoiseInFile(9, 12, ImageFormatRGB), memory = Noise(9, 12, ImageFormatRGB);
  ShrinkBlock(file);
  const Image dest = New(9, 12, ImageFormatRGB), expected = New(9, 12, ImageFormatRGB);
  {
    faults::Files files;
    files.FailAll(faults::FileCall::kMap);
    EXPECT_TRUE(Paint(file, dest, 16, 2));
  }
  scenes::RowLog log;
  log.Watch(Record(memory), "m");
  for (int32_t y = 5; y < 12; ++y) log.Refuse(Record(memory), y);  // five rows were mapped
  naive::Oil(Record(memory), Record(expected), 16, 2);
  EXPECT_EQ(PixelsOf(dest), PixelsOf(expected));
}

}  // namespace
}  // namespace zvk::filters
