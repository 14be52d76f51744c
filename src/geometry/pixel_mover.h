// Whole pixels moved between two layouts as runs of bytes: the fast forms of all moves, for pixels that are read and
// pixels that are written where nobody can notice in what order that happens.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "geometry/pixel_transposition.h"
#include "image/image_record.h"
#include "pixels/layouts.h"
#include "pixels/sample_mover.h"

namespace zvk::geometry {

// The way of the samples of a layout from one image into another one, or into itself. All addresses are those of a
// pixel's first sample, and no run that is read may overlap one that is written. No byte is touched in front of the
// first sample of a run or behind the last one.
class PixelMover {
 public:
  template <class L>
  PixelMover(L /*layout*/, const ImageClassData &source, const ImageClassData &dest)
      : PixelMover({source.PixelSize, L::FirstOffset(source)}, {dest.PixelSize, L::FirstOffset(dest)},
                   MovesBetween<L>(source, dest), L::PackedAlike(source, dest)) {}

  // The first sample of a pixel in a row.
  const uint8_t *SourceAt(const uint8_t *row, int32_t x) const { return row + source_.At(x); }
  uint8_t *DestAt(uint8_t *row, int32_t x) const { return row + dest_.At(x); }

  // `count` pixels in their order.
  void Copy(const uint8_t *source, uint8_t *dest, int32_t count) const { mover_(source, dest, count); }
  // `count` pixels in reverse order. For images whose pixels lie apart.
  void Reverse(const uint8_t *source, uint8_t *dest, int32_t count) const;
  // A block of at most kBlockEdge pixels a side, with rows and columns exchanged. For images whose pixels lie apart.
  static constexpr int32_t kBlockEdge = 64;
  void Transpose(const PixelBlock &block) const;

 private:
  struct Side {
    int32_t pixelSize;
    int32_t firstOffset;

    ptrdiff_t At(int32_t x) const { return firstOffset + ptrdiff_t{x} * pixelSize; }
  };

  PixelMover(const Side &source, const Side &dest, std::span<const SampleMove> moves, bool packedAlike);

  // Counted from the first samples.
  template <class L>
  static std::array<SampleMove, L::channelCount> MovesBetween(const ImageClassData &source,
                                                              const ImageClassData &dest) {
    const auto from = L::OffsetsOf(source);
    const auto to = L::OffsetsOf(dest);
    std::array<SampleMove, L::channelCount> moves = {};
    for (size_t i = 0; i < L::channelCount; ++i) {
      moves[i] = {from[i] - L::FirstOffset(source), to[i] - L::FirstOffset(dest)};
    }
    return moves;
  }

  Side source_;
  Side dest_;
  SampleMover mover_;
  bool packedAlike_;  // whole pixels can be moved as they are
};

}  // namespace zvk::geometry
