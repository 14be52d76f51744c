// Several rows of one image held at a time, for what makes a pixel out of those above and below it. Rows that stay
// where they are are used in place; of a mapped file, whose one block of rows moves, copies are held.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/resources.h"
#include "image/channels.h"
#include "image/image_record.h"

namespace zvk::pixels {

// A window of rows that slides over an image which nobody writes to meanwhile. In a mapped file each row is fetched and
// copied once, so that a walk in one direction moves the block no more often than a walk over single rows.
class RowWindow {
 public:
  // For up to `rows` rows (1 or more) next to each other, and the samples at `offsets` in the first `columns` pixels.
  RowWindow(ImageClassData &image, const OffsetRange &offsets, int32_t columns, int32_t rows);

  // False if there is no memory for the copies, or if they would take more than 64 MiB.
  explicit operator bool() const { return inPlace_ || (copies_ && held_); }

  // The address of row y, as FetchRow gives it; nil if the row cannot be had. It lasts until a row is asked for that is
  // as many rows away as the window has or more, and never over a yield. No more than the samples may be read there.
  const uint8_t *Row(int32_t y);

  // Has the rows fetched anew: behind a yield, as the host may have written to the image.
  void Forget();

 private:
  ImageClassData &image_;
  int32_t rows_;
  ptrdiff_t first_;  // byte of a row with which its copy begins
  int64_t bytes_;    // of a copy
  bool inPlace_;
  ZeroedBuffer<uint8_t> copies_;
  ZeroedBuffer<int32_t> held_;  // for each copy the row that it is of, counted from 1; 0: none
};

}  // namespace zvk::pixels
