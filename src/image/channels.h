// The nine channels that an image may have, and where the record keeps each.
#pragma once

#include <array>
#include <cstdint>

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

}  // namespace zvk::image
