// Formats as chance has them.
#pragma once

#include <cstdint>
#include <vector>

#include "tests/scenes/random.h"

namespace scenes {

// The formats that have channels of eight bits.
inline const std::vector<int32_t> kFamilyFormats = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 15, 16,
                                                    17, 18, 19, 20, 21, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32};

// All 40 alike.
int32_t AnyFormat(Random &random);
// Mostly those of gray and RGB images.
int32_t AnyGrayOrRGBFormat(Random &random);
// Now and then one without channels of eight bits.
int32_t AnyLikelyFormat(Random &random);
// Often that of another image, or a common one.
int32_t AnyFormatBeside(Random &random, int32_t format);

// Bytes of a pixel.
int32_t PixelSizeOf(int32_t format);

}  // namespace scenes
