// What the operations share that change a rectangle of one image in place, beside the walk from row to row: the fitted
// rectangle, the first yield, and the bytes of a part of a row.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "pixels/row_walker.h"

namespace zvk::pixels {

// Fits the caller's rectangle and yields once. Empty, without a yield, for a nil or unusable image and for a rectangle
// of which nothing is left; also if the host, given time, has taken the pixels away that a view shows.
std::optional<Rectangle> BeginInPlace(ImageClassData *image, const Rectangle &callers);

// The bytes of `width` whole pixels of a row, from `offset` bytes behind the start of column x on. An offset that the
// host program has moved makes them hang over the last pixel; what would lie behind the storage then is left out. Empty
// for a width below 1.
std::span<uint8_t> PixelBytes(const ImageClassData &image, uint8_t *row, int32_t offset, int32_t x, int32_t width);

}  // namespace zvk::pixels
