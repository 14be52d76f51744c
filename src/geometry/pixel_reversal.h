// Runs of packed pixels in reverse order, at the speed of memory: what mirroring and half turns do to a row.
#pragma once

#include <cstdint>

namespace zvk {

// Writes `count` pixels of `pixelSize` bytes (1 to 5, no gaps) in reverse order. The two runs must not overlap.
void ReversePixels(const uint8_t *source, uint8_t *dest, int32_t count, int32_t pixelSize);

// The same where the pixels are.
void ReverseInPlace(uint8_t *pixels, int32_t count, int32_t pixelSize);

}  // namespace zvk
