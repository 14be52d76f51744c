#include "pixels/conversion.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "image/image_formats.h"

namespace zvk::pixels {
namespace {

using Bytes = std::vector<uint8_t>;

PixelLayout LayoutOfFormat(int32_t format) {
  ImageClassData record{};
  EXPECT_TRUE(InitImageClassData(&record, 1, 1, format));
  return *PixelLayoutOf<ColourFamily::Gray, ColourFamily::RGB, ColourFamily::CMYK>(record);
}

// What becomes of one pixel, laid over the old bytes of the destination's; empty where nothing is defined.
Bytes Converted(int32_t sourceFormat, const Bytes &pixel, int32_t destFormat, Bytes dest,
                const ConversionRules &rules) {
  const auto conversion = PixelConversion::Between(LayoutOfFormat(sourceFormat), LayoutOfFormat(destFormat), rules);
  if (!conversion) return {};
  conversion->ConvertRow(pixel.data(), dest.data(), 1);
  return dest;
}

std::optional<int32_t> ShiftBetween(const PixelLayout &source, const PixelLayout &dest) {
  return PixelConversion::Between(source, dest, {})->ShiftOfCopy();
}

TEST(PixelLayoutOf, TakesTheFirstFamilyOfTheListThatTheImageSaysItHas) {
  ImageClassData record{};
  ASSERT_TRUE(InitImageClassData(&record, 1, 1, ImageFormatRGBA));
  record.IsGray = 1;
  record.GrayOffset = 2;
  const auto gray = PixelLayoutOf<ColourFamily::Gray, ColourFamily::RGB>(record);
  ASSERT_TRUE(gray);
  EXPECT_EQ(gray->family, ColourFamily::Gray);
  EXPECT_EQ(gray->offsets[0], 2);
  EXPECT_EQ(gray->Alpha(), 3);
  EXPECT_EQ(gray->ChannelCount(), 2U);
  const auto colours = PixelLayoutOf<ColourFamily::RGB, ColourFamily::Gray>(record);
  ASSERT_TRUE(colours);
  EXPECT_EQ(colours->family, ColourFamily::RGB);
  EXPECT_EQ(colours->ChannelCount(), 4U);
  EXPECT_EQ((PixelLayoutOf<ColourFamily::CMYK>(record)).has_value(), false);
}

TEST(PixelConversion, IsNotDefinedBetweenRGBAndCMYK) {
  EXPECT_EQ(Converted(ImageFormatRGB, {1, 2, 3}, ImageFormatCMYK, {9, 9, 9, 9}, {}), Bytes{});
  EXPECT_EQ(Converted(ImageFormatCMYKA, {1, 2, 3, 4, 5}, ImageFormatRGBA, {9, 9, 9, 9}, {}), Bytes{});
}

TEST(PixelConversion, GrayBecomesEveryInkOrTheBlackOneAlone) {
  EXPECT_EQ(Converted(ImageFormatG, {5}, ImageFormatCMYKX, {9, 9, 9, 9, 9}, {}), (Bytes{5, 5, 5, 5, 9}));
  EXPECT_EQ(Converted(ImageFormatG, {5}, ImageFormatCMYKX, {9, 9, 9, 9, 9}, {.grayIsBlackAlone = true}),
            (Bytes{0, 0, 0, 5, 9}));
}

TEST(PixelConversion, AlphaIsMovedIfBothHaveItAndComplementedOnWish) {
  EXPECT_EQ(Converted(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatABGR, {9, 9, 9, 9}, {}), (Bytes{4, 3, 2, 1}));
  EXPECT_EQ(Converted(ImageFormatRGBA, {1, 2, 3, 4}, ImageFormatABGR, {9, 9, 9, 9}, {.complementsAlpha = true}),
            (Bytes{251, 3, 2, 1}));
  EXPECT_EQ(Converted(ImageFormatRGB, {1, 2, 3}, ImageFormatABGR, {9, 9, 9, 9}, {.complementsAlpha = true}),
            (Bytes{9, 3, 2, 1}));
}

TEST(PixelConversion, TheGrayOfInksIsTheBlackOneOrThatOfTheBytesAtTheOffsetsOfTheColours) {
  EXPECT_EQ(Converted(ImageFormatCMYKA, {1, 2, 3, 4, 5}, ImageFormatGA, {9, 9}, {}), (Bytes{4, 5}));
  EXPECT_EQ(Converted(ImageFormatCMYKA, {1, 2, 3, 4, 5}, ImageFormatGA, {9, 9}, {.inksWithAlphaAreColours = true}),
            (Bytes{1, 5}));
  EXPECT_EQ(Converted(ImageFormatCMYKA, {1, 2, 3, 4, 5}, ImageFormatG, {9}, {.inksWithAlphaAreColours = true}),
            Bytes{4});
}

TEST(PixelConversion, WideSamplesAreKeptOrCountByTheirFirstByte) {
  EXPECT_EQ(Converted(ImageFormatGray16, {1, 2}, ImageFormatGray16, {9, 9}, {}), (Bytes{1, 9}));
  EXPECT_EQ(Converted(ImageFormatGray16, {1, 2}, ImageFormatGray16, {9, 9}, {.keepsWideSamples = true}), (Bytes{1, 2}));
  EXPECT_EQ(Converted(ImageFormatG, {7}, ImageFormatGray16, {9, 9}, {.keepsWideSamples = true}), (Bytes{7, 7}));
  EXPECT_EQ(Converted(ImageFormatGray16, {1, 2}, ImageFormatG, {9}, {.keepsWideSamples = true}), Bytes{1});
}

TEST(PixelConversion, InOrderGoesPixelAfterPixelWhereRowsOverlap) {
  for (const bool alwaysInOrder : {false, true}) {
    const auto conversion = PixelConversion::Between(LayoutOfFormat(ImageFormatG), LayoutOfFormat(ImageFormatG),
                                                     {.alwaysInOrder = alwaysInOrder});
    Bytes row{1, 2, 3, 4};
    conversion->ConvertRow(row.data(), row.data() + 1, 3);
    EXPECT_EQ(row, (Bytes{1, 1, 1, 1}));
  }
}

TEST(PixelConversion, TellsHowFarBehindTheirPlaceSamplesLieThatAreCopiedWhole) {
  const PixelLayout colours = LayoutOfFormat(ImageFormatRGB);
  PixelLayout clipped = colours;
  for (int32_t &offset : clipped.offsets) offset += 6;
  EXPECT_EQ(ShiftBetween(colours, colours), 0);
  EXPECT_EQ(ShiftBetween(clipped, colours), 6);
  EXPECT_EQ(ShiftBetween(LayoutOfFormat(ImageFormatBGR), colours), std::nullopt);
  EXPECT_EQ(ShiftBetween(LayoutOfFormat(ImageFormatRGBX), LayoutOfFormat(ImageFormatRGBX)), std::nullopt);
  EXPECT_EQ(ShiftBetween(colours, LayoutOfFormat(ImageFormatG)), std::nullopt);
}

}  // namespace
}  // namespace zvk::pixels
