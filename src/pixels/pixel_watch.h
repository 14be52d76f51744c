// What becomes of an image while other code of the host runs. In a yield that code may close the image or construct it
// anew, or do so to the image that a view shows.
#pragma once

#include <cstdint>

#include "image/image_record.h"
#include "image/rows.h"

namespace zvk::pixels {

// An image that is worked on, and what it was at first. To be made before the host first has time.
class PixelWatch {
 public:
  explicit PixelWatch(ImageClassData &image);

  ImageClassData &Record() const { return image_; }

  // True if the image has not lost its pixels with an image that it shows. Whether it has been closed itself is not
  // asked here. Of a view that had lost them before, nothing is known.
  bool HasStorage() const;

  // True if the image has the very pixels that it had at first, in rows of the same size.
  bool HasSamePixels() const { return HasStorage() && image::HasSamePixels(before_, image_); }

  const ImageClassData &Before() const { return before_; }

  // How many rows there are now that hold `columns` columns, `pixelSize` bytes apart; 0 if the pixels are gone.
  int32_t RowsOf(int32_t columns, int32_t pixelSize) const;

 private:
  ImageClassData &image_;
  const ImageClassData before_;
  const bool hadStorage_;
};

}  // namespace zvk::pixels
