#include "filters/diffuse_filter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>

#include "tests/filters/filter_testing.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class DiffuseFilterTest : public FilterTest {
 protected:
  static Image Diffuse(const Image &image, const Image &dest, int32_t level) {
    return Adopt(DifuseFilter(image, dest, level));
  }

  // An image of which each pixel tells its place.
  Image Places(int32_t width, int32_t height) {
    Image image = New(width, height, ImageFormatGA);
    for (int32_t y = 0; y < height; ++y) {
      for (int32_t x = 0; x < width; ++x) {
        Row(image, y)[2 * x] = static_cast<uint8_t>(x);
        Row(image, y)[2 * x + 1] = static_cast<uint8_t>(y);
      }
    }
    return image;
  }

  // The number that comes after `calls` of them.
  static int NumberAfter(unsigned seed, int calls) {
    std::srand(seed);
    for (int i = 0; i < calls; ++i) std::rand();
    return std::rand();
  }
};

TEST_F(DiffuseFilterTest, PixelsComeFromWhereTwoRandomNumbersSayTheColumnFirst) {
  const Image result = [&] {
    std::srand(7);
    return Diffuse(Places(20, 30), {}, 3);
  }();
  std::srand(7);
  for (int y = 0; y < 30; ++y) {
    for (int x = 0; x < 20; ++x) {
      const int column = x + std::rand() % 7 - 3;
      const int row = y + std::rand() % 7 - 3;
      EXPECT_EQ(Row(result, y)[2 * x], std::clamp(column, 0, 19));
      EXPECT_EQ(Row(result, y)[2 * x + 1], std::clamp(row, 0, 29));
    }
  }
}

TEST_F(DiffuseFilterTest, LevelZeroCopiesAndStillDrawsTwoNumbersForEachPixel) {
  const Image image = Noise(5, 4, ImageFormatRGBA);
  std::srand(11);
  EXPECT_EQ(PixelsOf(Diffuse(image, {}, 0)), PixelsOf(image));
  const int next = std::rand();
  EXPECT_EQ(next, NumberAfter(11, 40));
}

TEST_F(DiffuseFilterTest, AUniformImageStaysUniform) {
  for (const int32_t format : {ImageFormatG, ImageFormatAG, ImageFormatRGB, ImageFormatBGRA}) {
    const Image image = New(9, 7, format);
    std::fill_n(Record(image).Buffer, Record(image).TotalSize, uint8_t{173});
    EXPECT_EQ(PixelsOf(Diffuse(image, {}, 4)), PixelsOf(image));
  }
}

TEST_F(DiffuseFilterTest, AllDistancesUpToTheLevelHappen) {
  std::srand(3);
  const Image result = Diffuse(Places(200, 200), {}, 2);
  std::set<int> columns, rows;
  for (int y = 2; y < 198; ++y) {
    for (int x = 2; x < 198; ++x) {
      columns.insert(Row(result, y)[2 * x] - x);
      rows.insert(Row(result, y)[2 * x + 1] - y);
    }
  }
  EXPECT_EQ(columns, (std::set<int>{-2, -1, 0, 1, 2}));
  EXPECT_EQ(rows, columns);
}

// Level -1 asks for the remainder by -1, which is 0, and level -2 for one by -3, which is 0 to 2.
TEST_F(DiffuseFilterTest, ANegativeLevelMovesTheImage) {
  EXPECT_EQ(PixelsOf(Diffuse(Places(3, 2), {}, -1)), (Grid{{1, 1, 2, 1, 2, 1}, {1, 1, 2, 1, 2, 1}}));
  std::srand(5);
  const Image result = Diffuse(Places(60, 60), {}, -2);
  for (int y = 0; y < 50; ++y) {
    for (int x = 0; x < 50; ++x) {
      EXPECT_GE(Row(result, y)[2 * x], x + 2);
      EXPECT_LE(Row(result, y)[2 * x], x + 4);
    }
  }
}

// Twice the most negative number is 0, so there is one distance: that number negated, which is itself.
TEST_F(DiffuseFilterTest, TheMostNegativeLevelLeadsToTheFirstPixel) {
  EXPECT_EQ(PixelsOf(Diffuse(Places(3, 2), {}, INT32_MIN)), (Grid{{0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}}));
}

TEST_F(DiffuseFilterTest, ChannelsGoByTheOffsetsOfEachImageAndFillerStays) {
  const Image image = New(2, 1, ImageFormatRGB, {{1, 2, 3, 4, 5, 6}});
  const Image dest = New(2, 1, ImageFormatXBGR, {{7, 7, 7, 7, 8, 8, 8, 8}});
  EXPECT_EQ(PixelsOf(Diffuse(image, dest, -1)), (Grid{{7, 6, 5, 4, 8, 6, 5, 4}}));
}

TEST_F(DiffuseFilterTest, OfInksNothingIsWrittenAndNoNumberIsDrawn) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatCMYKA}) {
    const Image dest = Noise(3, 2, format, 9);
    const Grid before = PixelsOf(dest);
    std::srand(11);
    const Image result = Diffuse(Noise(3, 2, format), dest, 1);
    const int next = std::rand();
    EXPECT_EQ(next, NumberAfter(11, 0));
    EXPECT_EQ(result.Handle(), dest.Handle());
    EXPECT_EQ(PixelsOf(result), before);
  }
}

TEST_F(DiffuseFilterTest, WhatTheFrameRefusesIsNil) {
  EXPECT_FALSE(Diffuse(Noise(3, 2, ImageFormatGray16), {}, 1));
  EXPECT_FALSE(Diffuse(Noise(3, 2, ImageFormatG), host_.New("PictureZVK"), 1));
  ExpectNothingRaised();
}

TEST_F(DiffuseFilterTest, TheSourceRowIsFetchedForEachPixelAndTheRowOfDestOnce) {
  const auto diffuse = [](REALobject image, REALobject dest) { return DifuseFilter(image, dest, -1); };
  EXPECT_EQ(FetchesFor(host_, 2, 3, diffuse), "d0 s1 s1 d1 s2 s2 d2 s2 s2");
}

}  // namespace
}  // namespace zvk::filters
