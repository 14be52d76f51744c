// A pixel as a list of samples: read from a row of one image and written into a row of another one, wherever each of
// them keeps its channels.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "image/image_record.h"
#include "pixels/layouts.h"

namespace zvk::geometry {

// Where the kCount channels that an operation knows lie in the pixels of one image.
template <size_t kCount>
struct PixelAccess {
  using Samples = std::array<uint8_t, kCount>;

  std::array<int32_t, kCount> offsets;  // bytes from the start of a pixel
  int32_t pixelSize;

  Samples Read(const uint8_t *row, int32_t x) const {
    const uint8_t *pixel = row + ptrdiff_t{x} * pixelSize;
    Samples samples = {};
    for (size_t i = 0; i < kCount; ++i) samples[i] = pixel[offsets[i]];
    return samples;
  }
  // All other bytes stay as they are.
  void Write(uint8_t *row, int32_t x, const Samples &samples) const {
    uint8_t *pixel = row + ptrdiff_t{x} * pixelSize;
    for (size_t i = 0; i < kCount; ++i) pixel[offsets[i]] = samples[i];
  }
};

// The channels of a layout, in its order.
template <class L>
PixelAccess<L::channelCount> AccessTo(const ImageClassData &image) {
  return {L::OffsetsOf(image), image.PixelSize};
}

}  // namespace zvk::geometry
