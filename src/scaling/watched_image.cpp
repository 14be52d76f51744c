#include "scaling/watched_image.h"

#include <algorithm>

namespace zvk::scaling {

WatchedImage::WatchedImage(ImageClassData &image, int32_t promisedRows)
    : image_(&image), watch_(image), promisedRows_(promisedRows) {}

int32_t WatchedImage::RowsOf(int32_t columns, int32_t pixelSize) const {
  const ImageClassData &image = *image_;
  if (!IsUsable(image) || !watch_.HasStorage()) return 0;
  if (promisedRows_ > 0 && watch_.HasSamePixels()) return std::max(image.Height, promisedRows_);
  return int64_t{columns} * pixelSize <= int64_t{image.Width} * image.PixelSize ? image.Height : 0;
}

}  // namespace zvk::scaling
