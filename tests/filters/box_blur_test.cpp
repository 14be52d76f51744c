#include "filters/box_blur.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

#include "tests/filters/filter_testing.h"
#include "tests/support/faults.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class BoxBlurTest : public FilterTest {
 protected:
  static Image Blur(const Image &image, const Image &dest, double radius, bool vertical = true,
                    bool horizontal = true) {
    return Adopt(BoxBlurFilter(image, dest, radius, vertical, horizontal));
  }
  static Image BlurTimes(const Image &image, const Image &dest, double radius, int32_t iterations) {
    return Adopt(BoxBlurFilter2(image, dest, radius, iterations, true, true));
  }
  Image Gray(const Grid &grid) {
    return New(static_cast<int32_t>(grid[0].size()), static_cast<int32_t>(grid.size()), ImageFormatG, grid);
  }
  Image Column(const Bytes &samples) {
    Grid grid;
    for (const uint8_t sample : samples) grid.push_back({sample});
    return Gray(grid);
  }
};

// --- windows ---

TEST_F(BoxBlurTest, ASampleBecomesTheMeanOfItsWindowWithTheEdgesRepeated) {
  EXPECT_EQ(PixelsOf(Blur(Gray({{0, 30, 60, 90, 120}}), {}, 1, false, true)), (Grid{{10, 30, 60, 90, 110}}));
  EXPECT_EQ(PixelsOf(Blur(Column({0, 30, 60, 90, 120}), {}, 1, true, false)), (Grid{{10}, {30}, {60}, {90}, {110}}));
  // Two zeros and three times 90 of a window of 5, and the other way round.
  EXPECT_EQ(PixelsOf(Blur(Gray({{0, 90}}), {}, 2, false, true)), (Grid{{36, 54}}));
}

TEST_F(BoxBlurTest, MeansAreRoundedDown) {
  EXPECT_EQ(PixelsOf(Blur(Gray({{1, 1, 0, 255, 255}}), {}, 1, false, true)), (Grid{{1, 0, 85, 170, 255}}));
}

TEST_F(BoxBlurTest, ColumnsComeFirstAndAreRoundedBeforeRows) {
  // Along columns 1 1 0 becomes 1 0 0 (1 + 1 + 1, 1 + 1 + 0, 1 + 0 + 0), so the rows begin with thirds of 1 and 0.
  const Image image = Gray({{1, 255, 0}, {1, 255, 0}, {0, 255, 3}});
  EXPECT_EQ(PixelsOf(Blur(image, {}, 1, true, false)), (Grid{{1, 255, 0}, {0, 255, 1}, {0, 255, 2}}));
  EXPECT_EQ(PixelsOf(Blur(image, {}, 1)), (Grid{{85, 85, 85}, {85, 85, 85}, {85, 85, 86}}));
}

TEST_F(BoxBlurTest, TheFractionOfARadiusPlaysNoPart) {
  const Image image = Noise(40, 20, ImageFormatRGB);
  EXPECT_EQ(PixelsOf(Blur(image, {}, 2.9)), PixelsOf(Blur(image, {}, 2)));
  EXPECT_NE(PixelsOf(Blur(image, {}, 2.9)), PixelsOf(Blur(image, {}, 3)));
}

TEST_F(BoxBlurTest, ARadiusBelow1DarkensToAThirdInEachDirection) {
  const Image image = Gray({{255, 100, 2}, {200, 9, 0}});
  for (const double radius : {0.0, 0.5, 0.999, -0.0, -0.9}) {
    EXPECT_EQ(PixelsOf(Blur(image, {}, radius, true, false)), (Grid{{85, 33, 0}, {66, 3, 0}}));
    EXPECT_EQ(PixelsOf(Blur(image, {}, radius, false, true)), (Grid{{85, 33, 0}, {66, 3, 0}}));
    EXPECT_EQ(PixelsOf(Blur(image, {}, radius)), (Grid{{28, 11, 0}, {22, 1, 0}}));
  }
}

TEST_F(BoxBlurTest, AFlatImageStaysFlatInAllChannels) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatABGR, ImageFormatGA, ImageFormatCMYK, ImageFormatAKYMC}) {
    const Image image = New(7, 5, format);
    std::fill_n(Record(image).Buffer, Record(image).TotalSize, uint8_t{173});
    for (const double radius : {1.0, 2.0, 40.0}) EXPECT_EQ(PixelsOf(Blur(image, {}, radius)), PixelsOf(image));
  }
}

// All windows up to the largest, over a row of noise; those of 16384 and above are divided in another precision.
TEST_F(BoxBlurTest, EveryWindowDividesExactly) {
  constexpr int32_t kWidth = 3000;
  const Image image = Noise(kWidth, 1, ImageFormatG);
  const Bytes row = PixelsOf(image)[0];
  std::vector<int64_t> before(kWidth + 1);
  for (size_t x = 0; x < kWidth; ++x) before[x + 1] = before[x] + row[x];
  std::vector<int32_t> radii(200);
  std::iota(radii.begin(), radii.end(), 1);
  radii.insert(radii.end(), {511, 2047, 8190, 8191, 8192, 8193, 40000, 300000, 1048574});
  for (const int32_t radius : radii) {
    Bytes expected;
    for (int64_t x = 0; x < kWidth; ++x) {
      const int64_t first = std::max<int64_t>(x - radius, 0), end = std::min<int64_t>(x + radius + 1, kWidth);
      const int64_t sum = before[static_cast<size_t>(end)] - before[static_cast<size_t>(first)] +
                          row.front() * (first - (x - radius)) + row.back() * (x + radius + 1 - end);
      expected.push_back(static_cast<uint8_t>(sum / (2 * radius + 1)));
    }
    EXPECT_EQ(PixelsOf(Blur(image, {}, radius, false, true))[0], expected) << radius;
  }
}

TEST_F(BoxBlurTest, AWindowLargerThanTheImageCountsItsEdgesManyTimes) {
  // 1048574 of the first and 1048575 of the second, of 2097149.
  EXPECT_EQ(PixelsOf(Blur(Column({0, 255}), {}, 1048574, true, false)), (Grid{{127}, {127}}));
  EXPECT_EQ(PixelsOf(Blur(Column({0, 30, 240}), {}, 100, true, false)), (Grid{{118}, {119}, {120}}));
}

// --- channels ---

TEST_F(BoxBlurTest, ChannelsGoByTheOffsetsOfEachImageAndFillerStays) {
  const Image image = New(2, 1, ImageFormatRGB, {{0, 90, 30, 90, 0, 60}});
  const Image dest = New(2, 1, ImageFormatXBGR, {{7, 7, 7, 7, 8, 8, 8, 8}});
  EXPECT_EQ(PixelsOf(Blur(image, dest, 1)), (Grid{{7, 40, 60, 30, 8, 50, 30, 60}}));
}

TEST_F(BoxBlurTest, AlphaIsBlurredAsAChannel) {
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatAG, {{0, 0, 90, 30}}), {}, 1)), (Grid{{30, 10, 60, 20}}));
}

TEST_F(BoxBlurTest, AnImageOfNoFamilyLeavesDestAsItIs) {
  const Image dest = New(2, 1, ImageFormatScaling4, {{1, 2, 3, 4, 5, 6, 7, 8}});
  EXPECT_EQ(PixelsOf(Blur(Noise(2, 1, ImageFormatScaling4), dest, 1)), (Grid{{1, 2, 3, 4, 5, 6, 7, 8}}));
  EXPECT_EQ(PixelsOf(Blur(Noise(2, 1, ImageFormatBuffer), {}, 1)), (Grid{{0, 0}}));
}

// --- dest ---

TEST_F(BoxBlurTest, WithoutADirectionDestIsAsItWas) {
  const Image image = Noise(3, 2, ImageFormatG), dest = Gray({{1, 2, 3}, {4, 5, 6}});
  const Image result = Blur(image, dest, 1, false, false);
  EXPECT_EQ(result.Handle(), dest.Handle());
  EXPECT_EQ(PixelsOf(result), (Grid{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(PixelsOf(Blur(image, {}, 1, false, false)), (Grid{{0, 0, 0}, {0, 0, 0}}));
}

TEST_F(BoxBlurTest, WhatTheFrameRefusesIsNil) {
  EXPECT_FALSE(Blur(Noise(3, 2, ImageFormatGray16), {}, 1));
  const Image image = Noise(3, 2, ImageFormatG);
  EXPECT_FALSE(Blur(image, host_.New("PictureZVK"), 1));
  EXPECT_FALSE(Blur(host_.New("PictureZVK"), image, 1));
  EXPECT_EQ(BoxBlurFilter(nullptr, image, 1, true, true), nullptr);
  EXPECT_EQ(image->References(), 1);
  ExpectNothingRaised();
}

TEST_F(BoxBlurTest, AnImageWithoutColumnsChangesNothing) {
  const Image image = Noise(3, 2, ImageFormatG), dest = Gray({{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(PixelsOf(Blur(Adopt(ClipImage5(image, 3, 0, 2, 2)), dest, 1)), (Grid{{1, 2, 3}, {4, 5, 6}}));
}

// In place a row leaves a window as what it has become. Sums that no window of 3 samples has give 0.
TEST_F(BoxBlurTest, InPlaceTheSumsGoByWhatHasBeenWritten) {
  const Image column = Column({0, 255, 255, 255, 255, 255, 255});
  EXPECT_EQ(PixelsOf(Blur(column, column, 1, true, false)), (Grid{{85}, {141}, {198}, {236}, {255}, {0}, {0}}));
  const Image row = Gray({{0, 255, 255, 255, 255, 255, 255}});
  EXPECT_EQ(PixelsOf(Blur(row, row, 1, false, true)), (Grid{{85, 141, 198, 236, 255, 0, 0}}));
  // Of a window that darkens even the row itself is subtracted as what it has become.
  const Image dark = Column({90, 90, 90});
  EXPECT_EQ(PixelsOf(Blur(dark, dark, 0, true, false)), (Grid{{30}, {50}, {63}}));
}

// Only the second pass reads a copy of each row.
TEST_F(BoxBlurTest, InPlaceThePassAlongRowsReadsACopyIfItIsTheSecondOne) {
  const Image row = Gray({{0, 30, 60, 90, 120}});
  EXPECT_EQ(PixelsOf(Blur(row, row, 1)), (Grid{{10, 30, 60, 90, 110}}));
}

TEST_F(BoxBlurTest, ADestWhoseChannelsShareAByteIsBlurredAlongRowsByWhatItKeeps) {
  // All of red, green and blue go to the one byte of a gray dest; blue is written last, and read for all three.
  const Image image = New(3, 1, ImageFormatRGB, {{255, 255, 0, 255, 255, 30, 255, 255, 60}});
  EXPECT_EQ(PixelsOf(Blur(image, Gray({{1, 1, 1}}), 1)), (Grid{{10, 30, 50}}));
}

// --- limits ---

TEST_F(BoxBlurTest, ANegativeRadiusLeavesDestAsItIs) {
  const Image image = Noise(3, 1, ImageFormatG);
  for (const double radius : {-1.0, -2.5, -1e300, 1e300, 3e9, std::nan("")}) {
    EXPECT_EQ(PixelsOf(Blur(image, Gray({{1, 2, 3}}), radius)), (Grid{{1, 2, 3}})) << radius;
  }
}

TEST_F(BoxBlurTest, AWindowWithoutRoomForItsMeansLeavesDestAsItIs) {
  const Image image = Gray({{90, 90, 90}});
  EXPECT_EQ(PixelsOf(Blur(image, Gray({{1, 2, 3}}), 1048574.9)), (Grid{{90, 90, 90}}));
  for (const double radius : {1048575.0, 2097152.0, 1073741824.0, 2147483647.0}) {
    EXPECT_EQ(PixelsOf(Blur(image, Gray({{1, 2, 3}}), radius)), (Grid{{1, 2, 3}})) << radius;
  }
}

TEST_F(BoxBlurTest, RowsThatRunBackwardsLeaveDestAsItIsUnlessTheyAreVeryShort) {
  Bytes bytes(2 * 20);
  const auto blurred = [&](int32_t rowSize) {
    std::fill(bytes.begin(), bytes.end(), uint8_t{90});
    const auto block = Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(bytes.data() + 20));
    const Image image = host_.New("PictureZVK");
    ImageConstructorMemory(image, block, 3, 2, ImageFormatG, rowSize);
    return PixelsOf(Blur(image, Gray({{1, 2, 3}, {4, 5, 6}}), 1));
  };
  EXPECT_EQ(blurred(-20), (Grid{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(blurred(-19), (Grid{{90, 90, 90}, {90, 90, 90}}));
}

TEST_F(BoxBlurTest, WithoutMemoryDestIsAsItWas) {
  const Image image = Gray({{90, 90, 90}}), dest = Gray({{1, 2, 3}});
  int refused = 0;
  for (bool done = false; !done; ++refused) {
    faults::Heap heap;
    heap.FailCallocAt(refused + 1);
    const Image result = Blur(image, dest, 1);
    EXPECT_EQ(result.Handle(), dest.Handle());
    EXPECT_EQ(heap.Outstanding(), 0u);
    done = PixelsOf(dest) == Grid{{90, 90, 90}};
    if (!done) {
      EXPECT_EQ(PixelsOf(dest), (Grid{{1, 2, 3}}));
    }
    ASSERT_LT(refused, 20);
  }
  EXPECT_GT(refused, 1);
}

// --- iterations ---

TEST_F(BoxBlurTest, BelowOneIterationTheImageItselfIsReturned) {
  const Image image = Gray({{1, 2, 3}}), dest = Gray({{4, 5, 6}});
  for (const int32_t iterations : {0, -1, INT32_MIN}) {
    const Image result = BlurTimes(image, dest, 1, iterations);
    EXPECT_EQ(result.Handle(), image.Handle());
    EXPECT_EQ(image->References(), 2);
  }
  EXPECT_EQ(PixelsOf(dest), (Grid{{4, 5, 6}}));
  const Image unusable = host_.New("PictureZVK");
  EXPECT_EQ(BlurTimes(unusable, dest, 1, 0).Handle(), unusable.Handle());
}

TEST_F(BoxBlurTest, DestGetsTheFirstIterationAndANewImageTheLast) {
  const Image image = Noise(20, 9, ImageFormatRGB), dest = New(20, 9, ImageFormatRGB);
  const Image once = Blur(image, {}, 2), twice = Blur(once, {}, 2), thrice = Blur(twice, {}, 2);
  const Image result = BlurTimes(image, dest, 2, 3);
  EXPECT_EQ(PixelsOf(result), PixelsOf(thrice));
  EXPECT_EQ(PixelsOf(dest), PixelsOf(once));
  EXPECT_NE(result.Handle(), dest.Handle());
  EXPECT_EQ(result->References(), 1);
  EXPECT_EQ(dest->References(), 1);
  EXPECT_EQ(image->References(), 1);

  EXPECT_EQ(BlurTimes(image, dest, 2, 1).Handle(), dest.Handle());
  EXPECT_EQ(PixelsOf(dest), PixelsOf(once));
}

TEST_F(BoxBlurTest, IterationsOnWhatTheFrameRefusesAreNil) {
  const Image image = Noise(3, 2, ImageFormatGray16), dest = New(3, 2, ImageFormatG);
  EXPECT_FALSE(BlurTimes(image, dest, 1, 2000000000));
  EXPECT_EQ(BoxBlurFilter2(nullptr, dest, 1, 2, true, true), nullptr);
  EXPECT_EQ(image->References(), 1);
  EXPECT_EQ(dest->References(), 1);
}

TEST_F(BoxBlurTest, IterationsThatGetNoNewImageAreNil) {
  const Image image = Noise(3, 2, ImageFormatG), dest = New(3, 2, ImageFormatG);
  host_->Withhold("PluginNewInstance");
  EXPECT_FALSE(BlurTimes(image, dest, 1, 2));
  EXPECT_EQ(PixelsOf(BlurTimes(image, dest, 1, 1)), PixelsOf(dest));
}

// --- rows of mapped images ---

TEST_F(BoxBlurTest, AlongColumnsTheRowsOfAWindowAreFetchedThenThreeForEachRow) {
  const auto blur = [](REALobject image, REALobject dest) { return BoxBlurFilter(image, dest, 1, true, false); };
  EXPECT_EQ(FetchesFor(host_, 2, 4, blur), "s0 s0 s1 d0 s0 s2 d1 s0 s3 d2 s1 s3 d3 s2 s3");
}

TEST_F(BoxBlurTest, AlongRowsTheRowsOfDestAreFetchedAgain) {
  const auto blur = [](REALobject image, REALobject dest) { return BoxBlurFilter(image, dest, 2, true, true); };
  EXPECT_EQ(FetchesFor(host_, 2, 2, blur), "s0 s0 s0 s1 s1 d0 s0 s1 d1 s0 s1 d0 d1");
}

TEST_F(BoxBlurTest, AlongRowsAloneEachRowIsFetchedOnce) {
  const auto blur = [](REALobject image, REALobject dest) { return BoxBlurFilter(image, dest, 2, false, true); };
  EXPECT_EQ(FetchesFor(host_, 2, 2, blur), "d0 s0 d1 s1");
}

TEST_F(BoxBlurTest, AlongRowsAloneViewsOfAFileAreBlurredPixelAfterPixelThroughTheirMappings) {
  for (const int32_t format : {ImageFormatG, ImageFormatRGB, ImageFormatARGB, ImageFormatCMYKA}) {
    const Image file = NoiseInFile(200, 1, format);
    const ptrdiff_t pixelSize = Record(file).PixelSize, last = 198 * pixelSize;
    // The mean around a pixel goes to the one to its right, and is read from there as the window moves on.
    Bytes expected = PixelsOf(file)[0];
    for (ptrdiff_t c = 0; c < pixelSize; ++c) {
      uint8_t *const row = expected.data() + c;
      int sum = 2 * row[0] + row[pixelSize];
      for (ptrdiff_t x = 0; x <= last; x += pixelSize) {
        row[x + pixelSize] = static_cast<uint8_t>(sum >= 0 && sum < 768 ? sum / 3 : 0);
        sum += row[std::min(x + 2 * pixelSize, last)];
        sum -= row[std::max(x - pixelSize, ptrdiff_t{0})];
      }
    }
    const Image left = Adopt(ClipImage5(file, 0, 0, 199, 1)), right = Adopt(ClipImage5(file, 1, 0, 199, 1));
    EXPECT_EQ(Blur(left, right, 1, false, true).Handle(), right.Handle());
    EXPECT_EQ(PixelsOf(file), Grid{expected}) << format;
  }
}

}  // namespace
}  // namespace zvk::filters
