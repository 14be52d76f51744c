#include "filters/neon_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "tests/filters/filter_testing.h"
#include "tests/support/faults.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class NeonFilterTest : public FilterTest {
 protected:
  static Image Neon(const Image &image, const Image &dest = {}) { return Adopt(NeonFilter(image, dest)); }
  Image Gray(const Grid &grid) {
    return New(static_cast<int32_t>(grid[0].size()), static_cast<int32_t>(grid.size()), ImageFormatG, grid);
  }
};

// --- contours ---

TEST_F(NeonFilterTest, ASampleBecomesTheRootOfTwiceTheSquaresOfItsDifferences) {
  // Row 0: 2 x (3 x 3 + 4 x 4) = 50, 2 x (20 x 20 + 5 x 5) = 850, and against zero at the right 2 x (27 x 27 + 1) =
  // 1460. Row 1, against zero below: 2 x (9 + 49), 2 x (256 + 144), 2 x (784 + 784).
  EXPECT_EQ(PixelsOf(Neon(Gray({{10, 7, 27}, {14, 12, 28}}))), (Grid{{7, 29, 38}, {20, 28, 56}}));
}

TEST_F(NeonFilterTest, ABlackImageStaysBlack) {
  EXPECT_EQ(PixelsOf(Neon(New(3, 2, ImageFormatRGB))), PixelsOf(New(3, 2, ImageFormatRGB)));
}

TEST_F(NeonFilterTest, AWhiteImageGlowsAtTheRightAndAtTheBottom) {
  const Image white = New(3, 3, ImageFormatG, {{255, 255, 255}, {255, 255, 255}, {255, 255, 255}});
  EXPECT_EQ(PixelsOf(Neon(white)), (Grid{{0, 0, 255}, {0, 0, 255}, {255, 255, 255}}));
}

// Every pair of differences that samples can have, by the words of the rule.
TEST_F(NeonFilterTest, EveryValueIsTheTruncatedRoot) {
  const Image image = New(512, 2, ImageFormatG), dest = New(512, 2, ImageFormatG);
  int32_t wrong = 0;
  for (int below = 0; below < 256; ++below) {
    std::memset(Row(image, 1), below, 512);
    for (int right = 0; right < 256; ++right) {
      Row(image, 0)[2 * right] = 255;
      Row(image, 0)[2 * right + 1] = static_cast<uint8_t>(right);
    }
    Neon(image, dest);
    for (int right = 0; right < 256; ++right) {
      const int d = (255 - right) * (255 - right) + (255 - below) * (255 - below);
      const double doubled = 2.0 * static_cast<double>(static_cast<float>(d));
      const auto n = static_cast<int>(static_cast<float>(std::sqrt(doubled)));
      wrong += Row(dest, 0)[2 * right] != std::min(n, 255);
    }
  }
  EXPECT_EQ(wrong, 0);
}

// --- behind the last pixel ---

TEST_F(NeonFilterTest, RightOfTheLastPixelIsWhatTheRowHoldsThere) {
  const auto block = host_.NewMemoryBlock(Bytes{10, 10, 40, 10, 10, 10});
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 2, 2, ImageFormatG, 3);
  // The byte behind row 0 is 40 and the one behind row 1 is 10; below row 1 it is zero.
  EXPECT_EQ(PixelsOf(Neon(image)), (Grid{{0, 42}, {14, 14}}));
}

TEST_F(NeonFilterTest, RightOfAFullRowIsZeroAndNoByteIsRead) {
  const auto block = host_.NewMemoryBlock(Bytes{10, 10, 40, 40});
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 2, 2, ImageFormatG, 2);
  EXPECT_EQ(PixelsOf(Neon(image)), (Grid{{42, 44}, {56, 80}}));
}

TEST_F(NeonFilterTest, RightOfAClipIsTheImageBehindItAndBelowIsZero) {
  const Image image = Gray({{10, 10, 50}, {10, 10, 10}, {90, 90, 90}});
  const Image clip = Adopt(ClipImage5(image, 1, 0, 1, 2));
  EXPECT_EQ(PixelsOf(Neon(clip, Gray({{1}, {2}}))), (Grid{{56}, {14}}));
}

TEST_F(NeonFilterTest, BehindTheRowSizeThereIsZero) {
  const auto block = host_.NewMemoryBlock(Bytes{10, 20, 30, 40});
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 3, 2, ImageFormatG, 1);  // rows of 3 samples, each a byte further on
  // Rows 10 0 0 and 20 0 0: 2 x (100 + 100) and 2 x (400 + 400).
  EXPECT_EQ(PixelsOf(Neon(image)), (Grid{{20, 0, 0}, {40, 0, 0}}));
}

// --- channels ---

TEST_F(NeonFilterTest, ChannelsGoByTheOffsetsOfEachImageAndFillerStays) {
  const Image image = New(2, 1, ImageFormatRGB, {{10, 20, 30, 10, 20, 0}});
  const Image dest = New(2, 1, ImageFormatXBGR, {{7, 7, 7, 7, 8, 8, 8, 8}});
  EXPECT_EQ(PixelsOf(Neon(image, dest)), (Grid{{7, 60, 28, 14, 8, 0, 40, 20}}));
}

TEST_F(NeonFilterTest, AlphaIsAChannel) {
  EXPECT_EQ(PixelsOf(Neon(New(1, 1, ImageFormatRGBA, {{10, 20, 30, 40}}))), (Grid{{20, 40, 60, 80}}));
}

TEST_F(NeonFilterTest, AnImageOfNoFamilyLeavesDestAsItIs) {
  const Image dest = New(2, 1, ImageFormatScaling1, {{1, 2}});
  EXPECT_EQ(PixelsOf(Neon(Noise(2, 1, ImageFormatScaling1), dest)), (Grid{{1, 2}}));
}

// 200 against zero on both sides is 400, and 255 is 510.
TEST_F(NeonFilterTest, YellowOfCMYKWithAlphaIsNotCut) {
  EXPECT_EQ(PixelsOf(Neon(New(1, 1, ImageFormatCMYKA, {{200, 200, 200, 200, 200}}))),
            (Grid{{255, 255, 400 - 256, 255, 255}}));
  EXPECT_EQ(PixelsOf(Neon(New(1, 1, ImageFormatKYMCA, {{255, 255, 255, 255, 255}}))),
            (Grid{{255, 510 - 256, 255, 255, 255}}));
  EXPECT_EQ(PixelsOf(Neon(New(1, 1, ImageFormatCMYKA, {{50, 50, 50, 50, 50}}))), (Grid{{100, 100, 100, 100, 100}}));
}

TEST_F(NeonFilterTest, YellowOfCMYKWithAlphaIs255InTheRowsFrom256On) {
  const Image black = New(2, 259, ImageFormatACMYK), other = New(2, 259, ImageFormatKYMCA);
  const Grid packed = PixelsOf(Neon(black)), moved = PixelsOf(Neon(black, other));
  for (size_t y = 0; y < 259; ++y) {
    const uint8_t yellow = y < 256 ? 0 : 255;
    EXPECT_EQ(packed[y], (Bytes{0, 0, 0, yellow, 0, 0, 0, 0, yellow, 0})) << y;
    EXPECT_EQ(moved[y], (Bytes{0, yellow, 0, 0, 0, 0, yellow, 0, 0, 0})) << y;
  }
}

TEST_F(NeonFilterTest, YellowOfCMYKWithoutAlphaIsAnInkLikeTheOthers) {
  EXPECT_EQ(PixelsOf(Neon(New(1, 1, ImageFormatCMYK, {{200, 200, 200, 200}}))), (Grid{{255, 255, 255, 255}}));
  EXPECT_EQ(PixelsOf(Neon(New(1, 300, ImageFormatCMYK)))[299], (Bytes{0, 0, 0, 0}));
}

// --- dest ---

TEST_F(NeonFilterTest, InPlaceIsTheSameAsIntoAnother) {
  for (const int32_t format : {ImageFormatG, ImageFormatRGB, ImageFormatBGRX, ImageFormatCMYKA}) {
    const Image image = Noise(11, 6, format);
    const Image same = New(11, 6, format, PixelsOf(image));
    EXPECT_EQ(PixelsOf(Neon(same, same)), PixelsOf(Neon(New(11, 6, format, PixelsOf(image)), image)));
  }
}

TEST_F(NeonFilterTest, WhatTheFrameRefusesIsNil) {
  EXPECT_FALSE(Neon(Noise(3, 2, ImageFormatGray16)));
  EXPECT_FALSE(Neon(Noise(3, 2, ImageFormatG), host_.New("PictureZVK")));
  ExpectNothingRaised();
}

// --- limits ---

TEST_F(NeonFilterTest, RowsThatRunBackwardsLeaveDestAsItIs) {
  Bytes bytes(40, 90);
  const auto block = Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(bytes.data() + 20));
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 2, 2, ImageFormatG, -16);
  EXPECT_EQ(PixelsOf(Neon(image, Gray({{1, 2}, {3, 4}}))), (Grid{{1, 2}, {3, 4}}));
}

TEST_F(NeonFilterTest, WithoutMemoryDestIsAsItWas) {
  const Image image = Gray({{90, 90}}), dest = Gray({{1, 2}});
  int refused = 0;
  for (bool done = false; !done; ++refused) {
    faults::Heap heap;
    heap.FailCallocAt(refused + 1);
    const Image result = Neon(image, dest);
    EXPECT_EQ(result.Handle(), dest.Handle());
    EXPECT_EQ(heap.Outstanding(), 0u);
    done = PixelsOf(dest) == Grid{{127, 180}};
    if (!done) {
      EXPECT_EQ(PixelsOf(dest), (Grid{{1, 2}}));
    }
    ASSERT_LT(refused, 20);
  }
  EXPECT_GT(refused, 1);
}

// --- rows of mapped images ---

TEST_F(NeonFilterTest, EachRowIsFetchedOnce) {
  EXPECT_EQ(FetchesFor(host_, 2, 3, NeonFilter), "s0 d0 s1 d1 s2 d2");
  EXPECT_EQ(FetchesFor(host_, 2, 1, NeonFilter), "s0 d0");
}

}  // namespace
}  // namespace zvk::filters
