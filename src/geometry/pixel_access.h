// A pixel as a list of samples: read from a row of one image and written into a row of another one, wherever each of
// them keeps its channels.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "image/channels.h"
#include "image/image_record.h"
#include "image/rows.h"
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

// True if no pixel of the image has a byte of its samples in common with the next one. Only a part of an image whose
// offsets were changed may have.
template <class L>
bool PixelsLieApart(const ImageClassData &image) {
  const auto offsets = L::OffsetsOf(image);
  const auto [lowest, highest] = std::minmax_element(offsets.begin(), offsets.end());
  return int64_t{*highest} - *lowest < image.PixelSize;
}

// True if no row of the image has a byte of its samples in common with the next one. A caller's RowSize may be shorter
// than the pixels.
inline bool RowsLieApart(const ImageClassData &image) {
  int32_t lowest = 0;
  int32_t highest = 0;
  for (const ChannelField &channel : kChannels) {
    lowest = std::min(lowest, image.*channel.offset);
    highest = std::max(highest, image.*channel.offset);
  }
  const int64_t extent = (int64_t{image.Width} - 1) * image.PixelSize + highest - lowest + 1;
  return image.RowTable != nullptr || image.Height < 2 || extent <= std::abs(int64_t{image.RowSize});
}

// True if nobody can notice in what order pixels of the one image are read and pixels of the other written.
inline bool MayReorder(const ImageClassData &source, const ImageClassData &dest) {
  return HasFixedRows(source) && HasFixedRows(dest) && RowsLieApart(dest) && !SharesStorage(source, dest);
}

}  // namespace zvk::geometry
