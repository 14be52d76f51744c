#include "pictures/pixel_rows.h"

#include <algorithm>

#include "pixels/overlap.h"
#include "pixels/row_walker.h"

namespace zvk::pictures {

uint8_t *RowOf(const PixelWatch &image, const Rectangle &rectangle, int32_t i) {
  const int32_t y = rectangle.y + i;
  const bool holds = y < image.RowsOf(rectangle.x + rectangle.width, image.Record().PixelSize);
  return holds ? FetchRow(image.Record(), y) : nullptr;
}

uint8_t *DestPixel(const PixelWatch &image, const Transfer &transfer, int32_t i) {
  uint8_t *row = RowOf(image, {transfer.destX, transfer.destY, transfer.width, transfer.height}, i);
  return row != nullptr ? row + ptrdiff_t{transfer.destX} * image.Record().PixelSize : nullptr;
}

const uint8_t *SourcePixel(const PictureEditor &picture, const Transfer &transfer) {
  return picture.RowAddress + static_cast<ptrdiff_t>(transfer.sourceX) * picture.PixelBytes;
}

std::array<SampleMove, 3> ColourMoves(const PixelWord &word, const ImageClassData &image) {
  return {{{word.red, image.RedOffset}, {word.green, image.GreenOffset}, {word.blue, image.BlueOffset}}};
}

bool LieApart(const uint8_t *pixels, const PixelReach &reach, const uint8_t *words, int32_t count) {
  constexpr PixelReach kWord{kWordBytes, {0, kWordBytes - 1}};
  return PixelsAreApart(reach.offsets, reach.pixelSize) && !RowsOverlap(pixels, reach, words, kWord, count);
}

const SampleMover &RowMover::For(int32_t sourcePixelSize, int32_t destPixelSize, std::span<const SampleMove> moves) {
  const bool kept = mover_ && sourcePixelSize == sourcePixelSize_ && destPixelSize == destPixelSize_ &&
                    std::ranges::equal(moves, std::span(moves_).first(count_));
  if (!kept) {
    sourcePixelSize_ = sourcePixelSize;
    destPixelSize_ = destPixelSize;
    count_ = moves.size();
    std::ranges::copy(moves, moves_.begin());
    mover_.emplace(sourcePixelSize, destPixelSize, moves);
  }
  return *mover_;
}

}  // namespace zvk::pictures
