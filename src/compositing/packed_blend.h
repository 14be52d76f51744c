// Blending a tile of a row at a time, as runs of bytes: for images that share nothing. The samples of all operands are
// brought into the order in which they lie in the destination; where an image has them so already it is used as it is.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "compositing/blend_kernels.h"
#include "pixels/conversion.h"
#include "pixels/sample_mover.h"

namespace zvk::compositing {

// Pixels of a tile: enough to make a step worth while, few enough for the first cache.
inline constexpr int32_t kTilePixels = 1024;

// A pixel as tiles hold it: the channels that are blended, side by side in the order in which they lie in the pixels of
// the destination.
class WorkingPixel {
 public:
  static constexpr size_t kMostChannels = 4;

  // `offsets` are those of the channels in the destination, colours first. Empty if two of them share a byte or one
  // lies among those of the next pixel: then the order of writing decides the bytes.
  static std::optional<WorkingPixel> Of(std::span<const int32_t> offsets, int32_t pixelSize);

  int32_t Size() const { return static_cast<int32_t>(count_); }
  // Distance between two pixels of the destination.
  int32_t PixelSize() const { return pixelSize_; }
  // The byte that holds a channel.
  int32_t At(size_t channel) const { return places_[channel]; }

  // True if the destination's pixels are nothing but these channels; the first of them lies at First().
  bool IsWhole() const { return Size() == pixelSize_; }
  int32_t First() const { return first_; }

  // From the destination's pixels into a tile: each channel, or the last one, alpha, in place of each.
  SampleMover ReadEach() const;
  SampleMover ReadLast() const;
  // Back into the destination.
  SampleMover Write() const;

 private:
  size_t count_ = 0;
  int32_t pixelSize_ = 0;
  int32_t first_ = 0;
  std::array<int32_t, kMostChannels> offsets_{};
  std::array<int32_t, kMostChannels> places_{};
};

using Tile = std::array<uint8_t, kTilePixels * WorkingPixel::kMostChannels>;

// The coverage of a flat colour that an RGB image stands for: the mean of its samples, in each of the colours.
class MeanConversion {
 public:
  // `colours` are the offsets of red, green and blue.
  MeanConversion(int32_t pixelSize, const std::array<int32_t, 3> &colours, const WorkingPixel &working);
  void operator()(const uint8_t *source, uint8_t *tile, int32_t width) const;

 private:
  std::array<SampleMover, 3> read_;
  std::optional<SampleMover> spread_;  // none for one channel
};

// One operand of a blend, as tiles of working pixels.
class PackedOperand {
 public:
  // The same pixel everywhere; the samples are in the order of the working pixel's channels.
  PackedOperand(const WorkingPixel &working, std::span<const uint8_t> samples);
  // Samples of an image, by a conversion into working pixels; a channel that it does not write holds 255.
  PackedOperand(int32_t pixelSize, const PixelConversion &conversion);
  PackedOperand(int32_t pixelSize, const MeanConversion &conversion);

  // The operand for `width` pixels, kTilePixels at most, from an address in the image on. Lasts until the next call.
  const uint8_t *TileOf(const uint8_t *pixels, int32_t width);
  // The way from one pixel of the image to the next; 0 without an image.
  ptrdiff_t PixelSize() const { return pixelSize_; }

 private:
  // The image's own bytes, from this offset on.
  struct InPlace {
    int32_t first;
  };
  using Reader = std::variant<std::monostate, InPlace, PixelConversion, MeanConversion>;

  static Reader ReaderOf(const PixelConversion &conversion);

  Reader reader_;
  ptrdiff_t pixelSize_;
  alignas(64) Tile tile_{};
};

// A blend of whole rows by one of the kernels.
template <class Kernel>
class PackedBlend {
 public:
  PackedBlend(const WorkingPixel &working, const Kernel &kernel, const PackedOperand &source, const PackedOperand &mask)
      : destPixelSize_(working.PixelSize()),
        channels_(working.Size()),
        first_(working.First()),
        inPlace_(working.IsWhole() && Kernel::kScaled != Scaled::Alpha),
        read_(Kernel::kScaled == Scaled::Alpha ? working.ReadLast() : working.ReadEach()),
        write_(working.Write()),
        kernel_(kernel),
        source_(source),
        mask_(mask) {}

  // Addresses of the first pixels; nil for an operand without an image.
  void Row(uint8_t *dest, const uint8_t *source, const uint8_t *mask, int32_t width) {
    // A step is never longer than what is left: rows may be as wide as 32 bits can count.
    for (int32_t x = 0, count = 0; x < width; x += count) {
      count = std::min(width - x, kTilePixels);
      uint8_t *pixels = dest + x * destPixelSize_;
      uint8_t *work = inPlace_ ? pixels + first_ : tile_.data();
      if (!inPlace_ && Kernel::kScaled != Scaled::Full) read_(pixels, work, count);
      kernel_.Bytes({work, source_.TileOf(source + x * source_.PixelSize(), count),
                     mask_.TileOf(mask + x * mask_.PixelSize(), count), count * channels_});
      if (!inPlace_) write_(work, pixels, count);
    }
  }

 private:
  ptrdiff_t destPixelSize_;
  ptrdiff_t channels_;
  ptrdiff_t first_;
  bool inPlace_;
  SampleMover read_;
  SampleMover write_;
  Kernel kernel_;
  PackedOperand source_;
  PackedOperand mask_;
  alignas(64) Tile tile_{};
};

}  // namespace zvk::compositing
