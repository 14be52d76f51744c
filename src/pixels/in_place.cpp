#include "pixels/in_place.h"

#include <algorithm>

#include "image/rows.h"
#include "pixels/pixel_watch.h"

namespace zvk::pixels {

std::optional<Rectangle> BeginInPlace(ImageClassData *image, const Rectangle &callers) {
  if (image == nullptr || !IsUsable(*image)) return std::nullopt;
  const Rectangle fitted = FitRectangle(callers, image->Width, image->Height);
  if (IsEmpty(fitted)) return std::nullopt;
  const PixelWatch watch(*image);
  YieldOn(*image);
  if (!watch.HasStorage()) return std::nullopt;
  return fitted;
}

std::span<uint8_t> PixelBytes(const ImageClassData &image, uint8_t *row, int32_t offset, int32_t x, int32_t width) {
  const ptrdiff_t pixelSize = image.PixelSize;
  if (width < 1) return {};
  const ptrdiff_t first = x * pixelSize + offset;
  ptrdiff_t size = width * pixelSize;
  // A clip moves an offset by whole pixels, which does not count here.
  const ptrdiff_t overhang = (offset % pixelSize + pixelSize) % pixelSize;
  if (overhang > 0)
    size -= static_cast<ptrdiff_t>(std::clamp<int64_t>(first + size - BytesFromRow(image, row), 0, overhang));
  return {row + first, static_cast<size_t>(size)};
}

}  // namespace zvk::pixels
