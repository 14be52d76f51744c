#include "compositing/blend.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "image/channels.h"
#include "image/rows.h"
#include "pixels/loop_steps.h"
#include "pixels/row_walker.h"

namespace zvk::compositing {

// --- operands ---

BlendOperand::BlendOperand(const PixelLayout &image, const PixelLayout &dest, Mix mix)
    : image_(image), dest_(dest), mix_(mix), pixelSize_(image.pixelSize), from_(image.redGreenBlue) {
  for (size_t i = 0; i < dest.ColourCount(); ++i) {
    offsets_[i] = image.offsets[image.family == ColourFamily::Gray ? 0 : i];
  }
  const bool isOpaque = dest.hasAlpha && !image.hasAlpha;
  if (mix == Mix::None) way_ = isOpaque ? Way::OpaqueAlpha : Way::EachSample;
  if (!dest.hasAlpha) return;
  const size_t alpha = dest.ColourCount();
  isFlat_[alpha] = isOpaque;
  flat_[alpha] = 255;
  if (image.hasAlpha) offsets_[alpha] = image.Alpha();
}

BlendOperand BlendOperand::Image(const PixelLayout &image, const PixelLayout &dest) {
  const bool makesGray = dest.family == ColourFamily::Gray && image.family == ColourFamily::RGB;
  return {image, dest, makesGray ? Mix::Luma : Mix::None};
}

BlendOperand BlendOperand::Coverage(const PixelLayout &image, const PixelLayout &dest) {
  return {image, dest, image.family == ColourFamily::RGB ? Mix::Mean : Mix::None};
}

BlendOperand BlendOperand::Flat(const Samples<3> &samples) {
  BlendOperand operand({}, {}, Mix::None);
  operand.way_ = Way::Any;
  operand.isFlat_.fill(true);
  std::ranges::copy(samples, operand.flat_.begin());
  return operand;
}

PackedOperand BlendOperand::Pack(const WorkingPixel &working) const {
  if (pixelSize_ == 0) return {working, std::span(flat_).first(static_cast<size_t>(working.Size()))};
  if (mix_ == Mix::Mean) return {image_.pixelSize, MeanConversion(image_.pixelSize, from_, working)};
  PixelLayout packed = dest_;
  packed.pixelSize = working.Size();
  for (size_t i = 0; i < packed.ChannelCount(); ++i) packed.offsets[i] = working.At(i);
  return {image_.pixelSize, *PixelConversion::Between(image_, packed, {})};
}

// --- the loop ---

namespace {

// Calls blendRow(dest, source, mask) for each row, with the addresses of the rows' first pixels; nil for what is not an
// image.
template <class BlendRow>
void ForEachBlendRow(const BlendJob &job, const BlendRow &blendRow) {
  const Transfer &transfer = job.transfer;
  ImageClassData &first = job.first;
  ImageClassData *second = job.second;
  const ptrdiff_t destStart = ptrdiff_t{transfer.destX} * job.dest.PixelSize;
  const ptrdiff_t firstStart = ptrdiff_t{transfer.sourceX} * first.PixelSize;
  const ptrdiff_t secondStart = second != nullptr ? ptrdiff_t{transfer.sourceX} * second->PixelSize : 0;
  ForEachRowGroup(job.dest, transfer.destY, first, second, transfer.sourceY, transfer.height,
                  [&](const RowGroup &rows) {
                    const uint8_t *firstPixel = rows.First() + firstStart;
                    const uint8_t *secondPixel = second != nullptr ? rows.Second() + secondStart : nullptr;
                    blendRow(rows.Dest() + destStart, job.sourceIsFlat ? nullptr : firstPixel,
                             job.sourceIsFlat ? firstPixel : secondPixel);
                  });
}

using Way = BlendOperand::Way;

// The addresses of the first pixels of a row; nil for an operand without an image.
struct PixelGroup {
  uint8_t *dest;
  const uint8_t *source;
  const uint8_t *mask;
};

// The plain order holds for two mappings of one file as well, which the compiler, going by addresses, would take to be
// apart. The operands are handed on by value, so that stores to pixels leave them in registers.
template <size_t kCount, Way kSource, Way kMask, class Kernel>
void BlendPixels(const PixelLayout &layout, Kernel kernel, BlendOperand source, BlendOperand mask, PixelGroup pixels,
                 int32_t width) {
  std::array<int32_t, kCount> offsets;
  std::copy_n(layout.offsets.begin(), kCount, offsets.begin());
  const ptrdiff_t pixelSize = layout.pixelSize;
  for (int32_t x = 0; x < width; ++x) {
    Samples<kCount> own{};
    for (size_t i = 0; i < kCount; ++i) own[i] = pixels.dest[offsets[i]];
    const auto result =
        kernel.Pixel(own, source.Read<kCount, kSource>(pixels.source), mask.Read<kCount, kMask>(pixels.mask));
    for (size_t i = 0; i < kCount; ++i) pixels.dest[offsets[i]] = result[i];
    pixels.dest += pixelSize;
    pixels.source += source.PixelSize();
    pixels.mask += mask.PixelSize();
    OneStepAtATime();
  }
}

template <class Kernel>
using PixelBlender = void (*)(const PixelLayout &, Kernel, BlendOperand, BlendOperand, PixelGroup, int32_t);

template <size_t kCount, class Kernel>
PixelBlender<Kernel> PixelBlenderFor(Way source, Way mask) {
  constexpr bool kHasAlpha = kCount % 2 == 0;
  using enum BlendOperand::Way;
  if (source == EachSample && mask == EachSample) return BlendPixels<kCount, EachSample, EachSample, Kernel>;
  if constexpr (kHasAlpha) {
    if (source == EachSample && mask == OpaqueAlpha) return BlendPixels<kCount, EachSample, OpaqueAlpha, Kernel>;
    if (source == OpaqueAlpha && mask == EachSample) return BlendPixels<kCount, OpaqueAlpha, EachSample, Kernel>;
    if (source == OpaqueAlpha && mask == OpaqueAlpha) return BlendPixels<kCount, OpaqueAlpha, OpaqueAlpha, Kernel>;
  }
  return BlendPixels<kCount, Any, Any, Kernel>;
}

// For the numbers of channels that a formula is used with.
template <class Kernel>
PixelBlender<Kernel> PixelBlenderFor(size_t channels, Way source, Way mask) {
  if constexpr (Kernel::kScaled == Scaled::Alpha) return PixelBlenderFor<4, Kernel>(source, mask);
  if constexpr (Kernel::kScaled == Scaled::Full) return PixelBlenderFor<3, Kernel>(source, mask);
  if constexpr (!std::is_same_v<Kernel, GrayOfInterpolation>) {
    if (channels == 2) return PixelBlenderFor<2, Kernel>(source, mask);
    if (channels == 3) return PixelBlenderFor<3, Kernel>(source, mask);
    if (channels == 4) return PixelBlenderFor<4, Kernel>(source, mask);
  }
  return PixelBlenderFor<1, Kernel>(source, mask);
}

}  // namespace

template <class Kernel>
void Blend(const BlendJob &job, const PixelLayout &layout, const Kernel &kernel, const BlendOperand &source,
           const BlendOperand &mask) {
  const int32_t width = job.transfer.width;
  const auto sharesWithDest = [&](const ImageClassData *image) {
    return image != nullptr && SharesStorage(job.dest, *image);
  };
  const auto working = WorkingPixel::Of(std::span(layout.offsets).first(layout.ChannelCount()), layout.pixelSize);
  if (working && !sharesWithDest(&job.first) && !sharesWithDest(job.second)) {
    PackedBlend<Kernel> packed(*working, kernel, source.Pack(*working), mask.Pack(*working));
    const OffsetRange offsets = RangeOf(std::span(layout.offsets).first(layout.ChannelCount()));
    ForEachBlendRow(job, [&](uint8_t *destPixel, const uint8_t *sourcePixel, const uint8_t *maskPixel) {
      ExpectWrites(job.dest, destPixel, offsets, width);
      packed.Row(destPixel, sourcePixel, maskPixel, width);
    });
    return;
  }
  const auto blendPixels = PixelBlenderFor<Kernel>(layout.ChannelCount(), source.WayOfSamples(), mask.WayOfSamples());
  ForEachBlendRow(job, [&](uint8_t *destPixel, const uint8_t *sourcePixel, const uint8_t *maskPixel) {
    blendPixels(layout, kernel, source, mask, {destPixel, sourcePixel, maskPixel}, width);
  });
}

template void Blend(const BlendJob &, const PixelLayout &, const Interpolation &, const BlendOperand &,
                    const BlendOperand &);
template void Blend(const BlendJob &, const PixelLayout &, const Sum<Scaled::Own> &, const BlendOperand &,
                    const BlendOperand &);
template void Blend(const BlendJob &, const PixelLayout &, const Sum<Scaled::Alpha> &, const BlendOperand &,
                    const BlendOperand &);
template void Blend(const BlendJob &, const PixelLayout &, const Sum<Scaled::Full> &, const BlendOperand &,
                    const BlendOperand &);
template void Blend(const BlendJob &, const PixelLayout &, const GrayOfInterpolation &, const BlendOperand &,
                    const BlendOperand &);

}  // namespace zvk::compositing
