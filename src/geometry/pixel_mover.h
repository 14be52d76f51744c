// Whole pixels moved between two layouts as runs of bytes: the fast forms of all moves, for pixels that are read and
// pixels that are written where nobody can notice in what order that happens.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "geometry/pixel_transposition.h"
#include "image/image_record.h"
#include "image/layouts.h"
#include "image/sample_mover.h"

namespace zvk {

// The way of the samples of a layout from one image into another one, or into itself. All addresses are those of a
// pixel's first sample, and no run that is read may overlap one that is written. No byte is touched in front of the
// first sample of a run or behind the last one.
class PixelMover {
 public:
  template <class L>
  PixelMover(L /*layout*/, const ImageClassData &source, const ImageClassData &dest)
      : PixelMover(SideOf<L>(source), SideOf<L>(dest), MovesBetween<L>(source, dest), L::PackedAlike(source, dest)) {}

  // True if the samples of each pixel lie apart from those of the next one, on both sides. Only then may pixels be
  // reversed or transposed.
  bool MovesRuns() const { return source_.span <= source_.pixelSize && dest_.span <= dest_.pixelSize; }

  // The first sample of a pixel in a row.
  const uint8_t *SourceAt(const uint8_t *row, int32_t x) const { return row + source_.At(x); }
  uint8_t *DestAt(uint8_t *row, int32_t x) const { return row + dest_.At(x); }

  // `count` pixels in their order.
  void Copy(const uint8_t *source, uint8_t *dest, int32_t count) const { mover_(source, dest, count); }
  // `count` pixels in reverse order.
  void Reverse(const uint8_t *source, uint8_t *dest, int32_t count) const;
  // A block of at most kBlockEdge pixels a side, with rows and columns exchanged.
  static constexpr int32_t kBlockEdge = 64;
  void Transpose(const PixelBlock &block) const;

 private:
  struct Side {
    int32_t pixelSize;
    int32_t lowest;  // offset of the first sample
    int64_t span;    // bytes from the first sample to the last one

    ptrdiff_t At(int32_t x) const { return lowest + ptrdiff_t{x} * pixelSize; }
  };

  PixelMover(const Side &source, const Side &dest, std::span<const SampleMove> moves, bool packedAlike);

  template <class L>
  static Side SideOf(const ImageClassData &image) {
    const auto offsets = L::OffsetsOf(image);
    const auto [lowest, highest] = std::minmax_element(offsets.begin(), offsets.end());
    return {image.PixelSize, *lowest, int64_t{*highest} - *lowest + 1};
  }

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

}  // namespace zvk
