// Blocks of packed pixels with rows and columns exchanged: what a quarter turn does.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zvk::geometry {

// The pixels of a block as they are read and as they are to be written: pixel x of source row y becomes pixel y of dest
// row x. The rows may lie anywhere, but none that is read may overlap one that is written.
struct PixelBlock {
  const uint8_t *const *sourceRows;  // addresses of their first pixels in the block, `height` of them
  uint8_t *const *destRows;          // likewise, `width` of them
  int32_t width;                     // pixels of a source row
  int32_t height;                    // pixels of a dest row
};

// Pixels have no gaps and `pixelSize` bytes, 1 to 5.
void TransposePixels(const PixelBlock &block, int32_t pixelSize);

}  // namespace zvk::geometry
