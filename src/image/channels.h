// The nine channels that an image may have, where the record keeps each, and how far their samples reach.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "image/image_record.h"

namespace zvk::image {

struct ChannelField {
  char letter;  // g is gray, K black
  int32_t ImageClassData::*offset;
  uint8_t ImageClassData::*has;
};

inline constexpr std::array kChannels{
    ChannelField{'R', &ImageClassData::RedOffset, &ImageClassData::HasRed},
    ChannelField{'G', &ImageClassData::GreenOffset, &ImageClassData::HasGreen},
    ChannelField{'B', &ImageClassData::BlueOffset, &ImageClassData::HasBlue},
    ChannelField{'g', &ImageClassData::GrayOffset, &ImageClassData::HasGray},
    ChannelField{'A', &ImageClassData::AlphaOffset, &ImageClassData::HasAlpha},
    ChannelField{'C', &ImageClassData::CyanOffset, &ImageClassData::HasCyan},
    ChannelField{'M', &ImageClassData::MagentaOffset, &ImageClassData::HasMagenta},
    ChannelField{'Y', &ImageClassData::YellowOffset, &ImageClassData::HasYellow},
    ChannelField{'K', &ImageClassData::BlackOffset, &ImageClassData::HasBlack},
};

// The lowest and the highest of several offsets of samples, in bytes from the start of a pixel. A clip and the host
// program move offsets, so they may be below zero or beyond PixelSize.
struct OffsetRange {
  int32_t lowest;
  int32_t highest;

  // Bytes from the first to the last sample of a pixel.
  constexpr int64_t Span() const { return int64_t{highest} - lowest + 1; }
};

// The range of one or more offsets.
constexpr OffsetRange RangeOf(std::span<const int32_t> offsets) {
  OffsetRange range{offsets[0], offsets[0]};
  for (const int32_t offset : offsets) range = {std::min(range.lowest, offset), std::max(range.highest, offset)};
  return range;
}

// The range of all nine channels of an image, whether it has them or not, and of the start of the pixel.
inline OffsetRange RangeOfChannels(const ImageClassData &image) {
  OffsetRange range{0, 0};
  for (const ChannelField &channel : kChannels) {
    const int32_t offset = image.*channel.offset;
    range = {std::min(range.lowest, offset), std::max(range.highest, offset)};
  }
  return range;
}

}  // namespace zvk::image
