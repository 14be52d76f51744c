#include "pictures/pixel_rows.h"

#include <algorithm>

#include "pixels/overlap.h"

namespace zvk::pictures {

uint8_t *DestPixel(ImageClassData &image, const Transfer &transfer, int32_t i) {
  const int32_t y = transfer.destY + i;
  if (!HasPixels(image) || y >= image.Height || transfer.width > image.Width - transfer.destX) return nullptr;
  uint8_t *row = image.GetRow(&image, y);
  return row != nullptr ? row + static_cast<ptrdiff_t>(transfer.destX) * image.PixelSize : nullptr;
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
