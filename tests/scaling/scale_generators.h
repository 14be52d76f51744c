// Random images to scale, for the property tests.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "tests/scaling/scale_testing.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"

namespace zvk::scaling {

using scenes::AnyFormat;
using scenes::CheckCases;
using scenes::Random;

// Mostly small; now and then wide enough for several stretches, or high enough for several batches.
inline int32_t AnySide(Random &random) { return random.Side(random.Of({12, 45, 320})); }

// An image of at least the given size: rows tight, padded, of odd length or running backwards; now and then a part of a
// larger image, upside down, with a channel moved, over a table of rows, or like a mapped file.
inline TestImage Image(Random &random, int32_t width, int32_t height, int32_t format) {
  const int32_t left = random.Between(0, 3), top = random.Between(0, 3);
  const int32_t storedWidth = width + left + random.Between(0, 3), storedHeight = height + top + random.Between(0, 3);
  ImageClassData described{};
  InitImageClassData(&described, 1, 1, format);
  const int32_t rowSize = storedWidth * described.PixelSize + random.Between(0, 1) * random.Between(0, 70);
  TestImage image(storedWidth, storedHeight, format, random.Between(0, 2) == 0 ? -rowSize : rowSize);
  image.FillNoise(random.Bits());
  ImageClassData &record = image.Record();
  if (random.Between(0, 3) == 0) {
    for (int32_t ImageClassData::*offset :
         {&ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset,
          &ImageClassData::GrayOffset, &ImageClassData::AlphaOffset}) {
      // A wide sample needs two bytes.
      if (record.BitsPerComponent == 8) record.*offset = random.Between(0, record.PixelSize - 1);
    }
  }
  const bool isPart = random.Between(0, 1) == 0;
  if (isPart) image.Clip(left, top, width, height);
  if (random.Between(0, 3) == 0) image.Mirror();
  if (random.Between(0, 4) == 0) {
    record.IsMapping = true;
  } else if (!isPart && random.Between(0, 4) == 0) {
    image.UseRowTable();
  }
  return image;
}

inline TestImage TempFor(Random &random, const TestImage &dest, const TestImage &source, int32_t width) {
  const auto pair = naive::PairFor(source.Record(), dest.Record());
  return Image(random, width, source.Record().Height, pair ? pair->tempFormat : ImageFormatScaling1);
}

// Formats of a source and a destination that the resampler knows, of every pair.
inline std::pair<int32_t, int32_t> PairOfFormats(Random &random) {
  const std::vector<int32_t> colours = {1, 2, 4, 6, 9, 10}, grays = {11, 12, 13, 16, 20}, inks = {23, 24, 25, 30, 32};
  const std::vector<std::pair<std::vector<int32_t>, std::vector<int32_t>>> pairs = {
      {colours, colours}, {colours, grays}, {grays, colours}, {grays, grays},
      {grays, inks},      {inks, inks},     {inks, grays},    {{41}, {41}}};
  const auto &[sources, dests] = pairs[static_cast<size_t>(random.Between(0, static_cast<int32_t>(pairs.size()) - 1))];
  return {random.Of(sources), random.Of(dests)};
}

}  // namespace zvk::scaling
