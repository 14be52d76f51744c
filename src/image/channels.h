// The nine channels that an image may have, and where the record keeps each.
#pragma once

#include <array>
#include <cstdint>

#include "image/image_record.h"

namespace zvk {

struct Channel {
  char letter;  // g is gray, K black
  int32_t ImageClassData::*offset;
  uint8_t ImageClassData::*has;
};

inline constexpr std::array kChannels{
    Channel{'R', &ImageClassData::RedOffset, &ImageClassData::HasRed},
    Channel{'G', &ImageClassData::GreenOffset, &ImageClassData::HasGreen},
    Channel{'B', &ImageClassData::BlueOffset, &ImageClassData::HasBlue},
    Channel{'g', &ImageClassData::GrayOffset, &ImageClassData::HasGray},
    Channel{'A', &ImageClassData::AlphaOffset, &ImageClassData::HasAlpha},
    Channel{'C', &ImageClassData::CyanOffset, &ImageClassData::HasCyan},
    Channel{'M', &ImageClassData::MagentaOffset, &ImageClassData::HasMagenta},
    Channel{'Y', &ImageClassData::YellowOffset, &ImageClassData::HasYellow},
    Channel{'K', &ImageClassData::BlackOffset, &ImageClassData::HasBlack},
};

}  // namespace zvk
