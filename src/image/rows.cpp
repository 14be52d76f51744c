#include "image/rows.h"

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "image/channels.h"

namespace zvk {

namespace {

// Bytes from first up to, not including, end.
struct ByteRange {
  const uint8_t *first;
  const uint8_t *end;
};

bool Overlap(const ByteRange &a, const ByteRange &b) {
  const std::less<> before;
  return before(a.first, b.end) && before(b.first, a.end);
}

// Bytes that a row may reach from its address on: the offsets of a clip may lead beyond PixelSize, and a caller's
// RowSize may be shorter than the pixels.
int64_t RowExtent(const ImageClassData &image) {
  int32_t offset = 0;
  for (const ChannelField &channel : kChannels) offset = std::max(offset, image.*channel.offset);
  return std::max(std::abs(int64_t{image.RowSize}), offset + int64_t{image.Width} * image.PixelSize);
}

// The bytes that the rows of an image with a Buffer span, gaps and all; rows may run backwards.
ByteRange LinearRange(const ImageClassData &image) {
  const int64_t top = int64_t{image.RowOffset} * image.RowSize;
  const int64_t bottom = (int64_t{image.RowOffset} + image.Height - 1) * image.RowSize;
  return {image.Buffer + std::min(top, bottom), image.Buffer + std::max(top, bottom) + RowExtent(image)};
}

bool TableTouches(const ImageClassData &table, const ByteRange &range) {
  const int64_t extent = RowExtent(table);
  return std::any_of(table.RowTable, table.RowTable + table.Height, [&](const uint8_t *row) {
    return row != nullptr && Overlap({row, row + extent}, range);
  });
}

}  // namespace

bool SharesStorage(const ImageClassData &a, const ImageClassData &b) {
  if (&a == &b) return true;
  // Another image may have the same file open, or lie over a block of memory that is a view's mapping of it.
  if (!HasFixedRows(a) || !HasFixedRows(b)) return true;
  if (a.RowTable != nullptr && b.RowTable != nullptr) return a.RowTable == b.RowTable;
  if (a.RowTable != nullptr) return TableTouches(a, LinearRange(b));
  if (b.RowTable != nullptr) return TableTouches(b, LinearRange(a));
  return Overlap(LinearRange(a), LinearRange(b));
}

}  // namespace zvk
