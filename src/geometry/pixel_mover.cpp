#include "geometry/pixel_mover.h"

#include <algorithm>

#include "geometry/pixel_reversal.h"

namespace zvk::geometry {

PixelMover::PixelMover(const Side &source, const Side &dest, std::span<const SampleMove> moves, bool packedAlike)
    : source_(source), dest_(dest), mover_(source.pixelSize, dest.pixelSize, moves), packedAlike_(packedAlike) {}

// Pixels that are not packed alike take two steps: to their places with all the bytes between them, then, in these
// places, sample by sample to the other layout. The last pixel of a run is read by itself, as the bytes behind its last
// sample need not be there.

void PixelMover::Reverse(const uint8_t *source, uint8_t *dest, int32_t count) const {
  if (packedAlike_) {
    ReversalOf(source_.pixelSize)(source, dest, count);
    return;
  }
  if (count < 1) return;
  constexpr int32_t kMostPixels = 256;
  std::array<uint8_t, ptrdiff_t{kMostPixels} *kLargestPixel> reversed = {};
  int32_t rest = count - 1;
  mover_.MoveInOrder(source + ptrdiff_t{rest} * source_.pixelSize, dest, 1);
  dest += dest_.pixelSize;
  while (rest > 0) {
    const int32_t part = std::min(rest, kMostPixels);
    rest -= part;
    ReversalOf(source_.pixelSize)(source + ptrdiff_t{rest} * source_.pixelSize, reversed.data(), part);
    mover_(reversed.data(), dest, part);
    dest += ptrdiff_t{part} * dest_.pixelSize;
  }
}

void PixelMover::Transpose(const PixelBlock &block) const {
  if (packedAlike_) {
    TranspositionOf(source_.pixelSize)(block);
    return;
  }
  std::array<uint8_t, ptrdiff_t{kBlockEdge} *kBlockEdge *kLargestPixel> transposed = {};
  std::array<uint8_t *, kBlockEdge> rows = {};
  const int32_t last = block.width - 1;
  for (int32_t x = 0; x < last; ++x) rows[x] = transposed.data() + ptrdiff_t{x} * kBlockEdge * kLargestPixel;
  TranspositionOf(source_.pixelSize)({block.sourceRows, rows.data(), last, block.height});
  for (int32_t x = 0; x < last; ++x) mover_(rows[x], block.destRows[x], block.height);
  for (int32_t y = 0; y < block.height; ++y) {
    mover_.MoveInOrder(block.sourceRows[y] + ptrdiff_t{last} * source_.pixelSize,
                       block.destRows[last] + ptrdiff_t{y} * dest_.pixelSize, 1);
  }
}

}  // namespace zvk::geometry
