// One row, or all columns, of an image moved along by a fraction of a pixel into another image: the steps of a free
// rotation. Each has two forms that give the same bytes: one in a fixed order of reads, writes and row fetches, for
// files that are mapped block by block and for images that share storage; and one that works on whole rows.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "geometry/pixel_access.h"
#include "geometry/shear_kernels.h"
#include "host/resources.h"
#include "host/truncate.h"
#include "image/image_record.h"
#include "pixels/layouts.h"
#include "pixels/overlap.h"
#include "pixels/row_walker.h"
#include "pixels/sample_mover.h"

namespace zvk::geometry {

// The channels of a layout as a shear has them: alpha stands first in gray and CMYK pixels, last in RGB ones.
template <class L>
inline constexpr std::array<ChannelOffset, L::channelCount> kShearChannels = [] {
  auto channels = L::channels;
  if (L::hasAlpha && L::family != ColourFamily::RGB) std::rotate(channels.begin(), channels.end() - 1, channels.end());
  return channels;
}();

// One byte for each of these channels: the background of a shear.
template <class L>
struct Pixel {
  std::array<uint8_t, L::channelCount> samples;
};

namespace shear_detail {

template <class L>
using Samples = std::array<uint8_t, L::channelCount>;

template <class L>
PixelAccess<L::channelCount> ShearAccess(const ImageClassData &image) {
  PixelAccess<L::channelCount> access{{}, image.PixelSize};
  for (size_t i = 0; i < L::channelCount; ++i) access.offsets[i] = image.*kShearChannels<L>[i];
  return access;
}

// Moves the samples of pixels into a run without gaps, in the order of the shear.
template <class L>
SampleMover IntoRun(const ImageClassData &image) {
  std::array<SampleMove, L::channelCount> moves = {};
  for (int32_t i = 0; i < int32_t{L::channelCount}; ++i) moves[i] = {image.*kShearChannels<L>[i], i};
  return SampleMover(image.PixelSize, L::channelCount, moves);
}

// And such a run into pixels.
template <class L>
SampleMover OutOfRun(const ImageClassData &image) {
  std::array<SampleMove, L::channelCount> moves = {};
  for (int32_t i = 0; i < int32_t{L::channelCount}; ++i) moves[i] = {i, image.*kShearChannels<L>[i]};
  return SampleMover(L::channelCount, image.PixelSize, moves);
}

template <size_t kCount>
std::array<uint8_t, kCount> SharesOf(const std::array<uint8_t, kCount> &samples, double weight) {
  std::array<uint8_t, kCount> shares = {};
  for (size_t c = 0; c < kCount; ++c) shares[c] = ShareOf(samples[c], weight);
  return shares;
}

// One line of pixels on its way: what it gives to the next pixel, pixel after pixel.
template <class L>
struct Carry {
  Carry(const Pixel<L> &background, double weight)
      : background(background.samples), weight(weight), left(SharesOf(background.samples, weight)) {}

  Samples<L> Move(const Samples<L> &samples) {
    const Samples<L> oldleft = left;
    left = SharesOf(samples, weight);
    Samples<L> moved = {};
    for (size_t c = 0; c < L::channelCount; ++c) moved[c] = static_cast<uint8_t>(samples[c] + oldleft[c] - left[c]);
    return moved;
  }
  Samples<L> Last() const {
    Samples<L> last = {};
    for (size_t c = 0; c < L::channelCount; ++c) last[c] = LastSample(background[c], left[c], weight);
    return last;
  }

  Samples<L> background;
  double weight;
  Samples<L> left;
};

// --- a row ---

// A row sheared pixel by pixel, every row fetched anew for every pixel.
template <class L>
void SkewByPixels(ImageClassData &source, ImageClassData &dest, int32_t row, int32_t offset, double weight,
                  const Pixel<L> &background) {
  const auto from = ShearAccess<L>(source);
  const auto to = ShearAccess<L>(dest);
  const auto store = [&](int64_t x, const Samples<L> &samples) {
    if (x < 0 || x >= dest.Width) return;
    uint8_t *destRow = FetchRow(dest, row);
    if (destRow != nullptr) to.Write(destRow, static_cast<int32_t>(x), samples);
  };
  for (int32_t x = 0; x < dest.Width; ++x) store(x, background.samples);
  Carry<L> carry(background, weight);
  for (int32_t x = 0; x < source.Width; ++x) {
    const uint8_t *sourceRow = FetchRow(source, row);
    if (sourceRow != nullptr) store(int64_t{offset} + x, carry.Move(from.Read(sourceRow, x)));
  }
  // One pixel beyond the run, unlike the end of a column.
  store(int64_t{offset} + source.Width, carry.Last());
}

// A row sheared as runs of samples without gaps, in whatever order the channels are.
template <size_t kCount>
struct SkewedRow {
  int64_t width;  // of the source
  int64_t offset;
  ShareWeight weight;
  std::array<uint8_t, kCount> background;

  // Makes the pixels from first up to, not including, end. `samples` are those of the source's pixels from
  // `firstSource` on: at least the one before each that is needed. Large, and called for many pixels at a time.
  [[gnu::noinline]] void Make(const uint8_t *samples, int64_t firstSource, int64_t first, int64_t end,
                              uint8_t *dest) const {
    const auto source = [&](int64_t x) { return samples + (x - firstSource) * kCount; };
    const int64_t run = std::clamp(offset, first, end);
    const int64_t runEnd = std::clamp(offset + width, first, end);
    dest = Fill(dest, run - first);
    int64_t x = run;
    if (x < runEnd && x == offset) {
      dest = Put(dest, [&](size_t c) {
        const uint8_t sample = source(0)[c];
        return sample - ShareOf(sample, weight.weight) + ShareOf(background[c], weight.weight);
      });
      ++x;
    }
    if (x < runEnd) {
      ShearAlong(source(x - offset), kCount, (runEnd - x) * kCount, weight, dest);
      dest += (runEnd - x) * kCount;
      x = runEnd;
    }
    if (x < end && x == offset + width) {
      dest = Put(dest, [&](size_t c) {
        const uint8_t before = width > 0 ? source(width - 1)[c] : background[c];
        return LastSample(background[c], ShareOf(before, weight.weight), weight.weight);
      });
      ++x;
    }
    Fill(dest, end - x);
  }

 private:
  template <class Sample>
  static uint8_t *Put(uint8_t *dest, Sample sample) {
    for (size_t c = 0; c < kCount; ++c) dest[c] = static_cast<uint8_t>(sample(c));
    return dest + kCount;
  }
  uint8_t *Fill(uint8_t *dest, int64_t count) const {
    for (int64_t i = 0; i < count; ++i) {
      std::memcpy(dest, background.data(), kCount);
      dest += kCount;
    }
    return dest;
  }
};

// The background in the order in which the channels of a packed image lie in memory.
template <class L>
Samples<L> AsStored(const Pixel<L> &background, const ImageClassData &image) {
  Samples<L> stored = {};
  for (size_t i = 0; i < L::channelCount; ++i) {
    stored[image.*kShearChannels<L>[i] - L::FirstOffset(image)] = background.samples[i];
  }
  return stored;
}

template <class L>
void SkewWholeRow(ImageClassData &source, ImageClassData &dest, int32_t row, int32_t offset, double weight,
                  const Pixel<L> &background) {
  constexpr int64_t kCount = L::channelCount;
  const uint8_t *sourceRow = FetchRow(source, row);
  uint8_t *destRow = FetchRow(dest, row);
  if (sourceRow == nullptr || destRow == nullptr) return;
  SkewedRow<kCount> line{source.Width, offset, ShareWeight(weight), background.samples};
  if (L::PackedAlike(source, dest)) {
    line.background = AsStored(background, dest);
    line.Make(sourceRow + L::FirstOffset(source), 0, 0, dest.Width, destRow + L::FirstOffset(dest));
    return;
  }
  const SampleMover intoRun = IntoRun<L>(source);
  const SampleMover outOfRun = OutOfRun<L>(dest);
  constexpr int64_t kPixels = 256;
  std::array<uint8_t, (kPixels + 1) *kCount> read = {};
  std::array<uint8_t, kPixels *kCount> made = {};
  for (int64_t x = 0; x < dest.Width; x += kPixels) {
    const int64_t end = std::min<int64_t>(x + kPixels, dest.Width);
    const int64_t firstSource = std::clamp<int64_t>(x - offset - 1, 0, source.Width);
    const int64_t endSource = std::clamp<int64_t>(end - offset, 0, source.Width);
    intoRun(sourceRow + firstSource * source.PixelSize, read.data(), static_cast<int32_t>(endSource - firstSource));
    line.Make(read.data(), firstSource, x, end, made.data());
    outOfRun(made.data(), destRow + x * dest.PixelSize, static_cast<int32_t>(end - x));
  }
}

}  // namespace shear_detail

// Moves row `row` of source by `offset` whole pixels to the right, and by `weight` (0 to 1) of a pixel more, into the
// same row of dest. All of the rest of that row becomes the background. What falls outside the row is left out.
template <class L>
void HorizSkew(ImageClassData &source, ImageClassData &dest, int32_t row, int32_t offset, double weight,
               Pixel<L> background) {
  if (OrderIsUnobservable<L>(source, dest, dest.Width, dest.Height)) {
    shear_detail::SkewWholeRow(source, dest, row, offset, weight, background);
  } else {
    shear_detail::SkewByPixels(source, dest, row, offset, weight, background);
  }
}

}  // namespace zvk::geometry
