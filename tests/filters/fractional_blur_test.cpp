#include "filters/fractional_blur.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "tests/filters/filter_testing.h"
#include "tests/support/faults.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class FractionalBlurTest : public FilterTest {
 protected:
  static Image Blur(const Image &image, const Image &dest, double radius) {
    return Adopt(BoxBlurFractionalFilter(image, dest, radius));
  }
  Image Gray(const Grid &grid) {
    return New(static_cast<int32_t>(grid[0].size()), static_cast<int32_t>(grid.size()), ImageFormatG, grid);
  }
};

// --- taps; a fraction of 0.5 halves everything: (0.5 x neighbours + sample) x 0.5 ---

TEST_F(FractionalBlurTest, AWholeRadiusCopies) {
  for (const int32_t format : {ImageFormatG, ImageFormatGA, ImageFormatRGB, ImageFormatARGB}) {
    const Image image = Noise(9, 5, format);
    for (const double radius : {3.0, 0.0, -2.0, 1e300}) EXPECT_EQ(PixelsOf(Blur(image, {}, radius)), PixelsOf(image));
  }
}

TEST_F(FractionalBlurTest, TheTopRowPassesAndTheBottomRowIsBlended) {
  // (0.5 x 300 + 50) / 2, and (0.5 x (200 + 50) + 200) / 2 = 162.5.
  EXPECT_EQ(PixelsOf(Blur(Gray({{100}, {50}, {200}}), {}, 0.5)), (Grid{{100}, {100}, {162}}));
}

TEST_F(FractionalBlurTest, TheLeftColumnIsBlendedAndTheRightColumnPasses) {
  // (0.5 x (100 + 50) + 100) / 2 = 87.5.
  EXPECT_EQ(PixelsOf(Blur(Gray({{100, 50, 200}}), {}, 0.5)), (Grid{{87, 100, 200}}));
}

TEST_F(FractionalBlurTest, ColumnsComeFirstAndAreTruncatedBeforeRows) {
  // Along columns the second row becomes 3.25 and 2.25, so 3 and 2, of which (0.5 x (3 + 2) + 3) / 2 = 2.75. It would
  // be 3 without the first truncation, or in the other order.
  EXPECT_EQ(PixelsOf(Blur(Gray({{4, 0}, {3, 3}}), {}, 0.5)), (Grid{{3, 0}, {2, 2}}));
}

TEST_F(FractionalBlurTest, TheWholePartOfTheRadiusIsIgnored) {
  const Image image = Noise(9, 5, ImageFormatRGB);
  EXPECT_EQ(PixelsOf(Blur(image, {}, 5.25)), PixelsOf(Blur(image, {}, 0.25)));
  EXPECT_EQ(PixelsOf(Blur(image, {}, -0.25)), PixelsOf(Blur(image, {}, 0.75)));
}

// What passes is multiplied all the same, and may lose 1 to the truncation.
TEST_F(FractionalBlurTest, WhatPassesIsTruncated) {
  bool somethingLost = false;
  for (const double f : {0.1, 0.3, 0.7}) {
    const double norm = 1.0 / (f + f + 1.0);
    // A single pixel passes in both directions.
    for (int v = 0; v < 256; ++v) {
      const auto once = static_cast<int>(((v * 2) * f + v) * norm);
      const auto twice = static_cast<int>(((once * 2) * f + once) * norm);
      EXPECT_EQ(PixelsOf(Blur(Gray({{static_cast<uint8_t>(v)}}), {}, f)), (Grid{{static_cast<uint8_t>(twice)}}));
      somethingLost = somethingLost || twice != v;
    }
  }
  EXPECT_TRUE(somethingLost);
}

TEST_F(FractionalBlurTest, NotANumberWritesZeros) {
  for (const double radius : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(PixelsOf(Blur(Gray({{100, 50}, {7, 8}}), Gray({{1, 2}, {3, 4}}), radius)), (Grid{{0, 0}, {0, 0}}));
  }
}

// --- small images ---

TEST_F(FractionalBlurTest, OfASingleRowNoOtherIsRead) {
  const auto block = host_.NewMemoryBlock(Bytes{100, 50, 200});  // the very next byte cannot be read
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 3, 1, ImageFormatG, 3);
  EXPECT_EQ(PixelsOf(Blur(image, {}, 0.5)), (Grid{{87, 100, 200}}));
}

TEST_F(FractionalBlurTest, OfASingleColumnNoOtherIsReadOrWritten) {
  const auto block = host_.NewMemoryBlock(Bytes{100, 50, 200});
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 1, 3, ImageFormatG, 1);
  EXPECT_EQ(PixelsOf(Blur(image, image, 0.5)), (Grid{{100}, {100}, {162}}));
}

TEST_F(FractionalBlurTest, TwoColumnsGoByTheFirstAndTheLastRule) {
  EXPECT_EQ(PixelsOf(Blur(Gray({{100, 50}}), {}, 0.5)), (Grid{{87, 50}}));
}

TEST_F(FractionalBlurTest, AnImageWithoutColumnsChangesNothing) {
  const Image image = Noise(3, 2, ImageFormatG);
  EXPECT_EQ(PixelsOf(Blur(Adopt(ClipImage5(image, 3, 0, 2, 2)), Gray({{1}, {2}}), 0.5)), (Grid{{1}, {2}}));
}

// --- channels ---

TEST_F(FractionalBlurTest, ChannelsGoByTheOffsetsOfEachImageAndFillerStays) {
  const Image image = New(2, 1, ImageFormatRGB, {{100, 0, 8, 50, 0, 8}});
  const Image dest = New(2, 1, ImageFormatXBGR, {{7, 7, 7, 7, 9, 9, 9, 9}});
  EXPECT_EQ(PixelsOf(Blur(image, dest, 0.5)), (Grid{{7, 8, 0, 87, 9, 8, 0, 50}}));
}

TEST_F(FractionalBlurTest, AlphaIsBlurredAsAChannel) {
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatAG, {{100, 7, 50, 7}}), {}, 0.5)), (Grid{{87, 7, 50, 7}}));
}

TEST_F(FractionalBlurTest, OfCMYKOnlyTheFirstByteOfAPixelIsBlurred) {
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatCMYK, {{100, 1, 2, 3, 50, 4, 5, 6}}), {}, 0.5)),
            (Grid{{87, 0, 0, 0, 50, 0, 0, 0}}));
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatKYMC, {{100, 1, 2, 3, 50, 4, 5, 6}}), {}, 0.5)),
            (Grid{{87, 0, 0, 0, 50, 0, 0, 0}}));
  // That byte is filler here.
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatXCMYK, {{100, 1, 2, 3, 4, 50, 4, 5, 6, 7}}), {}, 0.5)),
            (Grid{{87, 0, 0, 0, 0, 50, 0, 0, 0, 0}}));
}

TEST_F(FractionalBlurTest, OfCMYKWithAlphaTheFirstByteAndAlphaAreBlurred) {
  const Image dest = New(2, 1, ImageFormatCMYKA, {{9, 9, 9, 9, 9, 9, 9, 9, 9, 9}});
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatCMYKA, {{100, 1, 2, 3, 60, 50, 4, 5, 6, 20}}), dest, 0.5)),
            (Grid{{87, 9, 9, 9, 50, 50, 9, 9, 9, 20}}));
  // Alpha is that byte here, and goes through the blur once.
  EXPECT_EQ(PixelsOf(Blur(New(2, 1, ImageFormatACMYK, {{100, 1, 2, 3, 60, 50, 4, 5, 6, 20}}), {}, 0.5)),
            (Grid{{87, 0, 0, 0, 0, 50, 0, 0, 0, 0}}));
}

// --- dest ---

TEST_F(FractionalBlurTest, InPlaceIsTheSameAsIntoAnother) {
  for (const int32_t format : {ImageFormatG, ImageFormatRGB, ImageFormatBGRA, ImageFormatCMYKA}) {
    const Image image = Noise(11, 6, format);
    const Image other = New(11, 6, format, PixelsOf(image));
    const Grid expected = PixelsOf(Blur(image, other, 0.3));
    EXPECT_EQ(PixelsOf(Blur(image, image, 0.3)), expected);
  }
}

TEST_F(FractionalBlurTest, AnImageOfNoFamilyIsNil) {
  const Image dest = New(2, 1, ImageFormatG, {{1, 2}});
  EXPECT_FALSE(Blur(Noise(2, 1, ImageFormatScaling3), dest, 0.5));
  EXPECT_FALSE(Blur(Noise(2, 1, ImageFormatBuffer), {}, 0.5));
  EXPECT_EQ(PixelsOf(dest), (Grid{{1, 2}}));
  EXPECT_EQ(dest->References(), 1);
}

TEST_F(FractionalBlurTest, WhatTheFrameRefusesIsNil) {
  EXPECT_FALSE(Blur(Noise(3, 2, ImageFormatGray16), {}, 0.5));
  EXPECT_FALSE(Blur(Noise(3, 2, ImageFormatG), host_.New("PictureZVK"), 0.5));
  ExpectNothingRaised();
}

// --- limits ---

TEST_F(FractionalBlurTest, BehindTheRowSizeThereIsZero) {
  const auto block = host_.NewMemoryBlock(Bytes{100, 50, 200, 80});
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 3, 2, ImageFormatG, 1);  // rows of 3 samples, each a byte further on
  // Rows 100 0 0 and 50 0 0. At the bottom (0.5 x (50 + 100) + 50) / 2 = 62.5; at the left half of it and a quarter.
  EXPECT_EQ(PixelsOf(Blur(image, {}, 0.5)), (Grid{{75, 25, 0}, {46, 15, 0}}));
}

TEST_F(FractionalBlurTest, RowsThatRunBackwardsLeaveDestAsItIs) {
  Bytes bytes(40, 90);
  const auto block = Owned<standalone::MemoryBlock>::Adopt(standalone::MemoryBlock::Over(bytes.data() + 20));
  const Image image = host_.New("PictureZVK");
  ImageConstructorMemory(image, block, 2, 2, ImageFormatG, -20);
  EXPECT_EQ(PixelsOf(Blur(image, Gray({{1, 2}, {3, 4}}), 0.5)), (Grid{{1, 2}, {3, 4}}));
}

TEST_F(FractionalBlurTest, WithoutMemoryDestIsAsItWas) {
  const Image image = Gray({{90, 90, 90}}), dest = Gray({{1, 2, 3}});
  int refused = 0;
  for (bool done = false; !done; ++refused) {
    faults::Heap heap;
    heap.FailCallocAt(refused + 1);
    const Image result = Blur(image, dest, 0.5);
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

// --- rows of mapped images ---

TEST_F(FractionalBlurTest, EachRowOfTheSourceIsFetchedOnceAndThoseOfDestTwice) {
  const auto blur = [](REALobject image, REALobject dest) { return BoxBlurFractionalFilter(image, dest, 0.5); };
  EXPECT_EQ(FetchesFor(host_, 2, 4, blur), "s0 s1 d0 d1 s2 d2 s3 d3 d0 d1 d2 d3");
  EXPECT_EQ(FetchesFor(host_, 2, 2, blur), "s0 s1 d0 d1 d0 d1");
  // The first row in the place of a second one.
  EXPECT_EQ(FetchesFor(host_, 2, 1, blur), "s0 s0 d0 d0");
}

}  // namespace
}  // namespace zvk::filters
