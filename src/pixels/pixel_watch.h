// What becomes of an image while other code of the host runs. In a yield that code may close the image or construct it
// anew, or do so to the image that a view shows.
#pragma once

#include "image/image_record.h"
#include "image/rows.h"

namespace zvk::pixels {

// An image that is worked on, and what it was at first. To be made before the host first has time.
class PixelWatch {
 public:
  explicit PixelWatch(const ImageClassData &image);

  // True if the image has not lost its pixels with an image that it shows. Whether it has been closed itself is not
  // asked here. Of a view that had lost them before, nothing is known.
  bool HasStorage() const;

  // True if the image has the very pixels that it had at first, in rows of the same size.
  bool HasSamePixels() const { return HasStorage() && image::HasSamePixels(before_, image_); }

  const ImageClassData &Before() const { return before_; }

 private:
  const ImageClassData &image_;
  const ImageClassData before_;
  const bool hadStorage_;
};

}  // namespace zvk::pixels
