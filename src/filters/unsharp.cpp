#include "filters/unsharp.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>

#include "host/truncate.h"
#include "image/image_record.h"
#include "pixels/layouts.h"
#include "pixels/loop_steps.h"
#include "pixels/overlap.h"
#include "pixels/pixel_watch.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

// What becomes of a sample, by the sample and the blurred one.
using UnsharpTable = std::array<std::array<uint8_t, 256>, 256>;

void FillTable(double amount, int32_t threshold, UnsharpTable &table) {
  const double factor = amount * 4.0 + 1.0;
  int32_t sample = 0;
  for (auto &ofSample : table) {
    int32_t blurred = 0;
    for (uint8_t &entry : ofSample) {
      const int32_t difference = sample - blurred;
      const int32_t moved = std::abs(difference) >= threshold ? Truncate(difference * factor + blurred) : sample;
      entry = static_cast<uint8_t>(std::clamp(moved, 0, 255));
      ++blurred;
    }
    ++sample;
  }
}

template <class Layout>
void Sharpen(ImageClassData &image, ImageClassData &blurred, const UnsharpTable &table) {
  const int32_t width = image.Width;
  if (Layout::PackedAlike(image, blurred) && ImagesAreApart(blurred, image)) {
    const ptrdiff_t first = Layout::FirstOffset(image), firstBlurred = Layout::FirstOffset(blurred);
    const ptrdiff_t count = ptrdiff_t{width} * static_cast<ptrdiff_t>(Layout::channelCount);
    return ForEachRowPair(blurred, image, image.Height, [&](const uint8_t *blurredRow, uint8_t *row) {
      ExpectWrites(image, row, RangeOf(Layout::OffsetsOf(image)), width);
      uint8_t *__restrict samples = row + first;
      const uint8_t *__restrict others = blurredRow + firstBlurred;
      for (ptrdiff_t i = 0; i < count; ++i) samples[i] = table[samples[i]][others[i]];
    });
  }
  const auto offsets = Layout::OffsetsOf(image), blurredOffsets = Layout::OffsetsOf(blurred);
  const ptrdiff_t pixelSize = image.PixelSize, blurredPixelSize = blurred.PixelSize;
  ForEachRowPair(blurred, image, image.Height, [&](const uint8_t *other, uint8_t *pixel) {
    for (int32_t x = 0; x < width; ++x) {
      for (size_t c = 0; c < Layout::channelCount; ++c) {
        pixel[offsets[c]] = table[pixel[offsets[c]]][other[blurredOffsets[c]]];
      }
      pixel += pixelSize;
      other += blurredPixelSize;
      OneStepAtATime();  // the compiler cannot tell by addresses whether two mappings of a file overlap
    }
  });
}

// Alpha is taken to be there always. Where it is not its offset is 0, so the first byte of each pixel goes through the
// table by itself, after the inks, of which it may be one.
void unsharpFilterCMYKA(ImageClassData &image, ImageClassData &blurred, const UnsharpTable &table) {
  Sharpen<Layout<ColourFamily::CMYK, true>>(image, blurred, table);
}

}  // namespace

uint8_t unsharpFilter(REALobject instance, REALobject origpixels, double amount, int32_t threshold) {
  ImageClassData *image = RecordOf(instance);
  ImageClassData *blurred = RecordOf(origpixels);
  if (image == nullptr || blurred == nullptr) return false;
  const auto isServed = [&] {
    return image->BitsPerComponent != 16 && blurred->BitsPerComponent != 16 && blurred->Valid &&
           image->Width == blurred->Width && image->Height == blurred->Height &&
           image->ImageFormat == blurred->ImageFormat && IsUsable(*image);
  };
  if (!isServed()) return false;
  const PixelWatch watchedImage(*image), watchedBlurred(*blurred);
  YieldOn(*image);
  if (!IsUsable(*blurred)) return false;
  YieldOn(*blurred);
  // The yields let other code of the host run, which may have closed or constructed anew either image.
  if (!isServed() || !IsUsable(*blurred) || !watchedImage.HasStorage() || !watchedBlurred.HasStorage()) return false;

  UnsharpTable table = {};
  FillTable(amount, threshold, table);
  using enum ColourFamily;
  VisitLayout<Gray, RGB, CMYK>(*image, [&]<class Layout>(Layout) {
    if constexpr (Layout::family == CMYK) {
      unsharpFilterCMYKA(*image, *blurred, table);
    } else {
      Sharpen<Layout>(*image, *blurred, table);
    }
  });
  return true;
}

}  // namespace zvk::filters
