// The arithmetic of Combine, each formula in two forms that give the same bytes: for the samples of one pixel, and for
// a run of bytes in which every byte is a channel and stands for itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "pixels/divide_by_255.h"
#include "pixels/luma.h"

namespace zvk::compositing {

// Samples of one pixel: the colours, then alpha if it is part of what is computed.
template <size_t kCount>
using Samples = std::array<uint8_t, kCount>;

// Bytes of three operands: `dest` holds what the kernel works on, which is overwritten by the result; `mask` is what of
// it is kept. Neither of the others may overlap dest.
struct BlendBytes {
  uint8_t *dest;
  const uint8_t *source;
  const uint8_t *mask;
  ptrdiff_t count;
};

constexpr uint8_t Interpolate(uint8_t dest, uint8_t source, uint8_t mask) {
  return static_cast<uint8_t>(DivideBy255((255 - mask) * source + dest * mask));
}

// The sum wraps at 256.
constexpr uint8_t ScaleAndAdd(uint8_t scaled, uint8_t source, uint8_t mask) {
  return static_cast<uint8_t>(DivideBy255(scaled * mask) + source);
}

// What of the destination a kernel works on: each sample itself, or in its place the pixel's alpha, or 255.
enum class Scaled : uint8_t { Own, Alpha, Full };

// ((255 - mask) source + dest mask) / 255.
struct Interpolation {
  static constexpr Scaled kScaled = Scaled::Own;

  template <size_t kCount>
  static Samples<kCount> Pixel(const Samples<kCount> &dest, const Samples<kCount> &source,
                               const Samples<kCount> &mask) {
    Samples<kCount> result{};
    for (size_t i = 0; i < kCount; ++i) result[i] = Interpolate(dest[i], source[i], mask[i]);
    return result;
  }
  static void Bytes(const BlendBytes &bytes);
};

// (scaled mask) / 255 + source.
template <Scaled kWhat>
struct Sum {
  static constexpr Scaled kScaled = kWhat;

  template <size_t kCount>
  static Samples<kCount> Pixel(const Samples<kCount> &dest, const Samples<kCount> &source,
                               const Samples<kCount> &mask) {
    Samples<kCount> result{};
    for (size_t i = 0; i < kCount; ++i) {
      const uint8_t scaled = kScaled == Scaled::Own ? dest[i] : kScaled == Scaled::Alpha ? dest.back() : 255;
      result[i] = ScaleAndAdd(scaled, source[i], mask[i]);
    }
    return result;
  }
  static void Bytes(const BlendBytes &bytes);
};

// The gray of the colour that a gray sample and a flat colour are interpolated to.
struct GrayOfInterpolation {
  static constexpr Scaled kScaled = Scaled::Own;

  Samples<3> colour;

  static constexpr uint8_t Gray(uint8_t dest, const Samples<3> &colour, uint8_t mask) {
    return static_cast<uint8_t>(Luma(Interpolate(dest, colour[0], mask), Interpolate(dest, colour[1], mask),
                                     Interpolate(dest, colour[2], mask)));
  }

  Samples<1> Pixel(const Samples<1> &dest, const Samples<1> & /*source*/, const Samples<1> &mask) const {
    return {Gray(dest[0], colour, mask[0])};
  }
  void Bytes(const BlendBytes &bytes) const;
};

}  // namespace zvk::compositing
