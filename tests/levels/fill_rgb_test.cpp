// The fills with a colour of levels/fill.h.
#include <gtest/gtest.h>

#include "levels/fill.h"
#include "tests/levels/in_place_testing.h"

namespace zvk::levels {
namespace {

using namespace in_place_testing;

using FillRGB = InPlaceTest;

TEST_F(FillRGB, EachColourGoesToItsChannel) {
  const std::vector<std::pair<int32_t, Bytes>> pixels{
      {ImageFormatRGB, {1, 2, 3}},     {ImageFormatBGR, {3, 2, 1}},     {ImageFormatRGBX, {1, 2, 3, 7}},
      {ImageFormatXBGR, {7, 3, 2, 1}}, {ImageFormatARGB, {7, 1, 2, 3}}, {ImageFormatBGRA, {3, 2, 1, 7}},
  };
  for (const auto &[format, pixel] : pixels) {
    const TestImage image = NewImage(1, 1, format);
    FillRectRGB1(image, 1, 2, 3);
    EXPECT_EQ(image.All(), pixel) << format;
  }
}

TEST_F(FillRGB, TheArgumentsAreCutToBytes) {
  const TestImage image = NewImage(1, 1, ImageFormatRGBA);
  FillRectRGB1(image, 256, -1, 300);
  EXPECT_EQ(image.All(), (Bytes{0, 255, 44, 7}));
  FillRectRGBA1(image, -256, 511, 1000, -2);
  EXPECT_EQ(image.All(), (Bytes{0, 255, 232, 254}));
}

TEST_F(FillRGB, OnlyTheRectangleIsFilled) {
  const TestImage image = NewImage(3, 2, ImageFormatRGB, 10);
  FillRectRGB5(image, 1, 1, 5, 5, 1, 2, 3);
  EXPECT_EQ(image.All(), (Bytes{7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 7, 1, 2, 3, 1, 2, 3, 7}));
}

TEST_F(FillRGB, AlphaIsWrittenOnlyWhereItIsGiven) {
  const TestImage image = NewImage(2, 1, ImageFormatARGB);
  FillRectRGBA5(image, 0, 0, 1, 1, 1, 2, 3, 4);
  EXPECT_EQ(image.All(), (Bytes{4, 1, 2, 3, 7, 7, 7, 7}));
  FillRectRGB5(image, 0, 0, 2, 1, 5, 6, 8);
  EXPECT_EQ(image.All(), (Bytes{4, 5, 6, 8, 7, 5, 6, 8}));
}

TEST_F(FillRGB, AlphaIsDroppedForAnImageWithoutAlpha) {
  const TestImage image = NewImage(3, 1, ImageFormatRGBX);
  FillRectRGBA5(image, -1, 0, 3, 1, 1, 2, 3, 4);
  EXPECT_EQ(image.All(), (Bytes{1, 2, 3, 7, 1, 2, 3, 7, 7, 7, 7, 7}));
}

TEST_F(FillRGB, ImagesOfOtherFamiliesAreLeftAloneWithoutAYield) {
  for (const int32_t format : {ImageFormatG, ImageFormatGA, ImageFormatGray16, ImageFormatCMYK, ImageFormatCMYKA}) {
    const TestImage image = NewImage(2, 2, format);
    const Bytes before = image.All();
    Log(image);
    FillRectRGB1(image, 1, 2, 3);
    FillRectRGBA1(image, 1, 2, 3, 4);
    FillRectRGBc1(image, 0x010203);
    FillRectRGBcA1(image, 0x010203, 4);
    EXPECT_EQ(image.All(), before) << format;
    EXPECT_EQ(TakeLog(), "") << format;
  }
}

TEST_F(FillRGB, TheFlagsOfTheThreeColoursDecide) {
  const TestImage image = NewImage(1, 1, ImageFormatRGBA);
  // A view of the colours alone has none of them.
  FillRectRGB1(View(image, RGBChannel(image)), 1, 2, 3);
  FillRectRGBA1(View(image, RGBChannel(image)), 1, 2, 3, 4);
  EXPECT_EQ(image.All(), Bytes(4, 7));
  for (uint8_t ImageClassData::*flag : {&ImageClassData::HasRed, &ImageClassData::HasGreen, &ImageClassData::HasBlue}) {
    image.Record().*flag = false;
    FillRectRGB1(image, 1, 2, 3);
    FillRectRGBA1(image, 1, 2, 3, 4);
    image.Record().*flag = true;
  }
  EXPECT_EQ(image.All(), Bytes(4, 7));
  image.Record().IsRGB = false;
  FillRectRGB1(image, 1, 2, 3);
  EXPECT_EQ(image.All(), (Bytes{1, 2, 3, 7}));
}

TEST_F(FillRGB, AHostColourIsItsThreeLowBytes) {
  const TestImage image = NewImage(2, 1, ImageFormatRGBA);
  FillRectRGBc1(image, 0xFF010203);
  EXPECT_EQ(image.All(), (Bytes{1, 2, 3, 7, 1, 2, 3, 7}));
  FillRectRGBcA1(image, 0x99A0B0C0, 511);
  EXPECT_EQ(image.All(), (Bytes{0xA0, 0xB0, 0xC0, 255, 0xA0, 0xB0, 0xC0, 255}));
  FillRectRGBc5(image, 1, 0, 1, 1, 0x040506);
  EXPECT_EQ(image.All(), (Bytes{0xA0, 0xB0, 0xC0, 255, 4, 5, 6, 255}));
  FillRectRGBcA5(image, 0, 0, 1, 1, 0x010203, 8);
  EXPECT_EQ(image.All(), (Bytes{1, 2, 3, 8, 4, 5, 6, 255}));
}

TEST_F(FillRGB, WhereChannelsShareAByteTheLastOneWritten) {
  const TestImage image = NewImage(20, 1, ImageFormatRGBA);
  SetGreenOffset(image, 0, 0);
  SetAlphaOffset(image, 0, 2);
  FillRectRGBA1(image, 1, 2, 3, 4);
  Bytes expected;
  for (int32_t x = 0; x < 20; ++x) expected.insert(expected.end(), {2, 7, 4, 7});
  EXPECT_EQ(image.All(), expected);
}

TEST_F(FillRGB, AChannelThatWasMovedOutOfItsClipIsOverwrittenFurtherOn) {
  const TestImage image = NewImage(4, 1, ImageFormatRGB);
  const TestImage clip = Clip(image, 2, 0, 2, 1);
  SetRedOffset(clip, 0, 1);  // columns 0 and 1 of the parent, in the green byte
  FillRectRGB1(clip, 1, 2, 3);
  EXPECT_EQ(image.All(), (Bytes{7, 1, 7, 7, 1, 7, 7, 2, 3, 7, 2, 3}));
}

TEST_F(FillRGB, LongRowsAreFilledToTheirEnd) {
  for (const int32_t width : {63, 64, 65, 1000}) {
    const TestImage image = NewImage(width, 2, ImageFormatBGR);
    FillRectRGB5(image, 1, 1, width - 2, 1, 1, 2, 3);
    Bytes expected(static_cast<size_t>(width) * 6, 7);
    for (int32_t x = 1; x < width - 1; ++x) {
      for (int32_t c = 0; c < 3; ++c)
        expected[static_cast<size_t>(width * 3 + x * 3 + c)] = static_cast<uint8_t>(3 - c);
    }
    EXPECT_EQ(image.All(), expected) << width;
  }
}

}  // namespace
}  // namespace zvk::levels
