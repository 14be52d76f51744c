// The one place that asks whether the order of reads and writes can be noticed. Images of one call may share storage,
// and the host program may have put two samples into one byte; then the told order decides the bytes, and only the
// plain loops keep it. A form that reorders or buffers must be guarded by one of these questions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "image/channels.h"
#include "image/image_record.h"
#include "image/rows.h"

namespace zvk::pixels {

// --- samples within a row ---

// True if no two samples of one pixel are the same byte.
constexpr bool SamplesAreDistinct(std::span<const int32_t> offsets) {
  for (size_t i = 1; i < offsets.size(); ++i) {
    for (size_t j = 0; j < i; ++j) {
      if (offsets[i] == offsets[j]) return false;
    }
  }
  return true;
}

// True if the samples of a pixel fill a run of bytes without a gap, in whatever order.
constexpr bool SamplesAreSideBySide(std::span<const int32_t> offsets) {
  return RangeOf(offsets).Span() == static_cast<int64_t>(offsets.size()) && SamplesAreDistinct(offsets);
}

// True if all samples of a pixel lie in front of those of the next one: no byte from the first to the last sample of
// the one is such a byte of the other.
constexpr bool PixelsAreApart(const OffsetRange &offsets, int32_t pixelSize) { return offsets.Span() <= pixelSize; }

// The same for the samples of a layout in an image.
template <class Layout>
bool PixelsAreApart(const ImageClassData &image) {
  return PixelsAreApart(RangeOf(Layout::OffsetsOf(image)), image.PixelSize);
}

// True if no byte of a row is a sample twice over: within a pixel, or of two pixels.
constexpr bool SamplesAreApart(std::span<const int32_t> offsets, int32_t pixelSize) {
  return PixelsAreApart(RangeOf(offsets), pixelSize) && SamplesAreDistinct(offsets);
}

// The same for the samples of a layout in an image.
template <class Layout>
bool SamplesAreApart(const ImageClassData &image) {
  return SamplesAreApart(Layout::OffsetsOf(image), image.PixelSize);
}

// --- rows ---

// True if the samples of the first `columns` pixels of a row, one or more, have no byte between the first and the last
// of them in common with those of another row of the image, of which `rows` are asked about. A caller's RowSize may be
// shorter than the pixels. The rows of a table are a host's own and taken to lie apart.
bool RowsAreApart(const ImageClassData &image, const OffsetRange &offsets, int32_t columns, int32_t rows);

// True if two runs of bytes, both empty or neither, have a byte in common. Addresses do not tell that of two mappings
// of one file.
bool RunsOverlap(const uint8_t *run, ptrdiff_t size, const uint8_t *otherRun, ptrdiff_t otherSize);

// --- two images ---

// True if what is written to the first `columns` and `rows` of dest, pixels `pixelSize` bytes apart, touches nothing of
// source, so that reads may be buffered, and made before or after any write. An operation that runs by the source's
// size may write more of a dest than that image says it has: through a clip into the image behind it. Then there is no
// telling. Rows of a mapped image still last only until its next one is fetched; several of them are had through a
// RowWindow.
bool ImagesAreApart(const ImageClassData &source, const ImageClassData &dest, int32_t columns, int32_t rows,
                    int32_t pixelSize);

// The same where pixels are as far apart as dest has them.
inline bool ImagesAreApart(const ImageClassData &source, const ImageClassData &dest, int32_t columns, int32_t rows) {
  return ImagesAreApart(source, dest, columns, rows, dest.PixelSize);
}

// The same for an operation that runs by the source's size.
inline bool ImagesAreApart(const ImageClassData &source, const ImageClassData &dest) {
  return ImagesAreApart(source, dest, source.Width, source.Height);
}

// True if the order is unobservable in which pixels are read and written: what is written to the first `columns` and
// `rows` of dest touches nothing of source, and no byte of it is a sample of two pixels. Within a pixel the samples are
// still to be written in the order of the layout, and dest is not to be read again, unless SamplesAreApart holds as
// well: alpha that a dest does not have lies in the place of another sample.
template <class Layout>
bool OrderIsUnobservable(const ImageClassData &source, const ImageClassData &dest, int32_t columns, int32_t rows) {
  return PixelsAreApart<Layout>(dest) && RowsAreApart(dest, RangeOf(Layout::OffsetsOf(dest)), columns, rows) &&
         ImagesAreApart(source, dest, columns, rows);
}

}  // namespace zvk::pixels
