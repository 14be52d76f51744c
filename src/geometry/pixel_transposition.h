// Blocks of packed pixels with rows and columns exchanged: what a quarter turn does.
#pragma once

#include <cstddef>
#include <cstdint>

#include "pixels/dispatch.h"

namespace zvk::geometry {

// The pixels of a block as they are read and as they are to be written: pixel x of source row y becomes pixel y of dest
// row x. The rows may lie anywhere, but none that is read may overlap one that is written.
struct PixelBlock {
  const uint8_t *const *sourceRows;  // addresses of their first pixels in the block, `height` of them
  uint8_t *const *destRows;          // likewise, `width` of them
  int32_t width;                     // pixels of a source row
  int32_t height;                    // pixels of a dest row
};

using TranspositionKernel = Kernel<void(const PixelBlock &block)>;

// For pixels without gaps of `pixelSize` bytes, 1 to 5.
const TranspositionKernel &TranspositionOf(int32_t pixelSize);

}  // namespace zvk::geometry
