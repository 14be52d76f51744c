#include "pixelops/in_place.h"

#include <algorithm>
#include <cstdlib>

namespace zvk {

std::optional<Rectangle> BeginInPlace(ImageClassData *image, const Rectangle &callers) {
  if (image == nullptr || !IsUsable(*image)) return std::nullopt;
  const Rectangle fitted = FitRectangle(callers, image->Width, image->Height);
  if (IsEmpty(fitted)) return std::nullopt;
  YieldOn(*image);
  return fitted;
}

namespace {

// How many bytes the storage has from the start of a row on. A row of a table, or of a mapped block, counts by itself.
ptrdiff_t BytesFromRow(const ImageClassData &image, const uint8_t *row) {
  const ptrdiff_t rowBytes = std::abs(ptrdiff_t{image.RowSize});
  if (image.RowTable != nullptr || image.IsMapping) return rowBytes;
  return std::max(static_cast<ptrdiff_t>(image.TotalSize), rowBytes) - (row - image.Buffer);
}

}  // namespace

std::span<uint8_t> PixelBytes(const ImageClassData &image, uint8_t *row, int32_t offset, int32_t x, int32_t width) {
  const ptrdiff_t pixelSize = image.PixelSize;
  if (width < 1 || pixelSize < 1) return {};
  const ptrdiff_t first = x * pixelSize + offset;
  ptrdiff_t size = width * pixelSize;
  // A clip moves an offset by whole pixels, which does not count here.
  const ptrdiff_t overhang = (offset % pixelSize + pixelSize) % pixelSize;
  if (overhang > 0) size -= std::clamp<ptrdiff_t>(first + size - BytesFromRow(image, row), 0, overhang);
  return {row + first, static_cast<size_t>(size)};
}

}  // namespace zvk
