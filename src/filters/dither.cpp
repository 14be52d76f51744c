#include "filters/dither.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "filters/dither_levels.h"
#include "filters/dither_matrices.h"
#include "pixels/channel_rows.h"
#include "pixels/filter_frame.h"
#include "pixels/layouts.h"
#include "pixels/row_walker.h"

namespace zvk::filters {

namespace {

using enum ColourFamily;

constexpr int32_t kLeastLevels = 2;
constexpr int32_t kMostLevels = 256;

// Dithers the samples of `width` pixels, each written before the next one is read.
template <size_t kChannels>
void DitherRow(const DitherLevels &levels, const int32_t *thresholds, int32_t size,
               ChannelRow<const uint8_t, kChannels> source, ChannelRow<uint8_t, kChannels> dest, int32_t width) {
  int32_t column = 0;
  for (int32_t x = 0; x < width; ++x) {
    const int32_t threshold = thresholds[column];
    column = column + 1 < size ? column + 1 : 0;
    for (size_t c = 0; c < kChannels; ++c) {
      dest.pixel[dest.offsets[c]] = levels(source.pixel[source.offsets[c]], threshold);
    }
    source.Next();
    dest.Next();
  }
}

// The thresholds of packed samples, pixel after pixel, for each row of a matrix: whole tiles of every size.
template <size_t kChannels>
class ThresholdPatterns {
 public:
  explicit ThresholdPatterns(const DitherMatrix &matrix) {
    for (int32_t row = 0; row < matrix.size; ++row) {
      uint8_t *next = patterns_[row].data();
      for (int32_t tile = 0; tile < kPixels / matrix.size; ++tile) {
        for (int32_t column = 0; column < matrix.size; ++column) {
          for (size_t c = 0; c < kChannels; ++c) *next++ = static_cast<uint8_t>(matrix.Row(row)[column]);
        }
      }
    }
  }

  // Dithers `count` samples of a row under the thresholds of a row of the matrix.
  void Dither(const DitherLevels &levels, int32_t row, const uint8_t *source, uint8_t *dest, ptrdiff_t count) const {
    // A step is never longer than what is left: rows may be as long as an address can tell.
    for (ptrdiff_t first = 0, now = 0; first < count; first += now) {
      now = std::min(kBytes, count - first);
      levels.DitherBytes(source + first, patterns_[row].data(), dest + first, static_cast<int32_t>(now));
    }
  }

 private:
  static constexpr int32_t kPixels = 192;
  static_assert(kPixels % 6 == 0 && kPixels % kLargestDitherMatrix == 0);
  static constexpr ptrdiff_t kBytes = ptrdiff_t{kPixels} * kChannels;

  std::array<std::array<uint8_t, kBytes>, kLargestDitherMatrix> patterns_{};
};

template <class Layout>
void Dither(ImageClassData &source, ImageClassData &dest, const DitherMatrix &matrix, const DitherLevels &levels) {
  constexpr size_t kChannels = Layout::channelCount;
  const auto from = Layout::OffsetsOf(source);
  const auto to = Layout::OffsetsOf(dest);
  const ByteRuns<Layout> runs(source, dest);
  const ThresholdPatterns<kChannels> patterns(matrix);
  ForEachRowPair(dest, source, source.Height, [&](uint8_t *destRow, const uint8_t *sourceRow, int32_t y) {
    const auto ditherBytes = [&](const uint8_t *read, uint8_t *written, ptrdiff_t count) {
      patterns.Dither(levels, y % matrix.size, read, written, count);
    };
    if (runs.Visit(sourceRow, destRow, ditherBytes)) return;
    DitherRow<kChannels>(levels, matrix.Row(y), matrix.size, {sourceRow, source.PixelSize, from},
                         {destRow, dest.PixelSize, to}, source.Width);
  });
}

}  // namespace

REALobject DitherFilter(REALobject instance, REALobject dest, int32_t matrix, int32_t levels) {
  const DitherMatrix *const found = DitherMatrixByNumber(matrix);
  return RunFilterOn<Gray, RGB>(instance, dest,
                                [&]<class Layout>(Layout, ImageClassData &source, ImageClassData &target) {
                                  if (found == nullptr || levels < kLeastLevels || levels > kMostLevels) return;
                                  Dither<Layout>(source, target, *found, DitherLevels(levels, found->size));
                                });
}

}  // namespace zvk::filters
