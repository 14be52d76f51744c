// What the filters share that make a sample out of those around it: places beyond an edge, and rows as samples side
// by side.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "image/channels.h"
#include "image/image_record.h"
#include "image/rows.h"
#include "pixels/layouts.h"

namespace zvk::pixels {

// The place at a distance from another one, along one side of an image: the nearest of the places from 0 to size - 1.
// The sum wraps, so a distance near the end of the range may lead to the opposite edge.
constexpr int32_t PlaceAt(int32_t place, int32_t distance, int32_t size) {
  const int32_t sum = place + distance;
  if (sum < 0) return 0;
  return sum >= size ? size - 1 : sum;
}

// The rows of one image as samples side by side, all channels of the layout for each pixel in turn. Two images that are
// packed alike have them in the order in which both store them, and the rows are such samples already; others have them
// in the order of the layout.
template <class Layout>
class SampleRows {
 public:
  static constexpr auto kChannels = static_cast<ptrdiff_t>(Layout::channelCount);

  // `packed` is PackedAlike of the two images of a call.
  SampleRows(const ImageClassData &image, bool packed)
      : pixelSize_(image.PixelSize),
        offsets_(Layout::OffsetsOf(image)),
        first_(Layout::FirstOffset(image)),
        packed_(packed) {}

  // The samples of the first `columns` pixels, in place where they are packed, else copied to the buffer.
  const uint8_t *Read(const uint8_t *row, int32_t columns, uint8_t *buffer) const {
    if (packed_) return row + first_;
    Copy(row, columns, buffer);
    return buffer;
  }

  // The same, always copied.
  void Copy(const uint8_t *row, int32_t columns, uint8_t *__restrict samples) const {
    if (packed_) {
      std::memcpy(samples, row + first_, static_cast<size_t>(columns * kChannels));
      return;
    }
    const Offsets offsets = offsets_;
    const ptrdiff_t pixelSize = pixelSize_;
    for (int32_t x = 0; x < columns; ++x) {
      for (size_t c = 0; c < Layout::channelCount; ++c) samples[c] = row[offsets[c]];
      samples += kChannels;
      row += pixelSize;
    }
  }

  // The samples of the first `columns` pixels as a copy of the row's first `rowBytes` bytes with zeros behind it has
  // them.
  void CopyWithin(const uint8_t *row, int64_t rowBytes, int32_t columns, uint8_t *samples) const {
    const auto [lowest, highest] = RangeOf(offsets_);
    int64_t inside = 0;  // whole pixels
    if (lowest >= 0 && highest < rowBytes) {
      inside = std::min<int64_t>(columns, (rowBytes - 1 - highest) / pixelSize_ + 1);
      Copy(row, static_cast<int32_t>(inside), samples);
    }
    const Offsets places = packed_ ? InStorageOrder() : offsets_;
    for (int64_t x = inside; x < columns; ++x) {
      for (size_t c = 0; c < Layout::channelCount; ++c) {
        const int64_t byte = x * pixelSize_ + places[c];
        samples[x * kChannels + static_cast<ptrdiff_t>(c)] = byte >= 0 && byte < rowBytes ? row[byte] : uint8_t{0};
      }
    }
  }

  // Lets make(samples) write the samples of the first `columns` pixels, and puts them into the row: pixel by pixel, the
  // channels of each in the order of the layout. The buffer serves where they are not packed.
  template <class Maker>
  void Write(uint8_t *row, int32_t columns, uint8_t *buffer, Maker &&make) const {
    if (packed_) return make(row + first_);
    make(buffer);
    const Offsets offsets = offsets_;
    const ptrdiff_t pixelSize = pixelSize_;
    const uint8_t *__restrict samples = buffer;
    for (int32_t x = 0; x < columns; ++x) {
      for (size_t c = 0; c < Layout::channelCount; ++c) row[offsets[c]] = samples[c];
      samples += kChannels;
      row += pixelSize;
    }
  }

  // Where a channel stands among the samples of a pixel. `channel` counts in the order of the layout.
  ptrdiff_t PlaceOf(size_t channel) const {
    return packed_ ? offsets_[channel] - first_ : static_cast<ptrdiff_t>(channel);
  }

 private:
  using Offsets = std::array<int32_t, Layout::channelCount>;

  Offsets InStorageOrder() const {
    Offsets sorted = offsets_;
    std::sort(sorted.begin(), sorted.end());
    return sorted;
  }

  ptrdiff_t pixelSize_;
  Offsets offsets_;
  ptrdiff_t first_;
  bool packed_;
};

// The rows of both images of a call.
template <class Layout>
struct SampleRowsOfBoth {
  SampleRowsOfBoth(const ImageClassData &sourceImage, const ImageClassData &destImage)
      : source(sourceImage, Layout::PackedAlike(sourceImage, destImage)),
        dest(destImage, Layout::PackedAlike(sourceImage, destImage)) {}

  SampleRows<Layout> source;
  SampleRows<Layout> dest;
};

}  // namespace zvk::pixels
