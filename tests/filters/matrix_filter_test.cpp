#include "filters/matrix_filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/filters/filter_testing.h"
#include "tests/naive/filters.h"

namespace zvk::filters {
namespace {

using namespace filter_testing;

class MatrixFilter : public FilterTest {
 protected:
  Image Apply(const Image &self, const Image &dest, const naive::Matrix &matrix) {
    return Adopt(PictureMatrix5(self, dest, matrix.dimension, host_.NewArray(matrix.entries)->ArrayHandle(),
                                matrix.delta, matrix.scale));
  }

  // The one sample of a gray image of 1 x 1, which fills every place of the window.
  int Single(uint8_t sample, const naive::Matrix &matrix) {
    const Image result = Apply(New(1, 1, ImageFormatG, {{sample}}), Image(), matrix);
    return result ? Row(result, 0)[0] : -1;
  }

  // The filter on noise, into a new dest of the same size, against the naive loops.
  void ExpectAsNaive(int32_t width, int32_t height, int32_t format, const naive::Matrix &matrix) {
    const Image self = Noise(width, height, format), expected = Noise(width, height, format, 2);
    const Image dest = Noise(width, height, format, 2);
    naive::ApplyMatrix(Record(self), Record(expected), width, height, matrix);
    EXPECT_TRUE(Apply(self, dest, matrix));
    EXPECT_EQ(PixelsOf(dest), PixelsOf(expected)) << width << " x " << height;
  }
};

const naive::Matrix kIdentity{3, {0, 0, 0, 0, 1, 0, 0, 0, 0}};

// --- the sum ---

TEST_F(MatrixFilter, TheIdentityCopiesAllChannelsAlphaIncluded) {
  for (const int32_t format :
       {ImageFormatG, ImageFormatGA, ImageFormatRGB, ImageFormatABGR, ImageFormatKYMC, ImageFormatCMYKA}) {
    const Image self = Noise(5, 5, format);
    const Image result = Apply(self, Image(), kIdentity);
    ASSERT_TRUE(result);
    EXPECT_EQ(PixelsOf(result), PixelsOf(self)) << format;
  }
}

TEST_F(MatrixFilter, EachEntryMeetsTheSampleOnItsSideOfThePixel) {
  const Image self = New(3, 3, ImageFormatG, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  const auto centreOf = [&](std::vector<int32_t> entries) {
    return Row(Apply(self, Image(), {3, std::move(entries)}), 1)[1];
  };
  EXPECT_EQ(centreOf({1, 0, 0, 0, 0, 0, 0, 0, 0}), 1);
  EXPECT_EQ(centreOf({0, 0, 1, 0, 0, 0, 0, 0, 0}), 3);
  EXPECT_EQ(centreOf({0, 0, 0, 1, 0, 0, 0, 0, 0}), 4);
  EXPECT_EQ(centreOf({0, 0, 0, 0, 0, 0, 0, 10, 0}), 80);
  EXPECT_EQ(centreOf({1, 1, 1, 1, 1, 1, 1, 1, 1}), 45);
  EXPECT_EQ(centreOf({-1, -2, -1, 0, 0, 0, 1, 2, 1}), 24);
}

TEST_F(MatrixFilter, EdgePixelsAreRepeatedOutwards) {
  const Image self = New(3, 2, ImageFormatG, {{1, 2, 3}, {4, 5, 6}});
  // The upper left neighbour, then the lower right one.
  const Image dest = New(3, 2, ImageFormatG);
  EXPECT_TRUE(Apply(self, dest, {3, {1}}));
  EXPECT_EQ(PixelsOf(dest), (Grid{{1, 1, 2}, {1, 1, 2}}));
  EXPECT_TRUE(Apply(self, dest, {3, {0, 0, 0, 0, 0, 0, 0, 0, 1}}));
  EXPECT_EQ(PixelsOf(dest), (Grid{{5, 6, 6}, {5, 6, 6}}));
}

TEST_F(MatrixFilter, AnEvenWindowReachesFurtherUpAndLeft) {
  const Image self = New(3, 3, ImageFormatG, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
  const auto pixels = [&](std::vector<int32_t> entries) {
    return PixelsOf(Apply(self, Image(), {2, std::move(entries)}));
  };
  EXPECT_EQ(pixels({1, 0, 0, 0}), (Grid{{1, 1, 2}, {1, 1, 2}, {4, 4, 5}}));
  EXPECT_EQ(pixels({0, 0, 0, 1}), PixelsOf(self));
}

TEST_F(MatrixFilter, AFlatImageStaysFlatUnderAMatrixOfWeightOne) {
  for (const int32_t dimension : {1, 3, 5, 9}) {
    naive::Matrix matrix{dimension, std::vector<int32_t>(static_cast<size_t>(dimension * dimension), 1)};
    matrix.entries[0] -= dimension * dimension - 1;
    const Image self = New(7, 7, ImageFormatRGBA, Grid(7, Bytes(28, 77)));
    EXPECT_EQ(PixelsOf(Apply(self, Image(), matrix)), PixelsOf(self)) << dimension;
  }
}

TEST_F(MatrixFilter, AnEntryOf255OrMoreIsAHole) {
  for (const int32_t hole : {255, 256, 100000, INT32_MAX}) {
    const Image self = Noise(4, 4, ImageFormatGA);
    EXPECT_EQ(PixelsOf(Apply(self, Image(), {3, {0, 0, 0, 0, hole, 0, 0, 0, 0}})), Grid(4, Bytes(8, 0)));
    EXPECT_EQ(PixelsOf(Apply(self, Image(), {3, {0, 0, 0, 0, hole, 0, 0, 0, 0}, 300})), Grid(4, Bytes(8, 255)));
    EXPECT_EQ(Single(7, {3, {2, 0, 0, 0, hole, 0, 0, 0, 3}, 5}), 40);
  }
  EXPECT_EQ(Single(1, {1, {254}}), 254);
}

TEST_F(MatrixFilter, TheTestForAHoleIsSigned) {
  EXPECT_EQ(Single(3, {1, {-1}, 100}), 97);
  EXPECT_EQ(Single(1, {1, {-1000}, 1100}), 100);
}

TEST_F(MatrixFilter, DeltaIsWhatAMatrixOfSumZeroGivesOnFlatAreas) {
  const Image self = New(5, 5, ImageFormatRGB, Grid(5, Bytes(15, 200)));
  const Image result = Apply(self, Image(), {3, {-1, -1, -1, -1, 8, -1, -1, -1, -1}, 128});
  EXPECT_EQ(PixelsOf(result), Grid(5, Bytes(15, 128)));
}

TEST_F(MatrixFilter, ANegativeResultIsZeroAndDoesNotWrap) {
  EXPECT_EQ(Single(10, {1, {-1}}), 0);
  EXPECT_EQ(Single(10, {1, {1}, -11}), 0);
  EXPECT_EQ(Single(10, {1, {1}, -10}), 0);
  EXPECT_EQ(Single(10, {1, {1}, -9}), 1);
}

TEST_F(MatrixFilter, AResultAbove255Is255) {
  EXPECT_EQ(Single(10, {1, {1}, 245}), 255);
  EXPECT_EQ(Single(10, {1, {1}, 246}), 255);
  EXPECT_EQ(Single(10, {1, {254}}), 255);
}

TEST_F(MatrixFilter, SumsWrapIn32Bits) {
  // 2 x -2147483648 is 0; 3 x it is it again; 255 x 16843010 is 4294967550, so minus that is -254.
  EXPECT_EQ(Single(2, {1, {INT32_MIN}, 33}), 33);
  EXPECT_EQ(Single(3, {1, {INT32_MIN}, 33}), 0);
  EXPECT_EQ(Single(255, {1, {-16843010}, 255}), 1);
  // The delta joins in: -5 - 2147483648 is 2147483643.
  EXPECT_EQ(Single(5, {1, {-1}, INT32_MIN}), 255);
  EXPECT_EQ(Single(5, {1, {1}, INT32_MAX}), 0);
}

// --- the scale factor ---

TEST_F(MatrixFilter, TheDeltaIsAddedBeforeTheScaling) {
  naive::Matrix matrix = kIdentity;
  matrix.delta = 10;
  matrix.scale = 0.5;
  const Image result = Apply(Ramp(ImageFormatG), New(256, 1, ImageFormatG), matrix);
  for (int v = 0; v < 256; ++v) EXPECT_EQ(Row(result, 0)[v], (v + 10) / 2);
}

TEST_F(MatrixFilter, TheProductIsTruncatedTowardZero) {
  EXPECT_EQ(Single(3, {1, {1}, 0, 0.9999}), 2);
  EXPECT_EQ(Single(1, {1, {-1}, 0, -0.9999}), 0);
  EXPECT_EQ(Single(200, {1, {1}, 0, 1.0 / 3}), 66);
  EXPECT_EQ(Single(200, {1, {1}, 0, -1.0}), 0);
  EXPECT_EQ(Single(200, {1, {-1}, 0, -1.0}), 200);
  EXPECT_EQ(Single(200, {1, {1}, 0, 0.0}), 0);
  EXPECT_EQ(Single(200, {1, {1}, 0, 1.5}), 255);
}

TEST_F(MatrixFilter, AnAverageTakesTheReciprocalOfTheWeight) {
  const Image self = New(3, 3, ImageFormatG, {{10, 20, 30}, {40, 50, 60}, {70, 80, 90}});
  const Image result = Apply(self, Image(), {3, std::vector<int32_t>(9, 1), 0, 1.0 / 9});
  EXPECT_EQ(PixelsOf(result), (Grid{{23, 30, 36}, {43, 50, 56}, {63, 70, 76}}));
}

TEST_F(MatrixFilter, AProductThatIsNoIntegerGivesZero) {
  const double kInfinity = std::numeric_limits<double>::infinity();
  for (const double scale : {1e300, -1e300, kInfinity, -kInfinity, std::nan(""), 2147483648.0}) {
    EXPECT_EQ(Single(1, {1, {1}, 0, scale}), 0) << scale;
    EXPECT_EQ(Single(1, {1, {-1000}, 0, scale}), 0) << scale;  // sums that need 32 bits
  }
  EXPECT_EQ(Single(1, {1, {1}, 0, 2147483647.0}), 255);
  EXPECT_EQ(Single(0, {1, {1}, 0, 1e300}), 0);
}

// --- the array and the dimension ---

TEST_F(MatrixFilter, TheRestOfAShortArrayIsZero) {
  const Image self = New(2, 2, ImageFormatG, {{1, 2}, {3, 4}});
  EXPECT_EQ(PixelsOf(Apply(self, Image(), {3, {0, 0, 0, 5}})), (Grid{{5, 5}, {15, 15}}));
  EXPECT_EQ(PixelsOf(Apply(self, Image(), {3, {}, 9})), (Grid{{9, 9}, {9, 9}}));
}

TEST_F(MatrixFilter, ANilArrayIsTheHostsAffairAndAllZeros) {
  const Image self = New(2, 2, ImageFormatG, {{1, 2}, {3, 4}});
  const Image result = Adopt(PictureMatrix4(self, nullptr, 3, nullptr, 9));
  EXPECT_EQ(PixelsOf(result), (Grid{{9, 9}, {9, 9}}));
  EXPECT_EQ(host_->Calls("RuntimeUBound"), 1);
}

TEST_F(MatrixFilter, TheArrayIsReadBeforeTheImageIsTested) {
  const Image self = New(2, 2, ImageFormatGray16);
  EXPECT_FALSE(Apply(self, Image(), kIdentity));
  EXPECT_EQ(host_->Calls("RuntimeUBound"), 1);
  EXPECT_EQ(host_->Calls("RuntimeDirectReadIntArray"), 9);
}

TEST_F(MatrixFilter, NoMoreThan2500EntriesAreRead) {
  naive::Matrix matrix{50, std::vector<int32_t>(2600, 0)};
  matrix.entries[2499] = 3;
  matrix.entries[2500] = 100;
  EXPECT_EQ(Single(7, matrix), 21);
  EXPECT_EQ(host_->Calls("RuntimeDirectReadIntArray"), 2500);
}

TEST_F(MatrixFilter, ADimensionBelowOneLooksAtNoEntries) {
  for (const int32_t dimension : {0, -1, -3, INT32_MIN}) {
    const Image self = Noise(3, 3, ImageFormatRGB);
    EXPECT_EQ(PixelsOf(Apply(self, Image(), {dimension, {1, 1, 1, 1}, 77})), Grid(3, Bytes(9, 77)));
    EXPECT_EQ(PixelsOf(Apply(self, Image(), {dimension, {1, 1, 1, 1}, -77})), Grid(3, Bytes(9, 0)));
    EXPECT_EQ(PixelsOf(Apply(self, Image(), {dimension, {1, 1, 1, 1}, 77, 0.5})), Grid(3, Bytes(9, 38)));
  }
}

TEST_F(MatrixFilter, EntriesThatADimensionAbove50ReachesPastTheEndAreZero) {
  for (const int32_t dimension : {51, 60, 100}) {
    ExpectAsNaive(6, 5, ImageFormatG, {dimension, std::vector<int32_t>(2500, 1), 0, 1.0 / 2000});
  }
}

TEST_F(MatrixFilter, AHugeDimensionSeesNothingButTheFirstColumnAndRow) {
  // The window lies so far up and to the left that all 2500 entries meet the pixel in the corner.
  const Image self = New(2, 2, ImageFormatG, {{3, 200}, {200, 200}}), dest = New(2, 2, ImageFormatG);
  naive::Matrix matrix{INT32_MAX, std::vector<int32_t>(2500, 0), 4};
  matrix.entries[0] = matrix.entries[2499] = 10;
  EXPECT_TRUE(Apply(self, dest, matrix));
  EXPECT_EQ(PixelsOf(dest), (Grid{{64, 64}, {64, 64}}));
  // The same where each pixel asks for its rows.
  EXPECT_TRUE(Apply(self, self, matrix));
  EXPECT_EQ(PixelsOf(self), (Grid{{64, 255}, {255, 255}}));  // by then the corner is 64
}

TEST_F(MatrixFilter, TheOverloadsLeaveTheScaleAndTheDeltaAt1And0) {
  const Image self = New(1, 1, ImageFormatG, {{9}});
  const auto array = host_.NewArray({3});
  EXPECT_EQ(Row(Adopt(PictureMatrix3(self, nullptr, 1, array->ArrayHandle())), 0)[0], 27);
  EXPECT_EQ(Row(Adopt(PictureMatrix4(self, nullptr, 1, array->ArrayHandle(), 5)), 0)[0], 32);
  EXPECT_EQ(Row(Adopt(PictureMatrix5(self, nullptr, 1, array->ArrayHandle(), 5, 2.0)), 0)[0], 64);
}

// --- the dest ---

TEST_F(MatrixFilter, ANilDestOfAnImageThatIsNotSquareHasTheWrongShape) {
  const Image wide = New(3, 2, ImageFormatG, {{1, 2, 3}, {4, 5, 6}});
  const Image high = Apply(wide, Image(), kIdentity);
  EXPECT_EQ(PixelsOf(high), (Grid{{1, 2}, {4, 5}, {0, 0}}));
  const Image wideAgain = Apply(high, Image(), kIdentity);
  EXPECT_EQ(PixelsOf(wideAgain), (Grid{{1, 2, 0}, {4, 5, 0}}));
  EXPECT_EQ(Record(wideAgain).TotalSize, 128);
  for (int32_t y = 0; y < 2; ++y) {
    for (int32_t byte = 2; byte < 64; ++byte) EXPECT_EQ(Row(wideAgain, y)[byte], 0);
  }
}

TEST_F(MatrixFilter, TheEdgeIsTheSourcesAlsoWhereTheNewDestCutsIt) {
  const Image wide = New(3, 1, ImageFormatG, {{1, 2, 3}});
  // The right neighbour but one of the first pixel is there, though the dest is one pixel wide.
  const Image dest = Apply(wide, Image(), {5, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}});
  EXPECT_EQ(PixelsOf(dest), (Grid{{3}, {0}, {0}}));
}

TEST_F(MatrixFilter, ADestMayBeLargerAndOfAnotherFormat) {
  const Image self = New(2, 1, ImageFormatRGBA, {{1, 2, 3, 4, 5, 6, 7, 8}});
  const Image dest = New(3, 2, ImageFormatBGRX, {Bytes(12, 99), Bytes(12, 98)});
  EXPECT_TRUE(Apply(self, dest, kIdentity));
  // Alpha goes where a dest without alpha says that its alpha is: at 0, over blue.
  EXPECT_EQ(PixelsOf(dest), (Grid{{4, 2, 1, 99, 8, 6, 5, 99, 99, 99, 99, 99}, Bytes(12, 98)}));
}

TEST_F(MatrixFilter, IntoAGrayDestTheLastChannelStays) {
  const Image self = New(2, 1, ImageFormatCMYK, {{1, 2, 3, 4, 5, 6, 7, 8}});
  const Image dest = New(2, 1, ImageFormatG);
  EXPECT_TRUE(Apply(self, dest, kIdentity));
  EXPECT_EQ(PixelsOf(dest), (Grid{{4, 8}}));
}

TEST_F(MatrixFilter, FillerIsNeverWritten) {
  const Image self = Noise(3, 3, ImageFormatXCMYK), dest = New(3, 3, ImageFormatXCMYK, Grid(3, Bytes(15, 44)));
  EXPECT_TRUE(Apply(self, dest, kIdentity));
  for (int32_t y = 0; y < 3; ++y) {
    for (int32_t x = 0; x < 3; ++x) EXPECT_EQ(Row(dest, y)[x * 5], 44);
  }
}

TEST_F(MatrixFilter, IntoItselfAnImageReadsWhatIsWrittenAlready) {
  // Each pixel becomes the sum of its left neighbour and itself.
  const Image self = New(4, 1, ImageFormatG, {{1, 2, 3, 4}});
  EXPECT_TRUE(Apply(self, self, {3, {0, 0, 0, 1, 1, 0, 0, 0, 0}}));
  EXPECT_EQ(PixelsOf(self), (Grid{{2, 4, 7, 11}}));
  const Image rows = New(1, 4, ImageFormatG, {{1}, {2}, {3}, {4}});
  EXPECT_TRUE(Apply(rows, rows, {3, {0, 1, 0, 0, 1, 0, 0, 0, 0}}));
  EXPECT_EQ(PixelsOf(rows), (Grid{{2}, {4}, {7}, {11}}));
}

TEST_F(MatrixFilter, ThroughAClipThatIsTooSmallTheImageBehindItIsWritten) {
  const Image self = New(2, 2, ImageFormatG, {{1, 2}, {3, 4}}), whole = New(4, 4, ImageFormatG);
  EXPECT_TRUE(Apply(self, Adopt(ClipImage5(whole, 1, 1, 1, 1)), kIdentity));
  EXPECT_EQ(PixelsOf(whole), (Grid{{0, 0, 0, 0}, {0, 1, 2, 0}, {0, 3, 4, 0}, {0, 0, 0, 0}}));
}

TEST_F(MatrixFilter, WhatIsWrittenThroughAClipMayBeTheSource) {
  const Image whole = New(1, 4, ImageFormatG, {{1}, {2}, {4}, {8}});
  const Image self = Adopt(ClipImage5(whole, 0, 1, 1, 3)), dest = Adopt(ClipImage5(whole, 0, 0, 1, 1));
  // Each pixel becomes the one two rows up, and 1: the last one meets what the second one has become.
  EXPECT_TRUE(Apply(self, dest, {5, {0, 0, 1}, 1}));
  EXPECT_EQ(PixelsOf(whole), (Grid{{3}, {3}, {4}, {8}}));
}

TEST_F(MatrixFilter, AnImageWithoutAFamilyLeavesTheDest) {
  for (const int32_t format : {ImageFormatBuffer, ImageFormatScaling4}) {
    const Image dest = New(3, 3, format, Grid(3, Bytes(format == ImageFormatBuffer ? 3 : 12, 5)));
    EXPECT_EQ(Apply(New(3, 3, format), dest, kIdentity).Handle(), dest.Handle());
    EXPECT_EQ(Row(dest, 0)[0], 5);
  }
}

// --- sizes ---

TEST_F(MatrixFilter, EveryWidthAroundTheBlocksOfTheKernel) {
  const std::vector<int32_t> small = {1, 2, 1, 2, 4, 2, 1, 2, 1}, large = {-99, 2, 1, 250, -300, 2, 1, 99, 1};
  for (const int32_t width : {1, 2, 3, 5, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 128, 129, 200}) {
    for (const int32_t format : {ImageFormatG, ImageFormatRGB, ImageFormat2of4}) {
      ExpectAsNaive(width, 3, format, {3, small, 0, 1.0 / 16});
      ExpectAsNaive(width, 3, format, {3, small, -700});
      ExpectAsNaive(width, 3, format, {3, large, 9, 0.01});
      ExpectAsNaive(width, 3, format, {3, large, 9});
    }
  }
}

TEST_F(MatrixFilter, AWindowMayBeFarLargerThanTheImage) {
  naive::Matrix matrix{50, std::vector<int32_t>(2500)};
  for (int32_t i = 0; i < 2500; ++i) matrix.entries[static_cast<size_t>(i)] = (i * 7) % 11 - 4;
  matrix.scale = 1.0 / 100;
  for (const auto &[width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 3}, {30, 40}, {60, 3}}) {
    ExpectAsNaive(width, height, ImageFormatGA, matrix);
  }
}

TEST_F(MatrixFilter, AnImageOfWidthZeroIsServed) {
  const Image whole = Noise(4, 3, ImageFormatG), dest = Noise(4, 3, ImageFormatG);
  const Grid before = PixelsOf(dest);
  EXPECT_EQ(Apply(Adopt(ClipImage5(whole, 4, 0, 2, 2)), dest, kIdentity).Handle(), dest.Handle());
  EXPECT_EQ(PixelsOf(dest), before);
}

}  // namespace
}  // namespace zvk::filters
