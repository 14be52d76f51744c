// The one loop of Combine, written once over what the destination is, what is laid on it, and through what: images of
// any family and alpha, or flat colours.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "compositing/blend_kernels.h"
#include "compositing/packed_blend.h"
#include "image/image_record.h"
#include "image/rectangle.h"
#include "image/rows.h"
#include "pixels/kernel_clones.h"
#include "pixels/layouts.h"
#include "pixels/luma.h"
#include "pixels/row_group.h"

namespace zvk::compositing {

// --- operands: each gives samples for a pixel of the destination's layout D ---

// An image: its colours, or its gray sample for each of them, or their Luma for a gray destination; its alpha, or 255.
template <class D, class Image>
class ImageSamples {
 public:
  explicit ImageSamples(const ImageClassData &image) : pixelSize_(image.PixelSize), offsets_(Image::OffsetsOf(image)) {}

  ptrdiff_t PixelSize() const { return pixelSize_; }

  Samples<D::channelCount> Read(const uint8_t *pixel) const {
    Samples<D::channelCount> samples{};
    if constexpr (kMakesGray) {
      samples[0] = static_cast<uint8_t>(Luma(pixel[offsets_[0]], pixel[offsets_[1]], pixel[offsets_[2]]));
    } else {
      for (size_t i = 0; i < D::colourCount; ++i) samples[i] = pixel[offsets_[ColourFor(i)]];
    }
    if constexpr (D::hasAlpha) {
      samples.back() = 255;
      if constexpr (Image::hasAlpha) samples.back() = pixel[offsets_.back()];
    }
    return samples;
  }

  PackedOperand Pack(const WorkingPixel &working) const {
    const SampleMove alpha{offsets_.back(), working.At(D::channelCount - 1)};
    if constexpr (kMakesGray) {
      const GrayConversion gray(pixelSize_, {offsets_[0], offsets_[1], offsets_[2]}, working.Size(), working.At(0),
                                kMovesAlpha ? std::optional(alpha) : std::nullopt);
      return {pixelSize_, gray};
    } else {
      std::array<SampleMove, D::colourCount + (kMovesAlpha ? 1 : 0)> moves{};
      for (size_t i = 0; i < D::colourCount; ++i) moves[i] = {offsets_[ColourFor(i)], working.At(i)};
      if constexpr (kMovesAlpha) moves.back() = alpha;
      return {working, pixelSize_, moves};
    }
  }

 private:
  static constexpr bool kMakesGray = D::family == ColourFamily::Gray && Image::family == ColourFamily::RGB;
  static constexpr bool kMovesAlpha = D::hasAlpha && Image::hasAlpha;
  static constexpr size_t ColourFor(size_t i) { return Image::family == ColourFamily::Gray ? 0 : i; }

  int32_t pixelSize_;
  std::array<int32_t, Image::channelCount> offsets_;
};

// An image as the coverage of a flat colour: its gray sample, or the mean of its colours, for all channels alike.
template <class D, class Image>
class CoverageSamples {
 public:
  explicit CoverageSamples(const ImageClassData &image)
      : pixelSize_(image.PixelSize), offsets_(Image::OffsetsOf(image)) {}

  ptrdiff_t PixelSize() const { return pixelSize_; }

  Samples<D::channelCount> Read(const uint8_t *pixel) const {
    int32_t coverage = pixel[offsets_[0]];
    if constexpr (Image::family == ColourFamily::RGB) {
      coverage = (coverage + pixel[offsets_[1]] + pixel[offsets_[2]]) / 3;
    }
    Samples<D::channelCount> samples{};
    samples.fill(static_cast<uint8_t>(coverage));
    return samples;
  }

  PackedOperand Pack(const WorkingPixel &working) const {
    if constexpr (Image::family == ColourFamily::RGB) {
      return {pixelSize_, MeanConversion(pixelSize_, offsets_, working)};
    } else {
      std::array<SampleMove, D::channelCount> moves{};
      for (size_t i = 0; i < moves.size(); ++i) moves[i] = {offsets_[0], working.At(i)};
      return {working, pixelSize_, moves};
    }
  }

 private:
  int32_t pixelSize_;
  std::array<int32_t, Image::channelCount> offsets_;
};

// The same samples in every pixel.
template <class D>
class FlatSamples {
 public:
  explicit FlatSamples(const Samples<D::channelCount> &samples) : samples_(samples) {}

  ptrdiff_t PixelSize() const { return 0; }
  Samples<D::channelCount> Read(const uint8_t * /*pixel*/) const { return samples_; }
  PackedOperand Pack(const WorkingPixel &working) const { return {working, samples_}; }

 private:
  Samples<D::channelCount> samples_;
};

// --- the loop ---

// One call of Combine, with a fitted transfer. A source or a mask that is not an image is nil; one of them is there.
struct BlendJob {
  ImageClassData &dest;
  ImageClassData *source;
  ImageClassData *mask;
  Transfer transfer;
};

// Calls blendRow(dest, source, mask) for each row, with the addresses of the rows' first pixels; nil for what is not an
// image.
template <class BlendRow>
void ForEachBlendRow(const BlendJob &job, const BlendRow &blendRow) {
  const Transfer &transfer = job.transfer;
  ImageClassData &first = job.source != nullptr ? *job.source : *job.mask;
  ImageClassData *second = job.source != nullptr ? job.mask : nullptr;
  const ptrdiff_t destStart = ptrdiff_t{transfer.destX} * job.dest.PixelSize;
  const ptrdiff_t firstStart = ptrdiff_t{transfer.sourceX} * first.PixelSize;
  const ptrdiff_t secondStart = second != nullptr ? ptrdiff_t{transfer.sourceX} * second->PixelSize : 0;
  ForEachRowGroup(job.dest, transfer.destY, first, second, transfer.sourceY, transfer.height,
                  [&](const RowGroup &rows) {
                    const uint8_t *firstPixel = rows.First() + firstStart;
                    const uint8_t *secondPixel = second != nullptr ? rows.Second() + secondStart : nullptr;
                    blendRow(rows.Dest() + destStart, job.source != nullptr ? firstPixel : nullptr,
                             job.source != nullptr ? secondPixel : firstPixel);
                  });
}

// Pixel after pixel, all samples of one read before any is written, the colours before alpha. This holds for two
// mappings of one file as well, which the compiler, going by addresses, would take to be apart.
template <class D, class Kernel, class Source, class Mask>
void BlendPixels(const ImageClassData &destRecord, Kernel kernel, Source source, Mask mask, uint8_t *dest,
                 const uint8_t *sourcePixel, const uint8_t *maskPixel, int32_t width) {
  const ImageSamples<D, D> own(destRecord);
  const auto offsets = D::OffsetsOf(destRecord);
  for (int32_t x = 0; x < width; ++x) {
    const auto result = kernel.Pixel(own.Read(dest), source.Read(sourcePixel), mask.Read(maskPixel));
    for (size_t i = 0; i < D::channelCount; ++i) dest[offsets[i]] = result[i];
    dest += own.PixelSize();
    sourcePixel += source.PixelSize();
    maskPixel += mask.PixelSize();
    OneStepAtATime();
  }
}

// Blends into a destination of layout D: whole rows at a time where nobody can notice the order, else pixel by pixel.
template <class D, class Kernel, class Source, class Mask>
void Blend(const BlendJob &job, const Kernel &kernel, const Source &source, const Mask &mask) {
  const int32_t width = job.transfer.width;
  const auto sharesWithDest = [&](const ImageClassData *image) {
    return image != nullptr && SharesStorage(job.dest, *image);
  };
  const auto working = WorkingPixel::Of(D::OffsetsOf(job.dest), job.dest.PixelSize);
  if (working && !sharesWithDest(job.source) && !sharesWithDest(job.mask)) {
    PackedBlend<Kernel> packed(*working, kernel, source.Pack(*working), mask.Pack(*working));
    ForEachBlendRow(job, [&](uint8_t *destPixel, const uint8_t *sourcePixel, const uint8_t *maskPixel) {
      packed.Row(destPixel, sourcePixel, maskPixel, width);
    });
    return;
  }
  const ImageClassData dest = job.dest;  // the channels as they are now, whatever the host does in yields
  ForEachBlendRow(job, [&](uint8_t *destPixel, const uint8_t *sourcePixel, const uint8_t *maskPixel) {
    BlendPixels<D>(dest, kernel, source, mask, destPixel, sourcePixel, maskPixel, width);
  });
}

}  // namespace zvk::compositing
