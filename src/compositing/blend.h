// The one loop of Combine: a destination, what is laid on it, and through what. The operands are images of gray or RGB,
// with or without alpha, or flat colours.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "compositing/blend_kernels.h"
#include "compositing/packed_blend.h"
#include "image/image_record.h"
#include "image/rectangle.h"
#include "pixels/conversion.h"
#include "pixels/luma.h"

namespace zvk::compositing {

// The layout of an image that is blended; empty for one that is neither gray nor RGB.
inline std::optional<PixelLayout> BlendLayoutOf(const ImageClassData &image) {
  return PixelLayoutOf<ColourFamily::Gray, ColourFamily::RGB>(image);
}

// --- operands ---

// Where each channel that is blended in the destination's pixels gets its sample: the colours, then alpha.
class BlendOperand {
 public:
  // An image: its colours, or its gray sample for each of them, or their Luma for a gray destination; its alpha, or
  // 255.
  static BlendOperand Image(const PixelLayout &image, const PixelLayout &dest);
  // An image as the coverage of a flat colour, for all colours of a destination whose alpha is not blended: its gray
  // sample, or the mean of its colours.
  static BlendOperand Coverage(const PixelLayout &image, const PixelLayout &dest);
  // The same samples in every pixel.
  static BlendOperand Flat(const Samples<3> &samples);

  // The way from one pixel to the next; 0 without an image.
  ptrdiff_t PixelSize() const { return pixelSize_; }

  // How the channels get their samples, for loops that are compiled for the common ways.
  enum class Way : uint8_t {
    EachSample,   // each is a sample of the image as it is
    OpaqueAlpha,  // alpha, the last one, is 255; the others are samples as they are
    Any
  };
  Way WayOfSamples() const { return way_; }

  // The samples for a pixel of kCount channels, by WayOfSamples or Any. Without an image `pixel` is not looked at.
  template <size_t kCount, Way kWay>
  Samples<kCount> Read(const uint8_t *pixel) const {
    Samples<kCount> samples{};
    if constexpr (kWay != Way::Any) {
      for (size_t i = 0; i < kCount; ++i) {
        samples[i] = kWay == Way::OpaqueAlpha && i == kCount - 1 ? 255 : pixel[offsets_[i]];
      }
    } else if (mix_ == Mix::Mean) {
      samples.fill(static_cast<uint8_t>((pixel[from_[0]] + pixel[from_[1]] + pixel[from_[2]]) / 3));
    } else {
      for (size_t i = 0; i < kCount; ++i) samples[i] = isFlat_[i] ? flat_[i] : pixel[offsets_[i]];
      if (mix_ == Mix::Luma) samples[0] = static_cast<uint8_t>(Luma(pixel[from_[0]], pixel[from_[1]], pixel[from_[2]]));
    }
    return samples;
  }

  // The same samples as tiles of working pixels.
  PackedOperand Pack(const WorkingPixel &working) const;

 private:
  // What is made of red, green and blue.
  enum class Mix : uint8_t { None, Luma, Mean };

  BlendOperand(const PixelLayout &image, const PixelLayout &dest, Mix mix);

  static constexpr size_t kMost = PixelLayout::kMostChannels;

  PixelLayout image_{};
  PixelLayout dest_{};
  Mix mix_ = Mix::None;
  Way way_ = Way::Any;
  ptrdiff_t pixelSize_ = 0;
  std::array<int32_t, 3> from_{};         // red, green and blue, if they are mixed
  std::array<int32_t, kMost> offsets_{};  // each channel's sample in the image's pixel
  std::array<bool, kMost> isFlat_{};      // or the same sample everywhere
  Samples<kMost> flat_{};
};

// --- the loop ---

// One call of Combine, with a fitted transfer. The operands are two images, the source and the mask, or one image and a
// flat colour.
struct BlendJob {
  ImageClassData &dest;
  ImageClassData &first;   // the source, or the mask if the source is flat
  ImageClassData *second;  // the mask if both are images
  bool sourceIsFlat;
  Transfer transfer;
};

// Blends by a formula of blend_kernels.h into the channels of `layout`, a layout of the destination: whole rows at a
// time where nobody can notice the order, else pixel by pixel, all samples of one read before any is written, the
// colours before alpha. Yields on dest after each row.
template <class Kernel>
void Blend(const BlendJob &job, const PixelLayout &layout, const Kernel &kernel, const BlendOperand &source,
           const BlendOperand &mask);

}  // namespace zvk::compositing
