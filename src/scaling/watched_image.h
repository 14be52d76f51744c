// What becomes of the images of a scale while other code of the host runs.
#pragma once

#include <cstdint>

#include "image/image_record.h"
#include "pixels/pixel_watch.h"

namespace zvk::scaling {

// An image that is worked on, and what it was at first. In a yield the host may close it, or construct it anew in
// another size.
class WatchedImage {
 public:
  // `promisedRows`: so many rows, of any length, the caller answers for as long as the image is what it was; 0: none.
  explicit WatchedImage(ImageClassData &image, int32_t promisedRows = 0) : watch_(image), promisedRows_(promisedRows) {}

  ImageClassData &Record() const { return watch_.Record(); }

  // How many rows there are now of `columns` columns, `pixelSize` bytes apart: its own if they hold so much, and the
  // promised ones; 0 if its pixels are gone.
  int32_t RowsOf(int32_t columns, int32_t pixelSize) const;

 private:
  PixelWatch watch_;
  int32_t promisedRows_;
};

}  // namespace zvk::scaling
