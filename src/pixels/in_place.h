// What the operations share that change a rectangle of one image in place: the fitted rectangle, the yields, and the
// walk from row to row.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "pixels/row_samples.h"

namespace zvk::pixels {

// The part of one row that lies in the rectangle. The row's address holds until the next row is fetched.
struct RowPart {
  uint8_t *row;
  int32_t x;
  int32_t width;  // pixels, 0 or more

  PixelRow PixelsOf(const ImageClassData &image) const {
    return {row + ptrdiff_t{x} * image.PixelSize, image.PixelSize, width};
  }
};

enum class RowYield : uint8_t { AfterEachRow, None };

// Fits the caller's rectangle and yields once. Empty, without a yield, for a nil or unusable image and for a rectangle
// of which nothing is left.
std::optional<Rectangle> BeginInPlace(ImageClassData *image, const Rectangle &callers);

// Calls visit(RowPart) for each row of a fitted rectangle, from the top; rows without width are visited as well, also
// those of an image whose pixels cannot be reached. A row that cannot be had (a block that cannot be mapped) is left
// out.
template <class Visitor>
void ForEachRow(ImageClassData &image, const Rectangle &fitted, RowYield yield, Visitor &&visit) {
  for (int32_t y = fitted.y;; ++y) {
    // Asked again for each row: other code of the host may have run since, and closed the image or constructed it anew.
    const Rectangle inside = CutToImage(fitted, image.Width, image.Height);
    const bool isServed = inside.width > 0 ? HasPixels(image) : HasRows(image);
    if (!isServed || y - inside.y >= inside.height) return;
    uint8_t *row = image.GetRow(&image, y);
    if (row != nullptr) visit(RowPart{row, inside.x, inside.width});
    if (yield == RowYield::AfterEachRow) YieldOn(image);
  }
}

// The bytes of `width` whole pixels of a row, from `offset` bytes behind the start of column x on. An offset that the
// host program has moved makes them hang over the last pixel; what would lie behind the storage then is left out. Empty
// for a width below 1.
std::span<uint8_t> PixelBytes(const ImageClassData &image, uint8_t *row, int32_t offset, int32_t x, int32_t width);

}  // namespace zvk::pixels
