#include "levels/fill_apply.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/levels/in_place_testing.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

using FillApply = InPlaceTest;

TEST_F(FillApply, AlphaZeroLowersEachSampleByOneButForZero) {
  const TestImage image = NewImage(2, 1, ImageFormatRGB, Bytes{0, 1, 2, 128, 254, 255});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 200, 200, 200, 0));
  EXPECT_EQ(image.All(), (Bytes{0, 0, 1, 127, 253, 254}));
}

TEST_F(FillApply, AlphaFullWritesOneLessThanTheColourButForZero) {
  const TestImage image = NewImage(2, 1, ImageFormatRGB, Bytes{0, 100, 255, 255, 0, 9});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 0, 1, 255, 255));
  EXPECT_EQ(image.All(), (Bytes{0, 0, 254, 0, 0, 254}));
}

TEST_F(FillApply, AMixIsRoundedDownFromJustBelowIt) {
  // p = 127 x 257 = 32639, q = 128 x 257 = 32896: (100 x 32639 + 200 x 32896) >> 16 = 9843100 >> 16 = 150, and so on.
  const TestImage image = NewImage(1, 1, ImageFormatBGRA, Bytes{10, 0, 100, 77});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 200, 255, 20, 128));
  EXPECT_EQ(image.All(), (Bytes{15, 127, 150, 77}));
}

TEST_F(FillApply, AlphaAndFillerKeepTheirBytes) {
  const TestImage image = NewImage(1, 1, ImageFormatXRGB, Bytes{9, 9, 9, 9});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 255, 255, 255, 255));
  EXPECT_EQ(image.All(), (Bytes{9, 254, 254, 254}));
  const TestImage gray = NewImage(1, 1, ImageFormatAG, Bytes{9, 9});
  EXPECT_TRUE(FillRectApplyRGBA1(gray, 255, 255, 255, 255));
  EXPECT_EQ(gray.All(), (Bytes{9, 254}));
}

TEST_F(FillApply, AGrayImageTakesTheColoursGray) {
  // All 255 makes 255, as 77 + 151 + 28 = 256; 100, 50, 200 make (7700 + 7550 + 5600) / 256 = 81.
  const TestImage image = NewImage(2, 1, ImageFormatG, Bytes{0, 255});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 255, 255, 255, 255));
  EXPECT_EQ(image.All(), (Bytes{254, 254}));
  EXPECT_TRUE(FillRectApplyRGBA1(image, 100, 50, 200, 255));
  EXPECT_EQ(image.All(), (Bytes{80, 80}));
}

TEST_F(FillApply, TheGrayOfAColourBelowZeroIsRoundedTowardZero) {
  // -1 x 77 / 256 is 0, not -1, which would leave (0 - 257 x 255) >> 16 = 65534, so 254.
  const TestImage image = NewImage(1, 1, ImageFormatG, Bytes{100});
  EXPECT_TRUE(FillRectApplyRGBA1(image, -1, 0, 0, 255));
  EXPECT_EQ(image.All(), Bytes{0});
}

TEST_F(FillApply, OnlyOneByteOfA16BitSampleIsBlended) {
  const TestImage image = NewImage(2, 1, ImageFormatGray16, Bytes{9, 9, 9, 9});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 255, 255, 255, 255));
  EXPECT_EQ(image.All(), (Bytes{254, 9, 254, 9}));
}

TEST_F(FillApply, NothingIsClampedAndTheArithmeticWraps) {
  // a = 256: p = -257, q = 65792. 100 x -257 + 0 = -25700; >> 16 of the 32-bit word: 0xFFFF9B9C -> 0xFFFF -> 255.
  const TestImage image = NewImage(1, 1, ImageFormatRGB, Bytes{100, 100, 100});
  EXPECT_TRUE(FillRectApplyRGBA1(image, 0, 1000, -1, 256));
  // 1000 x 65792 - 25700 = 65766300 >> 16 = 1003 -> 235; -65792 - 25700 = -91492: 0xFFFE9A9C -> 0xFFFE -> 254.
  EXPECT_EQ(image.All(), (Bytes{255, 235, 254}));
}

TEST_F(FillApply, TheRectangleAloneIsBlended) {
  const TestImage image = NewImage(3, 2, ImageFormatG, Bytes{9, 9, 9, 9, 9, 9});
  EXPECT_TRUE(FillRectApplyRGBA5(image, 4, 1, -2, 5, 255, 255, 255, 255));
  EXPECT_EQ(image.All(), (Bytes{9, 9, 9, 9, 9, 254}));
}

TEST_F(FillApply, TheFormsWithAColourTakeItsThreeLowBytes) {
  const TestImage image = NewImage(2, 1, ImageFormatRGB, Bytes{9, 9, 9, 9, 9, 9});
  EXPECT_TRUE(FillRectApplyRGBcA1(image, 0xFF102030, 255));
  EXPECT_EQ(image.All(), (Bytes{0x0F, 0x1F, 0x2F, 0x0F, 0x1F, 0x2F}));
  EXPECT_TRUE(FillRectApplyRGBcA5(image, 1, 0, 1, 1, 0x99112233, 255));
  EXPECT_EQ(image.All(), (Bytes{0x0F, 0x1F, 0x2F, 0x10, 0x21, 0x32}));
}

TEST_F(FillApply, InksAndImagesOfNoFamilyAreRefused) {
  for (const int32_t format : {ImageFormatCMYK, ImageFormatCMYKA, ImageFormatBuffer, ImageFormatScaling3}) {
    const TestImage image = NewImage(2, 2, format);
    const Bytes before = image.All();
    Log(image);
    EXPECT_FALSE(FillRectApplyRGBA1(image, 1, 2, 3, 4));
    EXPECT_FALSE(FillRectApplyRGBA5(image, 9, 0, 1, 1, 1, 2, 3, 4));
    EXPECT_FALSE(FillRectApplyRGBcA1(image, 1, 4));
    EXPECT_EQ(image.All(), before);
    EXPECT_EQ(TakeLog(), "");
  }
}

TEST_F(FillApply, AnImageWhoseRowHasWrappedIsRefused) {
  auto image = host_.New("PictureZVK");
  ImageConstructor(image, (1 << 30) + 10, 1, ImageFormatRGBA);
  EXPECT_FALSE(FillRectApplyRGBA1(image, 1, 2, 3, 4));
  EXPECT_FALSE(FillRectApplyRGBA5(image, 100, 0, 1, 1, 1, 2, 3, 4));
}

TEST_F(FillApply, AnEmptyRectangleOfAnImageWhoseRowHasWrappedIsTrue) {
  const TestImage image = NewImage((1 << 30) + 10, 2, ImageFormatRGBA);
  ASSERT_EQ(image.Record().RowSize, 40);
  Log(image);
  EXPECT_TRUE(FillRectApplyRGBA5(image, 100, 0, 1, 0, 1, 2, 3, 4));
  EXPECT_TRUE(FillRectApplyRGBA5(image, 100, 2, 1, 1, 1, 2, 3, 4));
  EXPECT_EQ(TakeLog(), "");
  EXPECT_TRUE(FillRectApplyRGBA5(image, 100, 0, 0, 2, 1, 2, 3, 4));
  EXPECT_EQ(TakeLog(), "0 yield 1 yield");
  const TestImage inks = NewImage((1 << 30) + 10, 2, ImageFormatCMYK);
  EXPECT_FALSE(FillRectApplyRGBA5(inks, 100, 0, 1, 0, 1, 2, 3, 4));
}

TEST_F(FillApply, AnEmptyRectangleOfAClosedImageIsTrue) {
  const TestImage image = NewImage(4, 3, ImageFormatRGB);
  ImageDestructor(image);
  ASSERT_TRUE(image.Record().Valid);
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 0, 4, 0, 1, 2, 3, 4));
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 0, 0, 3, 1, 2, 3, 4));
}

TEST_F(FillApply, UnusableImagesAreRefused) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatG}) {
    ForEachUnusable(host_, format, [](const char *what, REALobject image) {
      EXPECT_FALSE(FillRectApplyRGBA1(image, 1, 2, 3, 4)) << what;
      EXPECT_FALSE(FillRectApplyRGBA5(image, 0, 0, 1, 1, 1, 2, 3, 4)) << what;
      EXPECT_FALSE(FillRectApplyRGBcA1(image, 1, 4)) << what;
      EXPECT_FALSE(FillRectApplyRGBcA5(image, 0, 0, 1, 1, 1, 4)) << what;
    });
  }
  EXPECT_FALSE(FillRectApplyRGBA1(nullptr, 1, 2, 3, 4));
  EXPECT_FALSE(FillRectApplyRGBA5(nullptr, 0, 0, 1, 1, 1, 2, 3, 4));
}

TEST_F(FillApply, ThereIsAYieldAfterEachRowAndNoneBefore) {
  const TestImage image = NewImage(2, 4, ImageFormatRGB);
  Log(image);
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 1, 1, 2, 1, 2, 3, 4));
  EXPECT_EQ(TakeLog(), "1 yield 2 yield");
}

TEST_F(FillApply, ARectangleWithoutHeightIsTrueAtOnce) {
  const TestImage image = NewImage(2, 4, ImageFormatRGB);
  Log(image);
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 1, 1, 0, 1, 2, 3, 4));
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 4, 1, 1, 1, 2, 3, 4));
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 9, 1, 1, 1, 2, 3, 4));
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(FillApply, ARectangleWithoutWidthIsTrueAfterAVisitToItsRows) {
  const TestImage image = NewImage(2, 4, ImageFormatG);
  Log(image);
  EXPECT_TRUE(FillRectApplyRGBA5(image, 0, 1, 0, 2, 1, 2, 3, 255));
  EXPECT_EQ(TakeLog(), "1 yield 2 yield");
  // Wholly right of the image.
  EXPECT_TRUE(FillRectApplyRGBA5(image, 5, 0, 3, 1, 1, 2, 3, 255));
  EXPECT_EQ(TakeLog(), "0 yield");
  EXPECT_EQ(image.All(), Bytes(8, 7));
}

TEST_F(FillApply, ViewsOfNegativeSizeAreServedWithoutAPixel) {
  const TestImage image = NewImage(2, 4, ImageFormatRGB);
  const TestImage narrow = Clip(image, 4, 1, 1, 2);
  ASSERT_EQ(narrow.Record().Width, -2);
  Log(narrow);
  EXPECT_TRUE(FillRectApplyRGBA1(narrow, 1, 2, 3, 255));
  EXPECT_EQ(TakeLog(), "0 yield 1 yield");
  const TestImage low = Clip(image, 0, 6, 1, 1);
  ASSERT_EQ(low.Record().Height, -2);
  Log(low);
  EXPECT_TRUE(FillRectApplyRGBA1(low, 1, 2, 3, 255));
  EXPECT_TRUE(FillRectApplyRGBA5(low, 0, 0, 1, 1, 1, 2, 3, 255));
  EXPECT_EQ(TakeLog(), "");
  EXPECT_EQ(image.All(), Bytes(24, 7));
}

TEST_F(FillApply, SumsThatWrapNeverLeadOutOfTheImage) {
  const TestImage image = NewImage(2, 2, ImageFormatG, Bytes{9, 9, 9, 9});
  EXPECT_TRUE(FillRectApplyRGBA5(image, 1, 1, INT_MAX, INT_MAX, 255, 255, 255, 255));
  EXPECT_EQ(image.All(), (Bytes{9, 9, 9, 254}));
}

TEST_F(FillApply, AViewOfTheColoursAloneIsBlended) {
  const TestImage image = NewImage(1, 1, ImageFormatARGB, Bytes{9, 9, 9, 9});
  EXPECT_TRUE(FillRectApplyRGBA1(View(image, RGBChannel(image)), 1, 2, 3, 255));
  EXPECT_EQ(image.All(), (Bytes{9, 0, 1, 2}));
}

TEST_F(FillApply, ChannelsThatShareAByteAreBlendedOneAfterTheOther) {
  const TestImage image = NewImage(1, 1, ImageFormatRGB, Bytes{100, 100, 100});
  SetGreenOffset(image, 0, 0);
  // Red: (100 x 32639 + 0) >> 16 = 49; green on top: (49 x 32639 + 255 x 32896) >> 16 = 152; blue: 49.
  EXPECT_TRUE(FillRectApplyRGBA1(image, 0, 255, 0, 128));
  EXPECT_EQ(image.All(), (Bytes{152, 100, 49}));
}

TEST_F(FillApply, EveryWeightAndEverySampleGiveTheirFormula) {
  const TestImage image = NewImage(256, 1, ImageFormatG);
  for (const int32_t alpha : {-300, -1, 0, 1, 2, 100, 127, 128, 200, 254, 255, 256, 1000, INT_MAX, INT_MIN}) {
    for (int32_t gray = 0; gray < 256; gray += 5) {
      Bytes samples, expected;
      for (int64_t old = 0; old < 256; ++old) {
        samples.push_back(static_cast<uint8_t>(old));
        // The low 32 bits of the sum, made in 64.
        const auto sum = static_cast<uint32_t>((old * (255 - int64_t{alpha}) + gray * int64_t{alpha}) * 257);
        expected.push_back(static_cast<uint8_t>(sum >> 16));
      }
      image.Set(samples);
      EXPECT_TRUE(FillRectApplyRGBA1(image, gray, gray, gray, alpha));
      EXPECT_EQ(image.All(), expected) << gray << " with " << alpha;
    }
  }
}

}  // namespace
}  // namespace zvk::levels
