// The same arithmetic on the samples of every pixel along a row, as fast as memory: what a channel gets depends on the
// channel alone, so a pixel's worth of coefficients is repeated along the row, and bytes between the samples pass
// through unchanged.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/layers.h"

namespace zvk::pixels {

// Pixels of one row. `first` is the start of the first one; no pixel is meant by a count below 1.
struct PixelRow {
  uint8_t *first;
  ptrdiff_t pixelSize;
  ptrdiff_t count;
};

// All of these go pixel after pixel, and within a pixel in the order of the offsets (bytes from the pixel's start, at
// most five), which counts where the host program has put two samples into one place. No byte but the samples changes.

// Writes values[i] at offsets[i].
void PaintSamples(const PixelRow &row, std::span<const int32_t> offsets, std::span<const uint8_t> values);

// Turns each sample into 255 - sample.
void ComplementSamples(const PixelRow &row, std::span<const int32_t> offsets);

// Turns each sample at offsets[i] into the low byte of (sample x weight + addends[i]) / 65536, in unsigned arithmetic
// of 32 bits that wraps.
void BlendSamples(const PixelRow &row, std::span<const int32_t> offsets, uint32_t weight,
                  std::span<const uint32_t> addends);

}  // namespace zvk::pixels
