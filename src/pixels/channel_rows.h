// Rows of pixels as a filter sees them that changes each pixel by itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "image/image_record.h"
#include "image/rows.h"
#include "pixels/overlap.h"

namespace zvk::pixels {

// A row of one image: its first pixel, the distance between two, and where the samples lie in one, in bytes. Handed on
// by value, so that stores to pixels leave it in registers.
template <class Byte, size_t kChannels>
struct ChannelRow {
  // On to the next pixel. The compiler may not look through this step: by addresses it cannot tell whether two mappings
  // of a file overlap, and it would reckon the address anew from those of the samples, which takes longer.
  void Next() {
    pixel += step;
    asm volatile("" : "+r"(pixel));
  }

  Byte *pixel;
  ptrdiff_t step;
  std::array<int32_t, kChannels> offsets;
};

// The rows of a layout's images as runs of bytes, where that serves: for filters that treat all channels alike.
template <class Layout>
class ByteRuns {
 public:
  ByteRuns(const ImageClassData &source, const ImageClassData &dest)
      : served_(Layout::PackedAlike(source, dest) && !MayBeMappedTwice(source, dest)),
        firstOfSource_(Layout::FirstOffset(source)),
        firstOfDest_(Layout::FirstOffset(dest)),
        count_(ptrdiff_t{source.Width} * Layout::channelCount) {}

  // Calls visit(source, dest, count) with the samples of a pair of rows if those are alike in both, and both rows share
  // all of them or none. False, without a call, for a pair that is to be walked pixel by pixel.
  template <class Visitor>
  bool Visit(const uint8_t *sourceRow, uint8_t *destRow, Visitor &&visit) const {
    if (!served_) return false;
    const uint8_t *source = sourceRow + firstOfSource_;
    uint8_t *dest = destRow + firstOfDest_;
    if (source != dest && RunsOverlap(source, count_, dest, count_)) return false;
    visit(source, dest, count_);
    return true;
  }

 private:
  bool served_;
  ptrdiff_t firstOfSource_;
  ptrdiff_t firstOfDest_;
  ptrdiff_t count_;
};

}  // namespace zvk::pixels
