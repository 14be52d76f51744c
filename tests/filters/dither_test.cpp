#include "filters/dither.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/filters/dither_lists.h"
#include "tests/filters/filter_testing.h"
#include "tests/naive/filters.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

constexpr int32_t kMagic2x2 = 1, kLines4x4 = 4, kCluster8 = 10;

class Dither : public FilterTest {
 protected:
  Image Apply(const Image &self, const Image &dest, int32_t matrix, int32_t levels) {
    return Adopt(DitherFilter(self, dest, matrix, levels));
  }

  // A gray image of one sample throughout, dithered.
  Grid Flat(int32_t width, int32_t height, uint8_t sample, int32_t matrix, int32_t levels) {
    const Image self = New(width, height, ImageFormatG, Grid(height, Bytes(width, sample)));
    return PixelsOf(Apply(self, Image(), matrix, levels));
  }

  // Dest comes back as it was, and a new one is zero.
  void ExpectUnchanged(int32_t format, int32_t matrix, int32_t levels) {
    const Image self = Noise(4, 4, format, 1), dest = Noise(4, 4, format, 2);
    const Grid before = PixelsOf(dest);
    EXPECT_EQ(Apply(self, dest, matrix, levels).Handle(), dest.Handle());
    EXPECT_EQ(PixelsOf(dest), before) << format << ", matrix " << matrix << ", levels " << levels;
    const Image made = Apply(self, Image(), matrix, levels);
    ASSERT_TRUE(made);
    EXPECT_EQ(PixelsOf(made), Grid(4, Bytes(before[0].size(), 0)));
  }
};

// --- what is not dithered ---

TEST_F(Dither, AMatrixOutside1To10LeavesTheDest) {
  for (const int32_t matrix : {INT32_MIN, -1, 0, 11, INT32_MAX}) {
    for (const int32_t format : {ImageFormatG, ImageFormatGA, ImageFormatRGB, ImageFormatRGBA}) {
      ExpectUnchanged(format, matrix, 2);
    }
  }
}

TEST_F(Dither, LevelsBelow2OrAbove256LeaveTheDest) {
  for (const int32_t levels : {INT32_MIN, -5, 0, 1, 257, 258, 1000000, INT32_MAX}) {
    ExpectUnchanged(ImageFormatRGBA, kMagic2x2, levels);
  }
}

TEST_F(Dither, InksAndImagesWithoutAFamilyLeaveTheDest) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatACMYK, ImageFormatXKYMC, ImageFormatBuffer}) {
    ExpectUnchanged(format, kMagic2x2, 2);
  }
}

// --- the rule ---

TEST_F(Dither, AtTwoLevelsBlackIsWhite) {
  for (int32_t matrix = 1; matrix <= 10; ++matrix) {
    EXPECT_EQ(Flat(17, 17, 0, matrix, 2), Grid(17, Bytes(17, 255))) << matrix;
  }
}

TEST_F(Dither, AtTwoLevelsWhiteIsBlackWhereTheThresholdIsBelowItsFraction) {
  // 255 x 5 / 256 is 4, above every threshold of the small matrix; 255 x 37 / 256 is 36, and one threshold is 36.
  EXPECT_EQ(Flat(3, 3, 255, kMagic2x2, 2), Grid(3, Bytes(3, 0)));
  Grid expected(6, Bytes(6, 0));
  expected[5][5] = 255;
  EXPECT_EQ(Flat(6, 6, 255, 5, 2), expected);
}

TEST_F(Dither, TheUpperLevelIsTakenWhereTheFractionIsAtOrBelowTheThreshold) {
  // 100 x 5 / 256 is 1. The thresholds are 0 2 and 3 1; the levels are 0 and 255.
  EXPECT_EQ(Flat(4, 3, 100, kMagic2x2, 2), (Grid{{0, 255, 0, 255}, {255, 255, 255, 255}, {0, 255, 0, 255}}));
  // 200 x 5 / 256 is 3; 200 x 3 / 256 is level 2 of 0, 85, 170, 255.
  EXPECT_EQ(Flat(2, 2, 200, kMagic2x2, 4), (Grid{{170, 170}, {255, 170}}));
}

TEST_F(Dither, TheThresholdsOfTheLinesRiseThroughTheTile) {
  // 128 x 17 / 256 is 8: the first eight places of the tile stay below.
  const Grid tile = {{0, 0, 0, 0}, {0, 0, 0, 0}, {255, 255, 255, 255}, {255, 255, 255, 255}};
  EXPECT_EQ(Flat(4, 4, 128, kLines4x4, 2), tile);
  // 98 x 17 / 256 is 6.
  const Grid lower = {{0, 0, 0, 0}, {0, 0, 255, 255}, {255, 255, 255, 255}, {255, 255, 255, 255}};
  EXPECT_EQ(Flat(4, 4, 98, kLines4x4, 2), lower);
}

TEST_F(Dither, Levels256MapMostSamplesToThemselvesOrOneLess) {
  // The level of v is v x 255 / 256: 0 for 0, else v - 1; and the level above it is v itself but for 0.
  const Image self = Ramp(ImageFormatG);
  const Image dest = Apply(self, New(256, 1, ImageFormatG), kMagic2x2, 256);
  EXPECT_EQ(Row(dest, 0)[0], 1);
  for (int v = 1; v < 256; ++v) {
    const int threshold = v % 2 == 0 ? 0 : 2;
    EXPECT_EQ(Row(dest, 0)[v], v * 5 / 256 <= threshold ? v : v - 1) << v;
  }
}

TEST_F(Dither, TheLevelsAreTruncated) {
  // Of 7 levels: 0 42 85 127 170 212 255.
  const std::vector<uint8_t> levels = {0, 42, 85, 127, 170, 212, 255};
  const std::vector<int> thresholds = DitherLists()[9].thresholds;
  for (int level = 0; level < 6; ++level) {
    const auto sample = static_cast<uint8_t>((level * 256 + 5) / 6);  // the first sample of the level
    const Grid pixels = Flat(16, 16, sample, kCluster8, 7);
    const int fraction = sample * 257 / 256;
    for (size_t i = 0; i < 256; ++i) {
      const size_t above = fraction <= thresholds[i] ? 1 : 0;
      EXPECT_EQ(pixels[i / 16][i % 16], levels[static_cast<size_t>(level) + above]);
    }
  }
}

TEST_F(Dither, AllChannelsOfAPixelMeetTheSameThreshold) {
  const Image self = New(2, 2, ImageFormatARGB, Grid(2, Bytes(8, 100)));
  const Image dest = Apply(self, Image(), kMagic2x2, 2);
  EXPECT_EQ(PixelsOf(dest), (Grid{{0, 0, 0, 0, 255, 255, 255, 255}, Bytes(8, 255)}));
}

TEST_F(Dither, EverySampleUnderEveryThresholdAndLevelCount) {
  const std::vector<DitherList> lists = DitherLists();
  for (int32_t matrix = 1; matrix <= 10; ++matrix) {
    const DitherList &list = lists[static_cast<size_t>(matrix - 1)];
    for (const int32_t levels : {2, 3, 4, 5, 8, 16, 17, 100, 128, 255, 256}) {
      // All samples down the rows, at every column of the tile.
      const Image self = New(list.size, 256 * list.size, ImageFormatG);
      for (int32_t y = 0; y < 256 * list.size; ++y) std::memset(Row(self, y), y / list.size, list.size);
      const Image dest = New(list.size, 256 * list.size, ImageFormatG);
      EXPECT_TRUE(Apply(self, dest, matrix, levels));
      for (int32_t y = 0; y < 256 * list.size; ++y) {
        for (int32_t x = 0; x < list.size; ++x) {
          ASSERT_EQ(Row(dest, y)[x], naive::DitheredSample(list.thresholds, list.size, levels, y / list.size, x, y));
        }
      }
    }
  }
}

// --- places ---

TEST_F(Dither, ATileStartsAtTheImagesOwnCorner) {
  const Image whole = New(5, 5, ImageFormatG, Grid(5, Bytes(5, 100)));
  const Image clip = Adopt(ClipImage5(whole, 1, 1, 3, 3));
  EXPECT_EQ(PixelsOf(Apply(clip, Image(), kMagic2x2, 2)), Flat(3, 3, 100, kMagic2x2, 2));
}

TEST_F(Dither, TheDestMayBeTheImageItself) {
  const Image self = Noise(40, 9, ImageFormatRGB), copy = Noise(40, 9, ImageFormatRGB);
  const Image other = Apply(self, Image(), 7, 5);
  EXPECT_EQ(Apply(copy, copy, 7, 5).Handle(), copy.Handle());
  EXPECT_EQ(PixelsOf(copy), PixelsOf(other));
}

TEST_F(Dither, ChannelsOfTheSameBytesAreDitheredOneAfterTheOther) {
  // At two levels, under the threshold 0, samples below 52 turn white and others black.
  const Image self = New(1, 1, ImageFormatRGB, {{10, 20, 200}});
  SetGreenOffset(self, 0, 0);
  EXPECT_TRUE(Apply(self, self, kMagic2x2, 2));
  EXPECT_EQ(PixelsOf(self), (Grid{{0, 20, 0}}));

  const auto block = host_.NewMemoryBlock(Bytes{10, 20, 10});
  const Image colours = host_.New("PictureZVK"), turned = host_.New("PictureZVK");
  ImageConstructorMemory(colours, block, 1, 1, ImageFormatRGB, 3);
  ImageConstructorMemory(turned, block, 1, 1, ImageFormatBGR, 3);
  EXPECT_TRUE(Apply(colours, turned, kMagic2x2, 2));
  // Red goes to blue's place as 255, which is then read there.
  EXPECT_EQ(Bytes(block->Data(), block->Data() + 3), (Bytes{0, 255, 255}));
}

TEST_F(Dither, FillerAndTheOrderOfTheDestAreRespected) {
  const Image self = New(1, 1, ImageFormatRGB, {{0, 100, 255}}), dest = New(1, 1, ImageFormatXBGR, {{9, 9, 9, 9}});
  EXPECT_TRUE(Apply(self, dest, kMagic2x2, 2));
  EXPECT_EQ(PixelsOf(dest), (Grid{{9, 0, 0, 255}}));
}

}  // namespace
}  // namespace zvk::filters
