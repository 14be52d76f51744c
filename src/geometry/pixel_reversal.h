// Runs of packed pixels in reverse order, at the speed of memory: what mirroring and half turns do to a row.
#pragma once

#include <cstdint>

#include "pixels/dispatch.h"

namespace zvk::geometry {

// Bytes of the largest pixel that has channels.
inline constexpr int32_t kLargestPixel = 5;

// Writes `count` pixels without gaps in reverse order. The two runs must not overlap.
using ReversalKernel = Kernel<void(const uint8_t *source, uint8_t *dest, int32_t count)>;

// For pixels of `pixelSize` bytes, 1 to kLargestPixel.
const ReversalKernel &ReversalOf(int32_t pixelSize);

}  // namespace zvk::geometry
