// The integer rule by which red, green and blue become gray.
#pragma once

#include <cstdint>

#include "host/layers.h"

namespace zvk::pixels {

// Gray of three samples, each 0 to 255: weights 77, 151 and 28 of 256, rounded down. White stays white.
constexpr int32_t Luma(int32_t red, int32_t green, int32_t blue) { return (77 * red + 151 * green + 28 * blue) >> 8; }

}  // namespace zvk::pixels
