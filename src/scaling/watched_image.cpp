#include "scaling/watched_image.h"

#include <algorithm>

namespace zvk::scaling {

int32_t WatchedImage::RowsOf(int32_t columns, int32_t pixelSize) const {
  if (promisedRows_ > 0 && IsUsable(Record()) && watch_.HasSamePixels()) {
    return std::max(Record().Height, promisedRows_);
  }
  return watch_.RowsOf(columns, pixelSize);
}

}  // namespace zvk::scaling
