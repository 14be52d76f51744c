#include "compositing/packed_blend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "tests/scenes/random.h"
#include "tests/support/fence.h"

namespace zvk::compositing {
namespace {

using Bytes = std::vector<uint8_t>;

WorkingPixel Working(const std::vector<int32_t> &offsets, int32_t pixelSize) {
  const auto working = WorkingPixel::Of(offsets, pixelSize);
  EXPECT_TRUE(working);
  return working.value_or(WorkingPixel());
}

// Channels of a pixel that a mover makes of one pixel.
Bytes Moved(const SampleMover &mover, const Bytes &source, Bytes dest) {
  mover(source.data(), dest.data(), 1);
  return dest;
}

TEST(WorkingPixel, HoldsTheChannelsInTheOrderInWhichTheyLie) {
  const WorkingPixel bgra = Working({2, 1, 0, 3}, 4);
  EXPECT_EQ(bgra.Size(), 4);
  EXPECT_TRUE(bgra.IsWhole());
  EXPECT_EQ(bgra.First(), 0);
  EXPECT_EQ((std::vector{bgra.At(0), bgra.At(1), bgra.At(2), bgra.At(3)}), (std::vector{2, 1, 0, 3}));
  const WorkingPixel clip = Working({41, 42, 43}, 4);  // XRGB in a clip
  EXPECT_EQ(clip.Size(), 3);
  EXPECT_FALSE(clip.IsWhole());
  EXPECT_EQ(clip.First(), 41);
  EXPECT_EQ((std::vector{clip.At(0), clip.At(1), clip.At(2)}), (std::vector{0, 1, 2}));
}

TEST(WorkingPixel, IsNotThereWhereTheOrderOfWritingCounts) {
  EXPECT_FALSE(WorkingPixel::Of(std::array{0, 1, 1}, 3));
  EXPECT_FALSE(WorkingPixel::Of(std::array{0, 1, 3}, 3));
  EXPECT_FALSE(WorkingPixel::Of(std::array{0, 2}, 2));
  EXPECT_TRUE(WorkingPixel::Of(std::array{1, 2}, 2));
}

TEST(WorkingPixel, ReadsAndWritesItsChannelsAlone) {
  const WorkingPixel working = Working({3, 2, 1}, 4);  // XBGR
  EXPECT_EQ(Moved(working.ReadEach(), {9, 30, 20, 10}, {0, 0, 0}), (Bytes{30, 20, 10}));
  EXPECT_EQ(Moved(working.Write(), {30, 20, 10}, {9, 9, 9, 9}), (Bytes{9, 30, 20, 10}));
  EXPECT_EQ(Moved(Working({1, 2, 3, 0}, 4).ReadLast(), {40, 1, 2, 3}, {0, 0, 0, 0}), (Bytes{40, 40, 40, 40}));
}

// Pixels of red, green and blue, or of gray at the first offset, without alpha.
PixelLayout Pixels(ColourFamily family, int32_t pixelSize, const std::array<int32_t, 3> &offsets) {
  return {.family = family,
          .hasAlpha = false,
          .hasWideSamples = false,
          .pixelSize = pixelSize,
          .offsets = {offsets[0], offsets[1], offsets[2]},
          .redGreenBlue = offsets};
}

PackedOperand Operand(const PixelLayout &image, const PixelLayout &working) {
  return {image.pixelSize, *PixelConversion::Between(image, working, {})};
}

Bytes TileOf(PackedOperand &operand, const Bytes &pixels, int32_t width, int32_t size) {
  const uint8_t *tile = operand.TileOf(pixels.data(), width);
  return {tile, tile + static_cast<ptrdiff_t>(width) * size};
}

TEST(PackedOperand, ASingleColourFillsTheTile) {
  PackedOperand operand(Working({2, 1, 0}, 3), Samples<3>{1, 2, 3});
  EXPECT_EQ(operand.PixelSize(), 0);
  const uint8_t *tile = operand.TileOf(nullptr, kTilePixels);
  for (int32_t i = 0; i < 3 * kTilePixels; ++i) ASSERT_EQ(tile[i], 3 - i % 3);
}

TEST(PackedOperand, AnImageOfTheSameLayoutIsUsedAsItIs) {
  PackedOperand operand = Operand(Pixels(ColourFamily::RGB, 3, {5, 4, 3}), Pixels(ColourFamily::RGB, 3, {2, 1, 0}));
  const Bytes pixels(9);
  EXPECT_EQ(operand.TileOf(pixels.data(), 2), pixels.data() + 3);
  EXPECT_EQ(operand.PixelSize(), 3);
}

TEST(PackedOperand, WhatAnImageLacksIs255) {
  PackedOperand operand = Operand(Pixels(ColourFamily::RGB, 3, {2, 1, 0}), Pixels(ColourFamily::RGB, 4, {0, 1, 2}));
  EXPECT_EQ(TileOf(operand, {1, 2, 3, 4, 5, 6}, 2, 4), (Bytes{3, 2, 1, 255, 6, 5, 4, 255}));
  PackedOperand gray = Operand(Pixels(ColourFamily::RGB, 3, {0, 1, 2}), Pixels(ColourFamily::Gray, 2, {0, 0, 0}));
  EXPECT_EQ(TileOf(gray, {255, 255, 255, 255, 0, 0}, 2, 2), (Bytes{255, 255, 76, 255}));
}

TEST(PackedOperand, TheMeanIsRoundedDownForAllSums) {
  // Every sum of three samples.
  Bytes pixels;
  std::vector<int> sums;
  for (int32_t sum = 0; sum <= 765; ++sum) {
    const int32_t red = std::min(sum, 255), green = std::min(sum - red, 255);
    for (const int32_t sample : {red, green, sum - red - green}) pixels.push_back(static_cast<uint8_t>(sample));
    sums.push_back(sum);
  }
  const WorkingPixel three = Working({0, 1, 2}, 4), one = Working({0}, 1);
  PackedOperand colours(3, MeanConversion(3, {0, 1, 2}, three)), gray(3, MeanConversion(3, {2, 0, 1}, one));
  const Bytes ofColours = TileOf(colours, pixels, 766, 3), ofGray = TileOf(gray, pixels, 766, 1);
  for (size_t i = 0; i < sums.size(); ++i) {
    ASSERT_EQ(ofGray[i], sums[i] / 3);
    ASSERT_EQ((Bytes{ofColours[3 * i], ofColours[3 * i + 1], ofColours[3 * i + 2]}), Bytes(3, ofGray[i]));
  }
}

TEST(PackedBlend, RowsOfAnyLengthKeepFillerAndStayInside) {
  scenes::Random random(2);
  for (int32_t width = 1; width < 2100; width = width < 40 ? width + 1 : width * 3 / 2) {
    // RGBX through a gray mask; the last pixel has no filler any more.
    fence::Block dest(static_cast<size_t>(4 * width - 1)), source(static_cast<size_t>(3 * width));
    fence::Block mask(static_cast<size_t>(width));
    for (fence::Block *block : {&dest, &source, &mask}) scenes::FillNoise(block->Data(), block->Size(), random);
    Bytes expected(dest.Data(), dest.Data() + dest.Size());
    for (int32_t x = 0; x < width; ++x) {
      for (int32_t i = 0; i < 3; ++i) {
        uint8_t &sample = expected[static_cast<size_t>(4 * x + i)];
        const int32_t keep = mask.Data()[x];
        sample = static_cast<uint8_t>(((255 - keep) * source.Data()[3 * x + i] + sample * keep) / 255);
      }
    }
    const WorkingPixel working = Working({0, 1, 2}, 4);
    const PixelLayout colours = Pixels(ColourFamily::RGB, 3, {0, 1, 2});
    PackedBlend<Interpolation> blend(working, {}, Operand(colours, colours),
                                     Operand(Pixels(ColourFamily::Gray, 1, {0, 0, 0}), colours));
    blend.Row(dest.Data(), source.Data(), mask.Data(), width);
    ASSERT_EQ(Bytes(dest.Data(), dest.Data() + dest.Size()), expected) << width;
  }
}

}  // namespace
}  // namespace zvk::compositing
