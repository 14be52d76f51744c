#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "compositing/copy_pixels.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "tests/naive/copy_pixels.h"
#include "tests/scenes/stored_image.h"

namespace zvk::compositing {
namespace {

using scenes::Kind;
using scenes::StoredImage;
using Bytes = std::vector<uint8_t>;

class CopyConversionTest : public testing::Test {
 protected:
  CopyConversionTest() : host_({.fenced = true}) {}

  // What becomes of one pixel, laid over the old bytes of the destination's.
  Bytes Copied(int32_t sourceFormat, const Bytes &pixel, int32_t destFormat, const Bytes &old) {
    StoredImage source(host_, Kind::Block, 1, 1, sourceFormat), dest(host_, Kind::Block, 1, 1, destFormat);
    source.SetBytes(pixel);
    dest.SetBytes(old);
    result_ = rbCopyPixels2(dest, source);
    return dest.Bytes();
  }

  PluginHost host_;
  uint8_t result_ = 0;
};

// --- both with alpha ---

TEST_F(CopyConversionTest, WithAlphaOnBothSidesAlphaGoesAlong) {
  EXPECT_EQ(Copied(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatABGR, {9, 9, 9, 9}), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(Copied(ImageFormatGA, {1, 2}, ImageFormatARGB, {9, 9, 9, 9}), (Bytes{2, 1, 1, 1}));
  EXPECT_EQ(Copied(ImageFormatGA, {1, 2}, ImageFormatCMYKA, {9, 9, 9, 9, 9}), (Bytes{0, 0, 0, 1, 2}));
  EXPECT_EQ(Copied(ImageFormatCMYKA, {1, 2, 3, 4, 5}, ImageFormatAKYMC, {9, 9, 9, 9, 9}), (Bytes{5, 4, 3, 2, 1}));
  EXPECT_EQ(Copied(ImageFormatGA, {1, 2}, ImageFormatAG, {9, 9}), (Bytes{2, 1}));
  EXPECT_EQ(Copied(ImageFormatRGBA, {255, 255, 255, 7}, ImageFormatGA, {9, 9}), (Bytes{255, 7}));
  EXPECT_TRUE(result_);
}

TEST_F(CopyConversionTest, WithAlphaTheGrayOfCMYKIsTheFirstByteOfThePixel) {
  EXPECT_EQ(Copied(ImageFormatCMYKA, {11, 2, 3, 4, 5}, ImageFormatGA, {9, 9}), (Bytes{11, 5}));
  EXPECT_EQ(Copied(ImageFormatAKYMC, {11, 2, 3, 4, 5}, ImageFormatGA, {9, 9}), (Bytes{11, 11}));
}

TEST_F(CopyConversionTest, WithAlphaTheGrayOfCMYKFollowsTheOffsetsOfTheColours) {
  StoredImage source(host_, Kind::Block, 1, 1, ImageFormatCMYKA), dest(host_, Kind::Block, 1, 1, ImageFormatGA);
  source.SetBytes({10, 20, 30, 40, 50});
  SetGreenOffset(source, 0, 3);
  EXPECT_TRUE(rbCopyPixels2(dest, source));
  EXPECT_EQ(dest.Bytes(), (Bytes{(77 * 10 + 151 * 40 + 28 * 10) >> 8, 50}));
}

// --- one or neither with alpha ---

TEST_F(CopyConversionTest, WithAlphaOnOneSideItIsNeitherReadNorWritten) {
  EXPECT_EQ(Copied(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatRGB, {9, 9, 9}), (Bytes{1, 2, 3}));
  EXPECT_TRUE(result_);
  EXPECT_EQ(Copied(ImageFormatRGB, {1, 2, 3}, ImageFormatBGRA, {9, 9, 9, 9}), (Bytes{3, 2, 1, 9}));
  EXPECT_EQ(Copied(ImageFormatG, {1}, ImageFormatAG, {9, 9}), (Bytes{9, 1}));
  EXPECT_EQ(Copied(ImageFormatCMYK, {1, 2, 3, 4}, ImageFormatACMYK, {9, 9, 9, 9, 9}), (Bytes{9, 1, 2, 3, 4}));
}

TEST_F(CopyConversionTest, FillerIsNotWritten) {
  EXPECT_EQ(Copied(ImageFormatRGBX, {1, 2, 3, 4}, ImageFormatXBGR, {9, 9, 9, 9}), (Bytes{9, 3, 2, 1}));
  EXPECT_EQ(Copied(ImageFormatRGBX, {1, 2, 3, 4}, ImageFormatRGBX, {9, 9, 9, 9}), (Bytes{1, 2, 3, 9}));
  EXPECT_EQ(Copied(ImageFormatG, {1}, ImageFormat2of3, {9, 9, 9}), (Bytes{9, 1, 9}));
}

TEST_F(CopyConversionTest, GrayBecomesEveryColourOrTheBlackInk) {
  EXPECT_EQ(Copied(ImageFormatG, {5}, ImageFormatRGB, {9, 9, 9}), (Bytes{5, 5, 5}));
  EXPECT_EQ(Copied(ImageFormatG, {5}, ImageFormatCMYK, {9, 9, 9, 9}), (Bytes{0, 0, 0, 5}));
  EXPECT_EQ(Copied(ImageFormatG, {5}, ImageFormatXKYMC, {9, 9, 9, 9, 9}), (Bytes{9, 5, 0, 0, 0}));
}

TEST_F(CopyConversionTest, ColoursBecomeGrayRoundedDown) {
  EXPECT_EQ(Copied(ImageFormatRGB, {255, 255, 255}, ImageFormatG, {9}), (Bytes{255}));
  EXPECT_EQ(Copied(ImageFormatRGB, {255, 0, 0}, ImageFormatG, {9}), (Bytes{76}));
  EXPECT_EQ(Copied(ImageFormatBGR, {0, 0, 255}, ImageFormatG, {9}), (Bytes{76}));
  EXPECT_EQ(Copied(ImageFormatRGB, {1, 1, 0}, ImageFormatG, {9}), (Bytes{0}));  // 228 / 256
  EXPECT_EQ(Copied(ImageFormatCMYK, {1, 2, 3, 4}, ImageFormatG, {9}), (Bytes{4}));
  EXPECT_EQ(Copied(ImageFormatACMYK, {5, 1, 2, 3, 4}, ImageFormatG, {9}), (Bytes{4}));
}

// --- 16 bits ---

TEST_F(CopyConversionTest, EightBitsBecomeSixteenTimes257) {
  EXPECT_EQ(Copied(ImageFormatG, {255}, ImageFormatGray16, {9, 9}), (Bytes{255, 255}));
  EXPECT_EQ(Copied(ImageFormatG, {1}, ImageFormatGray16, {9, 9}), (Bytes{1, 1}));
  EXPECT_EQ(Copied(ImageFormatAG, {7, 3}, ImageFormatGray16, {9, 9}), (Bytes{3, 3}));
}

TEST_F(CopyConversionTest, SixteenBitsBecomeEightByTheirFirstByte) {
  EXPECT_EQ(Copied(ImageFormatGray16, {1, 2}, ImageFormatG, {9}), (Bytes{1}));
  EXPECT_EQ(Copied(ImageFormatGray16, {1, 2}, ImageFormatGA, {9, 9}), (Bytes{1, 9}));
  EXPECT_EQ(Copied(ImageFormatGray16, {1, 2}, ImageFormatRGB, {9, 9, 9}), (Bytes{1, 1, 1}));
  EXPECT_EQ(Copied(ImageFormatGray16, {1, 2}, ImageFormatCMYK, {9, 9, 9, 9}), (Bytes{0, 0, 0, 1}));
}

TEST_F(CopyConversionTest, SixteenBitsAreCopiedWhole) {
  EXPECT_EQ(Copied(ImageFormatGray16, {1, 2}, ImageFormatGray16, {9, 9}), (Bytes{1, 2}));
}

TEST_F(CopyConversionTest, ColoursIntoSixteenBitsWriteTheFirstByteAlone) {
  EXPECT_EQ(Copied(ImageFormatRGB, {255, 255, 255}, ImageFormatGray16, {9, 8}), (Bytes{255, 8}));
  EXPECT_EQ(Copied(ImageFormatRGBA, {255, 0, 0, 7}, ImageFormatGray16, {9, 8}), (Bytes{76, 8}));
  EXPECT_EQ(Copied(ImageFormatCMYK, {1, 2, 3, 4}, ImageFormatGray16, {9, 8}), (Bytes{4, 8}));
}

TEST_F(CopyConversionTest, OfAWideSampleThatTheHostHasMovedToTheEndOfTheStorageTheFirstByteIsCopied) {
  for (const Kind kind : {Kind::Block, Kind::File}) {
    constexpr int32_t kWidth = 2048;  // fills the pages of a row
    StoredImage dest(host_, kind, kWidth, 1, ImageFormatGray16), gray(host_, Kind::Block, kWidth, 1, ImageFormatG);
    SetGrayOffset(dest, 0, 1);
    dest.SetBytes(Bytes(2 * kWidth, 9));
    gray.SetBytes(Bytes(kWidth, 5));
    EXPECT_TRUE(rbCopyPixels2(dest, gray));
    Bytes expected(2 * kWidth, 5);
    expected[0] = 9;
    EXPECT_EQ(dest.Bytes(), expected) << kind;

    StoredImage source(host_, kind, kWidth, 1, ImageFormatGray16),
        wide(host_, Kind::Block, kWidth, 1, ImageFormatGray16);
    SetGrayOffset(source, 0, 1);
    source.SetBytes(Bytes(2 * kWidth, 7));
    wide.SetBytes(Bytes(2 * kWidth, 9));
    EXPECT_TRUE(rbCopyPixels2(wide, source));
    expected.assign(2 * kWidth, 7);
    expected.back() = 9;
    EXPECT_EQ(wide.Bytes(), expected) << kind;
  }
}

TEST_F(CopyConversionTest, AWideSampleThatTheHostHasMovedEndsInTheNextRow) {
  StoredImage dest(host_, Kind::Block, 2, 2, ImageFormatGray16), source(host_, Kind::Block, 2, 2, ImageFormatG);
  SetGrayOffset(dest, 0, 1);
  source.SetBytes({1, 2, 3, 4});
  EXPECT_TRUE(rbCopyPixels2(dest, source));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 1, 1, 2, 2, 3, 3, 4}));
}

// --- every pair of formats ---

TEST_F(CopyConversionTest, EveryPairOfFormatsIsCopiedAsThePlainLoopsSayOnEveryStorage) {
  scenes::Random random(11);
  for (int32_t destFormat = 1; destFormat <= 41; ++destFormat) {
    for (int32_t sourceFormat = 1; sourceFormat <= 41; ++sourceFormat) {
      if (destFormat == 14 || sourceFormat == 14) continue;
      for (const Kind kind : {Kind::Block, Kind::File}) {
        StoredImage dest(host_, kind, 37, 2, destFormat, 1), source(host_, Kind::Block, 37, 2, sourceFormat, 2);
        dest.Fill(random);
        source.Fill(random);
        const Bytes before = dest.Bytes();
        const bool copied =
            naive::copying::CopyNaively(dest.Record(), dest, source.Record(), source, {0, 0, 37, 2, 0, 0});
        const Bytes expected = dest.Bytes();
        dest.SetBytes(before);
        EXPECT_EQ(rbCopyPixels2(dest, source), copied ? 1 : 0) << destFormat << " from " << sourceFormat;
        EXPECT_EQ(dest.Bytes(), expected) << destFormat << " from " << sourceFormat << " in " << kind;
      }
    }
  }
}

}  // namespace
}  // namespace zvk::compositing
