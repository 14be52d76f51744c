#include "levels/fill.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/levels/in_place_testing.h"
#include "tests/scenes/stored_image.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

using Fill = InPlaceTest;

// --- the rectangle ---

TEST_F(Fill, ANegativeWidthMirrorsTheRectangleAroundItsCorner) {
  const TestImage image = NewImage(20, 1, ImageFormatG);
  FillRect5(image, 15, 0, -10, 1, 1);
  Bytes expected(20, 7);
  std::fill_n(expected.begin() + 5, 10, 1);
  EXPECT_EQ(image.All(), expected);
}

TEST_F(Fill, ANegativeHeightMirrorsTheRectangleAroundItsCorner) {
  const TestImage image = NewImage(1, 6, ImageFormatG);
  FillRect5(image, 0, 4, 1, -3, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 1, 1, 1, 7, 7}));
}

TEST_F(Fill, WhatLiesLeftOfTheImageIsCutOff) {
  const TestImage image = NewImage(4, 2, ImageFormatG);
  FillRect5(image, -3, -1, 5, 2, 1);
  EXPECT_EQ(image.All(), (Bytes{1, 1, 7, 7, 7, 7, 7, 7}));
}

TEST_F(Fill, WhatLiesRightOfTheImageIsCutOff) {
  const TestImage image = NewImage(4, 2, ImageFormatG);
  FillRect5(image, 2, 1, 50, 50, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 7, 7, 1, 1}));
}

TEST_F(Fill, ARectangleOutsideTheImageWritesNothingAndDoesNotYield) {
  const TestImage image = NewImage(4, 2, ImageFormatRGB);
  Log(image);
  for (const auto &[x, y, width, height] : std::vector<std::array<int32_t, 4>>{
           {4, 0, 2, 2}, {9, 0, 2, 2}, {0, 2, 2, 2}, {-5, 0, 5, 2}, {0, 0, 0, 2}, {0, 0, 2, 0}, {0, 0, -2, 2}}) {
    FillRect5(image, x, y, width, height, 1);
    FillRectRGB5(image, x, y, width, height, 1, 1, 1);
    FillRectRGBA5(image, x, y, width, height, 1, 1, 1, 1);
    FillRectRandom5(image, x, y, width, height);
    ClearRect5(image, x, y, width, height);
  }
  EXPECT_EQ(image.All(), Bytes(24, 7));
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(Fill, SumsThatWrapNeverLeadOutOfTheImage) {
  const TestImage image = NewImage(4, 2, ImageFormatG);
  // The sum of position and size wraps below zero, which passes for a rectangle within the image.
  FillRect5(image, 2, 1, INT_MAX, INT_MAX, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 7, 7, 1, 1}));
  ClearRect5(image, 1, 0, INT_MAX, INT_MAX);
  EXPECT_EQ(image.All(), (Bytes{7, 0, 0, 0, 7, 0, 0, 0}));
  // Its own negative is the same number, so it stays below zero.
  FillRect5(image, 0, 0, INT_MIN, INT_MIN, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 0, 0, 0, 7, 0, 0, 0}));
}

TEST_F(Fill, UnusableImagesAreLeftAlone) {
  for (const int32_t format : {ImageFormatRGB, ImageFormatCMYK}) {
    ForEachUnusable(host_, format, [](const char *, REALobject image) {
      FillRect1(image, 1);
      FillRect5(image, 0, 0, 1, 1, 1);
      FillRectRGB1(image, 1, 1, 1);
      FillRectRGBA1(image, 1, 1, 1, 1);
      FillRectRGBc1(image, 1);
      FillRectRGBcA1(image, 1, 1);
      FillRectRandom1(image);
      ClearRect1(image);
      ClearRect5(image, 0, 0, 1, 1);
    });
  }
  for (const auto fill : {ClearRect1, FillRectRandom1}) fill(nullptr);
  FillRect1(nullptr, 1);
  FillRectRGBA1(nullptr, 1, 1, 1, 1);
  FillRectRGBA5(nullptr, 0, 0, 1, 1, 1, 1, 1, 1);
  FillRectRGBc1(nullptr, 1);
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(Fill, AViewOfNegativeSizeIsRefused) {
  const TestImage image = NewImage(4, 4, ImageFormatRGB);
  for (const TestImage &view : {Clip(image, 6, 0, 1, 1), Clip(image, 0, 6, 1, 1)}) {
    ASSERT_TRUE(view.Record().Width < 0 || view.Record().Height < 0);
    FillRect1(view, 1);
    FillRectRGB1(view, 1, 1, 1);
    FillRectRandom1(view);
    ClearRect1(view);
    ClearRect5(view, 0, 0, 4, 4);
  }
  EXPECT_EQ(image.All(), Bytes(48, 7));
}

// --- rows and yields ---

TEST_F(Fill, EachRowIsFetchedOnceWithAYieldBeforeTheFirstAndAfterEach) {
  const TestImage image = NewImage(4, 5, ImageFormatRGBA);
  Log(image);
  FillRect5(image, 1, 2, 2, 2, 1);
  EXPECT_EQ(TakeLog(), "yield 2 yield 3 yield");
  FillRectRGB5(image, 1, 2, 2, 2, 1, 1, 1);
  EXPECT_EQ(TakeLog(), "yield 2 yield 3 yield");
  FillRectRGBA5(image, 1, 2, 2, 2, 1, 1, 1, 1);
  EXPECT_EQ(TakeLog(), "yield 2 yield 3 yield");
  FillRectRandom5(image, 1, 2, 2, 2);
  EXPECT_EQ(TakeLog(), "yield 2 yield 3 yield");
  ClearRect5(image, 1, 2, 2, 2);
  EXPECT_EQ(TakeLog(), "yield 2 yield 3 yield");
  ClearRect1(image);
  EXPECT_EQ(TakeLog(), "yield 0 yield 1 yield 2 yield 3 yield 4 yield");
  image.Record().IsMapping = true;
  FillRect5(image, 1, 2, 2, 2, 1);
  EXPECT_EQ(TakeLog(), "yield 2 yield 3 yield");
}

TEST_F(Fill, AnImageThatIsClosedInAYieldIsLeftAlone) {
  const TestImage image = NewImage(4, 5, ImageFormatRGB);
  for (int32_t closingYield : {1, 3}) {
    image.Record().Yield.YieldTicks = 1;
    int32_t yields = 0;
    onYield_ = [&] {
      if (++yields == closingYield) image.Record().GetRow = nullptr;
    };
    image.Record().GetRow = GetRowLinear;
    image.Set(Bytes(60, 7));
    FillRect1(image, 1);
    Bytes expected(60, 7);
    std::fill_n(expected.begin(), 12 * (closingYield - 1), 1);
    EXPECT_EQ(image.All(), expected);
    EXPECT_EQ(yields, closingYield);
  }
}

TEST_F(Fill, AnImageThatBecomesSmallerInAYieldIsFilledToItsNewEdge) {
  const TestImage image = NewImage(4, 4, ImageFormatG);
  image.Record().Yield.YieldTicks = 1;
  int32_t yields = 0;
  onYield_ = [&] {
    if (++yields != 2) return;
    image.Record().Width = 2;
    image.Record().Height = 3;
  };
  FillRect1(image, 1);
  EXPECT_EQ(image.All(), (Bytes{1, 1, 1, 1, 1, 1, 7, 7, 1, 1, 7, 7, 7, 7, 7, 7}));
}

TEST_F(Fill, AnImageThatIsConstructedAnewInARefusedFormatIsLeftAlone) {
  const TestImage image = NewImage(4, 2, ImageFormatRGB);
  ImageConstructor(image, 4, 2, 14);
  ClearRect5(image, 0, 0, 2, 2);
  EXPECT_EQ(image.All(), Bytes(24, 7));
  const TestImage inAYield = NewImage(4, 2, ImageFormatRGB);
  inAYield.Record().Yield.YieldTicks = 1;
  onYield_ = [&] { ImageConstructor(inAYield, 4, 2, 14); };
  FillRect1(inAYield, 1);
  FillRectRandom1(inAYield);
  EXPECT_EQ(inAYield.All(), Bytes(24, 7));
}

TEST_F(Fill, ARowThatCannotBeHadIsLeftOut) {
  const scenes::StoredImage image(host_, scenes::Kind::Table, 2, 3, ImageFormatG, {.missingRow = 1});
  image.SetBytes(Bytes(6, 7));
  FillRect1(image, 1);
  EXPECT_EQ(image.Bytes(), (Bytes{1, 1, 7, 7, 1, 1}));
  ClearRect1(image);
  EXPECT_EQ(image.Bytes(), (Bytes{0, 0, 7, 7, 0, 0}));
}

// --- FillRect ---

TEST_F(Fill, TheValueIsCutToAByte) {
  const TestImage image = NewImage(3, 2, ImageFormatG);
  FillRect1(image, 300);
  EXPECT_EQ(image.All(), Bytes(6, 44));
  FillRect1(image, -1);
  EXPECT_EQ(image.All(), Bytes(6, 255));
  const TestImage inks = NewImage(1, 1, ImageFormatCMYK);
  FillRect1(inks, 256 + 9);
  EXPECT_EQ(inks.All(), Bytes(4, 9));
}

TEST_F(Fill, AllChannelsAreFilledAndNoFiller) {
  const std::vector<std::pair<int32_t, Bytes>> pixels{
      {ImageFormatRGB, {1, 1, 1}},
      {ImageFormatBGRA, {1, 1, 1, 1}},
      {ImageFormatRGBX, {1, 1, 1, 7}},
      {ImageFormatXBGR, {7, 1, 1, 1}},
      {ImageFormatGA, {1, 1}},
      {ImageFormat2of3, {7, 1, 7}},
      {ImageFormat4of4, {7, 7, 7, 1}},
      {ImageFormatCMYK, {1, 1, 1, 1}},
      {ImageFormatACMYK, {1, 1, 1, 1, 1}},
      {ImageFormatKYMCX, {1, 1, 1, 1, 7}},
      {ImageFormatXCMYK, {7, 1, 1, 1, 1}},
  };
  for (const auto &[format, pixel] : pixels) {
    for (const bool mapped : {false, true}) {
      const TestImage image = NewImage(1, 1, format);
      image.Record().IsMapping = mapped;
      FillRect1(image, 1);
      EXPECT_EQ(image.All(), pixel) << format;
    }
  }
}

TEST_F(Fill, OnlyOneByteOfA16BitSampleIsFilled) {
  const TestImage image = NewImage(3, 1, ImageFormatGray16);
  FillRect1(image, 513);
  EXPECT_EQ(image.All(), (Bytes{1, 7, 1, 7, 1, 7}));
}

TEST_F(Fill, AnImageOfNoFamilyIsNotFilledAndItsRowsAreNotFetched) {
  for (const int32_t format : {ImageFormatBuffer, ImageFormatScaling4}) {
    const TestImage image = NewImage(3, 2, format);
    const Bytes before = image.All();
    Log(image);
    FillRect1(image, 1);
    EXPECT_EQ(TakeLog(), "yield");
    FillRectRandom1(image);
    EXPECT_EQ(TakeLog(), "yield");
    FillRectRGB1(image, 1, 1, 1);
    FillRectRGBA1(image, 1, 1, 1, 1);
    EXPECT_EQ(TakeLog(), "");
    EXPECT_EQ(image.All(), before);
  }
}

TEST_F(Fill, GapsBetweenRowsAreNotFilled) {
  const TestImage image = NewImage(2, 2, ImageFormatRGB, 8);
  FillRect1(image, 1);
  EXPECT_EQ(image.All(), (Bytes{1, 1, 1, 1, 1, 1, 7, 7, 1, 1, 1, 1, 1, 1, 7, 7}));
}

TEST_F(Fill, AClipFillsWhatItShows) {
  const TestImage image = NewImage(4, 3, ImageFormatGA);
  FillRect1(Clip(image, 1, 1, 2, 1), 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 1, 1, 1, 1, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}));
}

TEST_F(Fill, ViewsOfChannelsFillOnlyThose) {
  const TestImage image = NewImage(2, 1, ImageFormatARGB);
  FillRect1(View(image, GreenChannel(image)), 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 1, 7, 7, 7, 1, 7}));
  // This view has no flag of a channel; its family says what it is.
  FillRect1(View(image, RGBChannel(image)), 2);
  EXPECT_EQ(image.All(), (Bytes{7, 2, 2, 2, 7, 2, 2, 2}));
  const TestImage inks = NewImage(1, 1, ImageFormatKYMCA);
  FillRect1(View(inks, CMYKChannel(inks)), 3);
  EXPECT_EQ(inks.All(), (Bytes{3, 3, 3, 3, 7}));
}

TEST_F(Fill, AMirroredViewIsFilledFromTheBottom) {
  const TestImage image = NewImage(1, 3, ImageFormatG);
  FillRect5(View(image, GetMirroredView(image)), 0, 0, 1, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 1}));
}

TEST_F(Fill, TheRunOfPackedPixelsBeginsAtTheLowestOffset) {
  // The flags count as many channels as a pixel has bytes, wherever the channels are.
  const TestImage image = NewImage(3, 2, ImageFormatRGB, 12);
  SetRedOffset(image, 0, 1);
  FillRect5(image, 0, 0, 2, 2, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 1, 1, 1, 1, 1, 1, 7, 7, 7, 7, 7, 7, 1, 1, 1, 1, 1, 1, 7, 7, 7, 7, 7}));
}

TEST_F(Fill, MappedPixelsAreFilledChannelByChannelWhereverTheyAre) {
  const TestImage image = NewImage(3, 1, ImageFormatRGB);
  SetRedOffset(image, 0, 1);
  image.Record().IsMapping = true;
  FillRect5(image, 0, 0, 2, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 1, 1, 7, 1, 1, 7, 7, 7}));
}

TEST_F(Fill, ARunThatHangsOverTheLastPixelEndsWithTheStorage) {
  const TestImage image = NewImage(2, 2, ImageFormatRGB);
  SetRedOffset(image, 0, 2);
  SetGreenOffset(image, 0, 2);
  FillRect1(image, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
}

// --- ClearRect ---

TEST_F(Fill, ClearRectClearsFillerAndTheOtherChannelsOfAView) {
  const TestImage image = NewImage(3, 2, ImageFormatRGBX);
  ClearRect5(image, 1, 0, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 0, 0, 0, 0, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7}));
  ClearRect5(View(image, RedChannel(image)), 2, 1, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 0, 0, 0, 0, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 0, 0, 0, 0}));
}

TEST_F(Fill, ClearRectWorksOnEveryFormat) {
  for (int32_t format = 1; format <= 41; ++format) {
    if (format == 14) continue;
    const TestImage image = NewImage(3, 1, format);
    ClearRect5(image, 1, 0, 1, 1);
    const auto pixelSize = static_cast<size_t>(image.Record().PixelSize);
    Bytes expected(3 * pixelSize, 7);
    std::fill_n(expected.begin() + static_cast<ptrdiff_t>(pixelSize), pixelSize, 0);
    EXPECT_EQ(image.All(), expected) << format;
  }
}

TEST_F(Fill, ClearRectOfARectangleLeavesTheGapsAndWithoutOneItClearsThem) {
  const TestImage image = NewImage(2, 2, ImageFormatG, 4);
  ClearRect5(image, 0, 0, 2, 2);
  EXPECT_EQ(image.All(), (Bytes{0, 0, 7, 7, 0, 0, 7, 7}));
  ClearRect1(image);
  EXPECT_EQ(image.All(), Bytes(8, 0));
}

TEST_F(Fill, ClearRectOfAClipCountsColumnsFromTheParentsLeftEdge) {
  const TestImage image = NewImage(4, 2, ImageFormatG);
  ClearRect5(Clip(image, 2, 1, 2, 1), 0, 0, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 0, 7, 7, 7}));
}

TEST_F(Fill, ClearRectOfAWholeClipClearsWholeRowsOfTheParent) {
  const TestImage image = NewImage(4, 3, ImageFormatG);
  ClearRect1(Clip(image, 2, 1, 1, 1));
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 0, 0, 0, 0, 7, 7, 7, 7}));
}

TEST_F(Fill, ClearRectOfAClipWithoutWidthClearsItsRows) {
  const TestImage image = NewImage(4, 2, ImageFormatG);
  const TestImage clip = Clip(image, 4, 1, 1, 1);
  ASSERT_EQ(clip.Record().Width, 0);
  ClearRect1(clip);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 0, 0, 0, 0}));
}

TEST_F(Fill, RowsThatRunBackwardsHaveNoBytesToClear) {
  const TestImage image = NewImage(2, 2, ImageFormatG, -2);
  image.Record().Buffer += 2;
  ClearRect1(image);
  EXPECT_EQ(image.All(), Bytes(4, 7));
  ClearRect5(image, 0, 0, 1, 1);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 0, 7}));
}

}  // namespace
}  // namespace zvk::levels
