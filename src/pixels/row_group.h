// The rows that an operation with a destination needs at the same time, and the walk over them.
#pragma once

#include <cstdint>

#include "host/resources.h"
#include "image/image_record.h"
#include "image/rows.h"

namespace zvk::pixels {

// One row that is written, and one or two that are read.
class RowGroup {
 public:
  // Fetches row destY of dest, then row sourceY of first and of second (nil: not needed). False if one of them cannot
  // be had. The addresses last until the next fetch on any of the images.
  bool Fetch(ImageClassData &dest, int32_t destY, ImageClassData &first, ImageClassData *second, int32_t sourceY);

  uint8_t *Dest() const { return dest_; }
  const uint8_t *First() const { return first_; }
  const uint8_t *Second() const { return second_; }  // nil if it is not needed

 private:
  bool KeepCopy(const uint8_t *row, int32_t size);

  uint8_t *dest_ = nullptr;
  const uint8_t *first_ = nullptr;
  const uint8_t *second_ = nullptr;
  ZeroedBuffer<uint8_t> copy_;
  int32_t copySize_ = 0;
};

// Calls visit(group) for `height` rows, those of dest from destY on and those of the others from sourceY on (second may
// be nil). A group of which a row cannot be had is left out. Yields on dest after each row. False if it ended early,
// because the host has closed one of the images in a yield or has given it other pixels.
template <class Visitor>
bool ForEachRowGroup(ImageClassData &dest, int32_t destY, ImageClassData &first, ImageClassData *second,
                     int32_t sourceY, int32_t height, Visitor &&visit) {
  const ImageClassData destBefore = dest, firstBefore = first;
  const ImageClassData secondBefore = second != nullptr ? *second : first;
  RowGroup rows;
  bool hostRan = false;
  for (int32_t i = 0; i < height; ++i) {
    if (hostRan && !(HasSamePixels(destBefore, dest) && HasSamePixels(firstBefore, first) &&
                     HasSamePixels(secondBefore, second != nullptr ? *second : first))) {
      return false;
    }
    if (rows.Fetch(dest, destY + i, first, second, sourceY + i)) visit(rows);
    hostRan = dest.Yield.YieldTicks != 0;
    YieldOn(dest);
  }
  return true;
}

}  // namespace zvk::pixels
