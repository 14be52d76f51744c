// Pixels of one image into another one of any format, without scaling.
#pragma once

#include <cstdint>

#include "abi/host_layouts.h"

namespace zvk::compositing {

// Handlers: copy a rectangle of `source` into the image, converting between gray, RGB and CMYK and between 8 and 16
// bits of gray where a conversion is defined. Positions and sizes are in pixels. A negative size extends to the other
// side of the destination's corner, what hangs over either image is cut. Images that are packed alike are copied in
// blocks, each of them longer than the rectangle by destX pixels, as far as the storage of both goes. True if rows have
// been copied, or would have been but for sums that have wrapped; false for an image (nil, too) that is not usable, an
// empty rectangle, and without a conversion between the families.
uint8_t rbCopyPixels8(REALobject instance, REALobject source, int32_t destX, int32_t destY, int32_t destWidth,
                      int32_t destHeight, int32_t sourceX, int32_t sourceY);
// The source from its corner.
uint8_t rbCopyPixels6(REALobject instance, REALobject source, int32_t destX, int32_t destY, int32_t destWidth,
                      int32_t destHeight);
// The source from its corner into the whole image.
uint8_t rbCopyPixels2(REALobject instance, REALobject source);

}  // namespace zvk::compositing
