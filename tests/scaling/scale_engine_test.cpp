#include "scaling/scale_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "image/image_factory.h"
#include "image/image_formats.h"
#include "scaling/scale_taps.h"
#include "tests/scaling/scale_host.h"
#include "tests/scaling/scale_testing.h"
#include "tests/scenes/stored_image.h"
#include "tests/support/faults.h"
#include "tests/support/plugin_host.h"

namespace zvk::scaling {
namespace {

enum Mode : int32_t { kTriangle = 1, kBox, kLanczos3, kLanczos8, kMitchell, kPoly3, kCubic };

class ScaleEngine : public ScaleHost {
 protected:
  bool Scale(const TestImage &dest, const TestImage &source, int32_t mode, int32_t width, int32_t height) {
    return PictureScaleZVK(dest.Object(), source.Object(), nullptr, mode, width, height) != 0;
  }
  bool Scale(const TestImage &dest, const TestImage &source, const TestImage &temp, int32_t mode, int32_t width,
             int32_t height) {
    return PictureScaleZVK(dest.Object(), source.Object(), temp.Object(), mode, width, height) != 0;
  }

  // One pixel scaled to one pixel of another format.
  Bytes ScalePixel(int32_t sourceFormat, const Bytes &pixel, int32_t destFormat, const Bytes &destBefore) {
    const TestImage source(1, 1, sourceFormat), dest(1, 1, destFormat);
    source.SetRow(0, pixel);
    dest.SetRow(0, destBefore);
    EXPECT_TRUE(Scale(dest, source, kTriangle, 1, 1));
    return dest.Row(0, 1);
  }
};

// --- small grids, worked by hand ---

TEST_F(ScaleEngine, TriangleDoublesTwoByTwo) {
  const TestImage source(2, 2, ImageFormatG), dest(4, 4, ImageFormatG);
  source.SetRow(0, {0, 100});
  source.SetRow(1, {200, 40});
  ASSERT_TRUE(Scale(dest, source, kTriangle, 4, 4));
  EXPECT_EQ(dest.Row(0, 4), (Bytes{0, 25, 75, 100}));
  EXPECT_EQ(dest.Row(1, 4), (Bytes{50, 59, 76, 85}));
  EXPECT_EQ(dest.Row(2, 4), (Bytes{150, 126, 79, 55}));
  EXPECT_EQ(dest.Row(3, 4), (Bytes{200, 160, 80, 40}));
}

TEST_F(ScaleEngine, TriangleHalvesFour) {
  const TestImage source(4, 1, ImageFormatG), dest(2, 1, ImageFormatG);
  source.SetRow(0, {10, 20, 70, 90});
  ASSERT_TRUE(Scale(dest, source, kTriangle, 2, 1));
  // (0.75 x 10 + 0.75 x 20 + 0.25 x 70) / 1.75 = 22.86; (0.25 x 20 + 0.75 x 70 + 0.75 x 90) / 1.75 = 71.43
  EXPECT_EQ(dest.Row(0, 2), (Bytes{23, 71}));
}

TEST_F(ScaleEngine, BoxHalvesByMeansThatRoundUp) {
  const TestImage source(4, 2, ImageFormatRGB), dest(2, 1, ImageFormatRGB);
  source.SetRow(0, {10, 0, 7, 20, 0, 8, 30, 255, 9, 41, 255, 9});
  source.SetRow(1, {10, 0, 7, 20, 0, 8, 30, 255, 9, 41, 255, 9});
  ASSERT_TRUE(Scale(dest, source, kBox, 2, 1));
  EXPECT_EQ(dest.Row(0, 2), (Bytes{15, 0, 8, 36, 255, 9}));
}

TEST_F(ScaleEngine, BoxSharesASampleOnTheEdge) {
  const TestImage source(2, 1, ImageFormatG), dest(3, 1, ImageFormatG);
  source.SetRow(0, {10, 31});
  ASSERT_TRUE(Scale(dest, source, kBox, 3, 1));
  EXPECT_EQ(dest.Row(0, 3), (Bytes{10, 21, 31}));
}

TEST_F(ScaleEngine, TheFiltersThatAreOneAtTheCentreAndZeroAtWholeDistancesPassAPixelThrough) {
  const TestImage source(5, 4, ImageFormatRGBA), dest(5, 4, ImageFormatRGBA);
  TestImage(source).FillNoise(3);
  for (const int32_t mode : {kTriangle, kBox, kLanczos3, kLanczos8, kPoly3, kCubic}) {
    TestImage(dest).FillNoise(4);
    ASSERT_TRUE(Scale(dest, source, mode, 5, 4));
    for (int32_t y = 0; y < 4; ++y) EXPECT_EQ(dest.Row(y, 5), source.Row(y, 5)) << mode;
  }
}

TEST_F(ScaleEngine, MitchellBlursAtAScaleOfOne) {
  const TestImage source(5, 1, ImageFormatG), dest(5, 1, ImageFormatG);
  source.SetRow(0, {0, 0, 255, 0, 0});
  ASSERT_TRUE(Scale(dest, source, kMitchell, 5, 1));
  // 255 x 8 / 9 in the middle, 255 / 18 beside it
  EXPECT_EQ(dest.Row(0, 5), (Bytes{0, 14, 227, 14, 0}));
}

TEST_F(ScaleEngine, ASourceOfOnePixelFillsEverything) {
  const TestImage source(1, 1, ImageFormatRGB), dest(4, 3, ImageFormatRGB);
  source.SetRow(0, {11, 22, 33});
  for (int32_t mode = 1; mode <= 7; ++mode) {
    TestImage(dest).FillNoise(1);
    ASSERT_TRUE(Scale(dest, source, mode, 4, 3));
    for (int32_t y = 0; y < 3; ++y) EXPECT_EQ(dest.Row(y, 4), (Bytes{11, 22, 33, 11, 22, 33, 11, 22, 33, 11, 22, 33}));
  }
}

TEST_F(ScaleEngine, AUniformImageStaysUniform) {
  const TestImage source(37, 29, ImageFormatG), dest(90, 80, ImageFormatG);
  for (int32_t y = 0; y < 29; ++y) source.SetRow(y, Bytes(37, 200));
  for (int32_t mode = 1; mode <= 7; ++mode) {
    for (const auto &[width, height] : {std::pair{90, 80}, {11, 7}, {5, 80}}) {
      ASSERT_TRUE(Scale(dest, source, mode, width, height));
      for (int32_t y = 0; y < height; ++y)
        ASSERT_EQ(dest.Row(y, width), Bytes(static_cast<size_t>(width), 200)) << mode;
    }
  }
}

TEST_F(ScaleEngine, OvershootIsCutInBothPasses) {
  const TestImage source(2, 2, ImageFormatG), dest(4, 4, ImageFormatG);
  source.SetRow(0, {0, 255});
  source.SetRow(1, {255, 0});
  const TestImage temp(4, 2, ImageFormatScaling1);
  ASSERT_TRUE(Scale(dest, source, temp, kPoly3, 4, 4));
  // Poly3 at 0.25 and 1.25 (in 64ths): 55.25 and -6.75. The outer columns run over and are cut before the rows are made
  // of them: 0 and 255 again.
  EXPECT_EQ(temp.Row(0, 4)[0], 0);
  EXPECT_EQ(temp.Row(0, 4)[3], 255);
  EXPECT_EQ(dest.Row(0, 4)[0], 0);
  EXPECT_EQ(dest.Row(0, 4)[3], 255);
  EXPECT_EQ(dest.Row(3, 4)[0], 255);
  EXPECT_EQ(dest.Row(3, 4)[3], 0);
}

TEST_F(ScaleEngine, ASourceWithoutColumnsGivesZeros) {
  TestImage source(1, 2, ImageFormatRGB), dest(3, 2, ImageFormatRGB);
  source.Record().Width = 0;
  dest.FillNoise(1);
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 3, 2));
  for (int32_t y = 0; y < 2; ++y) EXPECT_EQ(dest.Row(y, 3), Bytes(9, 0));
}

// --- formats ---

TEST_F(ScaleEngine, ChannelsFollowTheOffsets) {
  EXPECT_EQ(ScalePixel(ImageFormatBGRA, {1, 2, 3, 4}, ImageFormatARGB, {9, 9, 9, 9}), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {1, 2, 3}, ImageFormatBGR, {9, 9, 9}), (Bytes{3, 2, 1}));
}

TEST_F(ScaleEngine, AlphaAndFillerThatTheSourceLacksStay) {
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {1, 2, 3}, ImageFormatRGBA, {9, 9, 9, 8}), (Bytes{1, 2, 3, 8}));
  EXPECT_EQ(ScalePixel(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatXBGR, {9, 9, 9, 9}), (Bytes{9, 3, 2, 1}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {5}, ImageFormatGA, {9, 8}), (Bytes{5, 8}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {5}, ImageFormat2of3, {7, 8, 9}), (Bytes{7, 5, 9}));
}

TEST_F(ScaleEngine, TheThirdInkIsReadFromTheFirstByte) {
  EXPECT_EQ(ScalePixel(ImageFormatCMYK, {10, 20, 30, 40}, ImageFormatCMYK, {0, 0, 0, 0}), (Bytes{10, 20, 10, 40}));
  // K Y M C: the black byte comes first.
  EXPECT_EQ(ScalePixel(ImageFormatKYMC, {40, 30, 20, 10}, ImageFormatKYMC, {0, 0, 0, 0}), (Bytes{40, 40, 20, 10}));
  EXPECT_EQ(ScalePixel(ImageFormatACMYK, {5, 10, 20, 30, 40}, ImageFormatCMYKA, {0, 0, 0, 0, 0}),
            (Bytes{10, 20, 5, 40, 5}));
}

TEST_F(ScaleEngine, GrayGivesAllFourInksItsFirstByte) {
  EXPECT_EQ(ScalePixel(ImageFormatG, {77}, ImageFormatCMYK, {0, 0, 0, 0}), (Bytes{77, 77, 77, 77}));
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatCMYKA, {0, 0, 0, 0, 0}), (Bytes{77, 77, 77, 77, 9}));
  EXPECT_EQ(ScalePixel(ImageFormatAG, {9, 77}, ImageFormatCMYKA, {0, 0, 0, 0, 0}), (Bytes{9, 9, 9, 9, 9}));
  EXPECT_EQ(ScalePixel(ImageFormatG, {255}, ImageFormatCMYK, {0, 0, 0, 0}), (Bytes{255, 255, 255, 255}));
}

TEST_F(ScaleEngine, GrayWithAlphaLeavesTheAlphaOfGrayWithAlpha) {
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatGA, {1, 2}), (Bytes{77, 2}));
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatAG, {1, 2}), (Bytes{1, 77}));
  const TestImage source(1, 1, ImageFormatGA), dest(1, 1, ImageFormatGA), temp(1, 1, ImageFormatScaling2);
  source.SetRow(0, {77, 9});
  temp.SetRow(0, {3, 3});
  ASSERT_TRUE(Scale(dest, source, temp, kTriangle, 1, 1));
  EXPECT_EQ(temp.Row(0, 1), (Bytes{77, 0}));
}

TEST_F(ScaleEngine, GrayStandsInTheSecondTempByteForColour) {
  EXPECT_EQ(ScalePixel(ImageFormatG, {77}, ImageFormatRGBA, {0, 0, 0, 5}), (Bytes{77, 77, 77, 5}));
  EXPECT_EQ(ScalePixel(ImageFormatGA, {77, 9}, ImageFormatARGB, {0, 0, 0, 0}), (Bytes{9, 77, 77, 77}));
  const TestImage source(1, 1, ImageFormatGA), dest(1, 1, ImageFormatRGB), temp(1, 1, ImageFormatScaling4);
  source.SetRow(0, {77, 9});
  temp.SetRow(0, {3, 3, 3, 3});
  ASSERT_TRUE(Scale(dest, source, temp, kTriangle, 1, 1));
  EXPECT_EQ(temp.Row(0, 1), (Bytes{0, 77, 0, 0}));
  const TestImage destWithAlpha(1, 1, ImageFormatRGBA);
  ASSERT_TRUE(Scale(destWithAlpha, source, temp, kTriangle, 1, 1));
  EXPECT_EQ(temp.Row(0, 1), (Bytes{0, 77, 0, 9}));
}

TEST_F(ScaleEngine, GrayOfColourHasWeightsOfItsOwn) {
  // 0.3 x 100 + 0.59 x 200 + 0.11 x 50 = 153.5
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {100, 200, 50}, ImageFormatG, {0}), (Bytes{154}));
  EXPECT_EQ(ScalePixel(ImageFormatRGBA, {10, 20, 30, 99}, ImageFormatGA, {0, 0}), (Bytes{18, 99}));
}

TEST_F(ScaleEngine, GrayOfInksIsBlackAlone) {
  EXPECT_EQ(ScalePixel(ImageFormatCMYK, {10, 20, 30, 40}, ImageFormatG, {0}), (Bytes{40}));
  EXPECT_EQ(ScalePixel(ImageFormatAKYMC, {5, 40, 30, 20, 10}, ImageFormatGA, {0, 0}), (Bytes{40, 5}));
}

TEST_F(ScaleEngine, WideGrayKeepsItsWideSamples) {
  const TestImage source(2, 1, ImageFormatGray16), dest(4, 1, ImageFormatGray16);
  const uint16_t samples[] = {1000, 65535};
  std::memcpy(source.Pixel(0, 0), samples, 4);
  ASSERT_TRUE(Scale(dest, source, kTriangle, 4, 1));
  uint16_t scaled[4];
  std::memcpy(scaled, dest.Pixel(0, 0), 8);
  // 1000 + 64535 / 4 = 17133.75; 1000 + 3 x 64535 / 4 = 49401.25
  EXPECT_THAT(scaled, testing::ElementsAre(1000, 17134, 49401, 65535));
}

// The images' storages lie between pages that nobody may touch.
TEST(ScaleWideGray, OfASampleThatTheHostHasMovedToTheEndOfTheStorageTheFirstByteCounts) {
  using scenes::Kind;
  using scenes::StoredImage;
  PluginHost host({.fenced = true});
  constexpr int32_t kWidth = 2048;  // fills the pages of a row in a file
  for (const Kind kind : {Kind::Block, Kind::File}) {
    for (const bool threaded : {false, true}) {
      StoredImage source(host, kind, kWidth, 2, ImageFormatGray16), dest(host, kind, kWidth, 2, ImageFormatGray16);
      const auto scale = [&] {
        return threaded ? PictureScaleZVKMT(dest, 1, source, nullptr, kTriangle, kWidth, 2)
                        : PictureScaleZVK(dest, source, nullptr, kTriangle, kWidth, 2);
      };
      source.SetBytes(Bytes(4 * kWidth, 7));
      SetGrayOffset(dest, 0, 1);
      EXPECT_TRUE(scale());
      Bytes expected(4 * kWidth, 7);
      expected[0] = 0;
      // A row of a file is a storage of its own.
      if (kind == Kind::File) expected[2 * kWidth] = 0;
      EXPECT_EQ(dest.Bytes(), expected) << kind;

      SetGrayOffset(dest, 0, 0);
      SetGrayOffset(source, 0, 1);
      EXPECT_TRUE(scale());
      expected.assign(4 * kWidth, 7);
      expected.back() = 0;
      if (kind == Kind::File) expected[2 * kWidth - 1] = 0;
      EXPECT_EQ(dest.Bytes(), expected) << kind;
    }
  }
}

// Nobody compares the size with the destination: what the caller has not described of his block is written as well.
TEST(ScaleWideGray, SamplesBeyondTheDestinationAreWrittenWhole) {
  PluginHost host({.fenced = true});
  constexpr int32_t kWidth = 9, kHeight = 7, kRowSize = 2 * kWidth;
  for (const int32_t offset : {0, 1}) {
    for (const bool threaded : {false, true}) {
      scenes::StoredImage source(host, scenes::Kind::Block, 3, 2, ImageFormatGray16);
      source.SetBytes({0x34, 0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0x12, 0x34, 0x12});
      const auto block = host.NewMemoryBlock(kRowSize * kHeight + offset);
      const auto dest = host.New("PictureZVK");
      ImageConstructorMemory(dest, block, 3, 2, ImageFormatGray16, kRowSize);
      SetGrayOffset(dest, 0, offset);
      EXPECT_TRUE(threaded ? PictureScaleZVKMT(dest, 2, source, nullptr, kTriangle, kWidth, kHeight)
                           : PictureScaleZVK(dest, source, nullptr, kTriangle, kWidth, kHeight));
      Bytes expected(static_cast<size_t>(kRowSize * kHeight + offset));
      for (size_t i = 0; i < size_t{kWidth} * kHeight; ++i) {
        expected[offset + 2 * i] = 0x34;
        expected[offset + 2 * i + 1] = 0x12;
      }
      // One that begins with the last byte of the two rows that the caller has described has no second byte.
      if (offset == 1) expected[2 * kRowSize] = 0;
      EXPECT_EQ(Bytes(block->Data(), block->Data() + block->Size()), expected) << offset << threaded;
    }
  }
}

TEST(ScaleWideGray, ASampleOfTheTempImageBeginsWithItsLastByteAndHasNoSecondOne) {
  using scenes::Kind;
  PluginHost host({.fenced = true});
  for (const bool threaded : {false, true}) {
    scenes::StoredImage source(host, Kind::Block, 2, 1, ImageFormatGray16),
        dest(host, Kind::Block, 2, 1, ImageFormatGray16);
    source.SetBytes({7, 7, 7, 7});
    const auto block = host.NewMemoryBlock(3);
    const auto temp = host.New("PictureZVK");
    ImageConstructorMemory(temp, block, 2, 1, ImageFormatScaling2, 3);
    EXPECT_TRUE(threaded ? PictureScaleZVKMT(dest, 1, source, temp, kTriangle, 2, 1)
                         : PictureScaleZVK(dest, source, temp, kTriangle, 2, 1));
    EXPECT_EQ(Bytes(block->Data(), block->Data() + 3), (Bytes{7, 7, 7}));
    EXPECT_EQ(dest.Bytes(), (Bytes{7, 7, 7, 0}));
  }
}

TEST_F(ScaleEngine, WideGrayIsOneByteToOtherFamilies) {
  EXPECT_EQ(ScalePixel(ImageFormatGray16, {12, 34}, ImageFormatRGB, {0, 0, 0}), (Bytes{12, 12, 12}));
  EXPECT_EQ(ScalePixel(ImageFormatRGB, {100, 100, 100}, ImageFormatGray16, {7, 8}), (Bytes{100, 8}));
}

TEST_F(ScaleEngine, RefusedPairsGiveFalseInEveryFilter) {
  for (const auto &[sourceFormat, destFormat] : {std::pair{ImageFormatRGB, ImageFormatCMYK},
                                                 {ImageFormatCMYK, ImageFormatRGB},
                                                 {ImageFormatG, ImageFormatGray16},
                                                 {ImageFormatGray16, ImageFormatG},
                                                 {ImageFormatBuffer, ImageFormatBuffer},
                                                 {ImageFormatScaling4, ImageFormatRGB},
                                                 {ImageFormatRGB, ImageFormatScaling4}}) {
    TestImage source(3, 3, sourceFormat), dest(3, 3, destFormat);
    dest.FillNoise(1);
    const Bytes before = dest.Storage();
    for (int32_t mode = 1; mode <= 7; ++mode) EXPECT_FALSE(Scale(dest, source, mode, 3, 3));
    EXPECT_EQ(dest.Storage(), before);
  }
}

// --- refusals ---

TEST_F(ScaleEngine, NilImagesSizesNotAboveZeroAndOtherModesAreRefused) {
  TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG);
  dest.FillNoise(1);
  const Bytes before = dest.Storage();
  EXPECT_FALSE(PictureScaleZVK(nullptr, source.Object(), nullptr, kBox, 3, 3));
  EXPECT_FALSE(PictureScaleZVK(dest.Object(), nullptr, nullptr, kBox, 3, 3));
  for (const int32_t size : {0, -1, INT32_MIN}) {
    EXPECT_FALSE(Scale(dest, source, kBox, size, 3));
    EXPECT_FALSE(Scale(dest, source, kBox, 3, size));
  }
  for (const int32_t mode : {0, -1, 8, INT32_MAX, INT32_MIN}) EXPECT_FALSE(Scale(dest, source, mode, 3, 3));
  EXPECT_EQ(dest.Storage(), before);
}

TEST_F(ScaleEngine, ImagesThatAreNotUsableAreRefused) {
  const std::vector<std::function<void(ImageClassData &)>> spoils = {
      [](ImageClassData &record) { record.Valid = false; },
      [](ImageClassData &record) { record.GetRow = nullptr; },
      [](ImageClassData &record) { record.Width = -1; },
      [](ImageClassData &record) { record.Height = 0; },
  };
  for (size_t spoil = 0; spoil < spoils.size(); ++spoil) {
    for (int32_t image = 0; image < 3; ++image) {
      TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG), temp(3, 3, ImageFormatScaling1);
      dest.FillNoise(1);
      const Bytes before = dest.Storage();
      spoils[spoil]((image == 0 ? source : image == 1 ? dest : temp).Record());
      EXPECT_FALSE(Scale(dest, source, temp, kBox, 3, 3)) << spoil << " " << image;
      if (image != 2) {
        EXPECT_FALSE(Scale(dest, source, kBox, 3, 3)) << spoil << " " << image;
      }
      EXPECT_EQ(dest.Storage(), before);
    }
  }
}

TEST_F(ScaleEngine, AViewOverANilRowTableIsRefused) {
  TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG);
  source.Record().GetRow = GetRowGDImage;
  EXPECT_FALSE(Scale(dest, source, kBox, 3, 3));
}

TEST_F(ScaleEngine, AWidthWhoseTableIsRefusedIsRefused) {
  const TestImage source(3, 3, ImageFormatG), dest(3, 3, ImageFormatG), temp(3, 3, ImageFormatScaling1);
  EXPECT_FALSE(Scale(dest, source, temp, kBox, INT32_MAX, 3));
}

TEST_F(ScaleEngine, TheSizeIsNotComparedWithTheDestinations) {
  // A view of the left top corner: the scale writes past it, into the rest of the storage.
  TestImage source(2, 2, ImageFormatG), whole(6, 6, ImageFormatG);
  source.SetRow(0, {50, 50});
  source.SetRow(1, {50, 50});
  TestImage view(whole);
  view.Clip(0, 0, 2, 2);
  ASSERT_TRUE(Scale(view, source, kTriangle, 4, 5));
  for (int32_t y = 0; y < 5; ++y) EXPECT_EQ(whole.Row(y, 6), (Bytes{50, 50, 50, 50, 0, 0}));
  EXPECT_EQ(whole.Row(5, 6), Bytes(6, 0));
}

// --- the temp image ---

TEST_F(ScaleEngine, ATempIsAskedForInTheFinalWidthAndTheSourcesHeight) {
  TestImage source(9, 7, ImageFormatCMYKA), dest(5, 12, ImageFormatCMYKA);
  UseFactory(source);
  answers = {NewImage};
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_EQ(wishes, (std::vector<std::array<int32_t, 3>>{{5, 7, 37}}));
}

TEST_F(ScaleEngine, TheFactoryOfTheDestinationIsNotAsked) {
  TestImage source(9, 7, ImageFormatG), dest(5, 12, ImageFormatG);
  UseFactory(dest);
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_TRUE(wishes.empty());
}

TEST_F(ScaleEngine, AFactoryThatAnswersWithAnotherFormatIsAskedAgain) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  UseFactory(source);
  const auto wrong = [](int32_t width, int32_t height, int32_t) { return NewImage(width, height, ImageFormatRGBA); };
  answers = {wrong, wrong, wrong, NewImage};
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_EQ(wishes.size(), 4u);
  const Bytes scaled = dest.Storage();
  TestImage again(5, 12, ImageFormatRGB);
  naive::Scale(again.Record(), source.Record(), MakeTemp(dest, source, 5).Record(), kLanczos3, 5, 12);
  EXPECT_EQ(scaled, again.Storage());
}

TEST_F(ScaleEngine, StartingAgainLooksAtTheImagesAgain) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  UseFactory(source);
  answers = {[&](int32_t width, int32_t height, int32_t) {
    dest.Record().Valid = false;
    return NewImage(width, height, ImageFormatRGBA);
  }};
  EXPECT_FALSE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_EQ(wishes.size(), 1u);
}

TEST_F(ScaleEngine, AFactoryThatAnswersWithAMappedTempMakesItFalse) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  dest.FillNoise(1);
  const Bytes before = dest.Storage();
  UseFactory(source);
  answers = {[](int32_t width, int32_t height, int32_t format) {
    REALobject image = NewImage(width, height, format);
    RecordOf(image)->IsMapping = true;
    return image;
  }};
  EXPECT_FALSE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_EQ(wishes.size(), 1u);
  EXPECT_EQ(dest.Storage(), before);
}

TEST_F(ScaleEngine, AMappedTempOfTheCallersIsTaken) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.FillNoise(1);
  TestImage temp = MakeTemp(dest, source, 5);
  temp.Map(GetRowLinear);
  EXPECT_TRUE(Scale(dest, source, temp, kLanczos3, 5, 12));
}

TEST_F(ScaleEngine, ATempOfTheCallersIsTakenInAnyFormat) {
  // 12 bytes a row serve as three temp pixels of four.
  TestImage source(9, 7, ImageFormatRGB), dest(3, 5, ImageFormatRGB);
  source.FillNoise(1);
  const TestImage temp(12, 7, ImageFormatG);
  ASSERT_TRUE(Scale(dest, source, temp, kLanczos3, 3, 5));
  TestImage again(3, 5, ImageFormatRGB);
  naive::Scale(again.Record(), source.Record(), MakeTemp(dest, source, 3).Record(), kLanczos3, 3, 5);
  EXPECT_EQ(dest.Storage(), again.Storage());
}

TEST_F(ScaleEngine, AnInvalidAnswerIsPassedOverAndATempConstructed) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  UseFactory(source);
  answers = {[](int32_t, int32_t, int32_t) { return REALnewInstance("PictureZVK"); }};
  EXPECT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
}

TEST_F(ScaleEngine, AHigherTempGivesTapsOnRowsThatNobodyHasWritten) {
  const TestImage source(2, 2, ImageFormatG), dest(2, 2, ImageFormatG);
  source.SetRow(0, {80, 80});
  source.SetRow(1, {80, 80});
  UseFactory(source);
  answers = {[](int32_t width, int32_t height, int32_t format) { return NewImage(2 * width, 2 * height, format); }};
  ASSERT_TRUE(Scale(dest, source, kMitchell, 2, 2));
  // Upper row: rows 0 and 1. Lower row: 8/9 of row 1, 1/18 of row 0, and 1/18 of row 2, which is 0: 80 x 17 / 18.
  EXPECT_EQ(dest.Row(0, 2), (Bytes{80, 80}));
  EXPECT_EQ(dest.Row(1, 2), (Bytes{76, 76}));
}

TEST_F(ScaleEngine, ATempThatCannotBeMadeMakesItFalse) {
  const TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  {
    faults::Heap heap;
    heap.FailCalloc([](size_t count, size_t size) { return count * size == 7 * 64; });
    EXPECT_FALSE(Scale(dest, source, kLanczos3, 5, 12));
  }
  const auto exception = host_.TakeException();  // the constructor's own
  ASSERT_TRUE(exception);
  EXPECT_EQ(exception->className, "OutOfMemoryException");
}

TEST_F(ScaleEngine, ATempIsGivenBackOnEveryWayOut) {
  // The fixture's host reports what is left over at the end.
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
  dest.Record().GetRow = nullptr;
  EXPECT_FALSE(Scale(dest, source, kLanczos3, 5, 12));
}

// --- time for the host ---

TEST_F(ScaleEngine, EachImageIsGivenTimeOnceAndTheDestinationAfterEveryEntryAndRow) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  TestImage temp = MakeTemp(dest, source, 5);
  for (const bool mapped : {false, true}) {
    if (mapped) dest.Map(GetRowLinear);
    for (const TestImage *image : {&source, &dest, &temp}) {
      yields_ = 0;
      image->Record().Yield.YieldTicks = 1;
      ASSERT_TRUE(Scale(dest, source, temp, kLanczos3, 5, 12));
      image->Record().Yield.YieldTicks = 0;
      // Once; 5 entries of the columns' table, 7 temp rows, 12 entries of the rows' table, 12 rows.
      EXPECT_EQ(yields_, image == &dest ? 1 + 5 + 7 + 12 + 12 : 1);
    }
  }
}

TEST_F(ScaleEngine, NobodyIsAskedForTheTimeWithoutYieldTicks) {
  const TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  const uint32_t before = ticks;
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_EQ(ticks, before);
}

TEST_F(ScaleEngine, TheSourceComesBeforeTheDestinationBeforeTheTemp) {
  TestImage source(9, 7, ImageFormatG), dest(5, 12, ImageFormatG);
  TestImage temp = MakeTemp(dest, source, 5);
  for (const TestImage *image : {&source, &dest, &temp}) image->Record().Yield.YieldTicks = 1;
  dest.Record().Height = 0;
  EXPECT_FALSE(Scale(dest, source, temp, kBox, 5, 12));
  EXPECT_EQ(yields_, 1);
  dest.Record().Height = 12;
  temp.Record().GetRow = nullptr;
  EXPECT_FALSE(Scale(dest, source, temp, kBox, 5, 12));
  EXPECT_EQ(yields_, 3);
  // All three must be Valid before anyone is given time, and are looked at again after it.
  temp.Record().GetRow = GetRowLinear;
  temp.Record().Valid = false;
  EXPECT_FALSE(Scale(dest, source, temp, kBox, 5, 12));
  EXPECT_EQ(yields_, 3);
  temp.Record().Valid = true;
  onYield_ = [&] { dest.Record().Valid = false; };
  EXPECT_FALSE(Scale(dest, source, temp, kBox, 5, 12));
  EXPECT_EQ(yields_, 4);
}

TEST_F(ScaleEngine, OnlyTheYieldTimeOfARecordChanges) {
  TestImage source(9, 7, ImageFormatRGB), dest(5, 12, ImageFormatRGB);
  source.Record().Yield.YieldTicks = dest.Record().Yield.YieldTicks = 1;
  ImageClassData sourceBefore = source.Record(), destBefore = dest.Record();
  ASSERT_TRUE(Scale(dest, source, kLanczos3, 5, 12));
  EXPECT_NE(source.Record().Yield.LastYieldTime, sourceBefore.Yield.LastYieldTime);
  sourceBefore.Yield.LastYieldTime = source.Record().Yield.LastYieldTime;
  destBefore.Yield.LastYieldTime = dest.Record().Yield.LastYieldTime;
  EXPECT_EQ(std::memcmp(&source.Record(), &sourceBefore, sizeof sourceBefore), 0);
  EXPECT_EQ(std::memcmp(&dest.Record(), &destBefore, sizeof destBefore), 0);
}

}  // namespace
}  // namespace zvk::scaling
