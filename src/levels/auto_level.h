// The tonal range of an RGB image, stretched to black and white.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::levels {

// Handlers: a histogram of the rectangle's brightness gives a low and a high level, past half a percent of the pixels
// at either end; then each of red, green and blue is 0 below low, 255 above high, and in between its share of 255,
// rounded down. Alpha keeps its values. True when that was done; false for 16-bit samples, images that are not RGB or
// not usable, and an empty rectangle. A uniform image comes out with both levels just below its brightness, or both at
// 0. Yield before the first and after each row that is counted, and not while the levels are applied.
uint8_t AutoLevel1(REALobject instance);
uint8_t AutoLevel5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);

}  // namespace zvk::levels
