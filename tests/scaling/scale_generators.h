// Random images to scale, for the property tests.
#pragma once

#include <rapidcheck/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "tests/scaling/scale_testing.h"

namespace zvk::scaling {

inline int32_t Between(int32_t first, int32_t last) { return *rc::gen::inRange<int32_t>(first, last + 1); }

inline int32_t Format() {
  const int32_t format = Between(1, 40);
  return format == 14 ? 41 : format;
}

// Mostly small; now and then wide enough for several stretches, or high enough for several batches.
inline int32_t Side() {
  return *rc::gen::oneOf(rc::gen::inRange(1, 12), rc::gen::inRange(1, 45), rc::gen::inRange(1, 320));
}

// An image of at least the given size: rows tight, padded, of odd length or running backwards; now and then a part of a
// larger image, upside down, with a channel moved, over a table of rows, or like a mapped file.
inline TestImage Image(int32_t width, int32_t height, int32_t format) {
  const int32_t left = Between(0, 3), top = Between(0, 3);
  const int32_t storedWidth = width + left + Between(0, 3), storedHeight = height + top + Between(0, 3);
  ImageClassData described{};
  InitImageClassData(&described, 1, 1, format);
  const int32_t rowSize = storedWidth * described.PixelSize + Between(0, 1) * Between(0, 70);
  TestImage image(storedWidth, storedHeight, format, Between(0, 2) == 0 ? -rowSize : rowSize);
  image.FillNoise(static_cast<uint32_t>(Between(0, 1000000)));
  ImageClassData &record = image.Record();
  if (Between(0, 3) == 0) {
    for (int32_t ImageClassData::*offset :
         {&ImageClassData::RedOffset, &ImageClassData::GreenOffset, &ImageClassData::BlueOffset,
          &ImageClassData::GrayOffset, &ImageClassData::AlphaOffset}) {
      // A wide sample needs two bytes.
      if (record.BitsPerComponent == 8) record.*offset = Between(0, record.PixelSize - 1);
    }
  }
  const bool isPart = Between(0, 1) == 0;
  if (isPart) image.Clip(left, top, width, height);
  if (Between(0, 3) == 0) image.Mirror();
  if (Between(0, 4) == 0) {
    record.IsMapping = true;
  } else if (!isPart && Between(0, 4) == 0) {
    image.UseRowTable();
  }
  return image;
}

inline TestImage TempFor(const TestImage &dest, const TestImage &source, int32_t width) {
  const auto pair = naive::PairFor(source.Record(), dest.Record());
  return Image(width, source.Record().Height, pair ? pair->tempFormat : ImageFormatScaling1);
}

// Formats of a source and a destination that the resampler knows, of every pair.
inline std::pair<int32_t, int32_t> PairOfFormats() {
  const std::vector<int32_t> colours = {1, 2, 4, 6, 9, 10}, grays = {11, 12, 13, 16, 20}, inks = {23, 24, 25, 30, 32};
  const auto pair = *rc::gen::elementOf(
      std::vector<std::pair<std::vector<int32_t>, std::vector<int32_t>>>{{colours, colours},
                                                                         {colours, grays},
                                                                         {grays, colours},
                                                                         {grays, grays},
                                                                         {grays, inks},
                                                                         {inks, inks},
                                                                         {inks, grays},
                                                                         {{41}, {41}}});
  return {*rc::gen::elementOf(pair.first), *rc::gen::elementOf(pair.second)};
}

}  // namespace zvk::scaling
