// A colour blended over a rectangle of an image, or over all of it, in place.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::levels {

// Handlers: each colour sample becomes (old x (255 - alpha) + colour x alpha) x 257 / 65536, rounded down: one less
// than the exact mix where that is a whole number above 0. A gray image takes the colour's gray, (77 red + 151 green +
// 28 blue) / 256. The alpha channel keeps its values. Nothing is clamped: values outside 0 to 255 wrap in 32 bits, and
// the low byte is stored. True, also for an empty rectangle; false, with nothing changed, for an image that is not
// Valid, for images other than RGB and gray, and where pixels are meant that the image does not have. Yields after each
// row, and not before.
uint8_t FillRectApplyRGBA1(REALobject instance, int32_t red, int32_t green, int32_t blue, int32_t alpha);
uint8_t FillRectApplyRGBA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t red,
                           int32_t green, int32_t blue, int32_t alpha);
uint8_t FillRectApplyRGBcA1(REALobject instance, uint32_t colour, int32_t alpha);
uint8_t FillRectApplyRGBcA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t colour,
                            int32_t alpha);

}  // namespace zvk::levels
