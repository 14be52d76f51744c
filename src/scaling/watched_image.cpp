#include "scaling/watched_image.h"

#include <algorithm>
#include <tuple>

#include "image/rows.h"

namespace zvk::scaling {

namespace {

// False for a view that shows the pixels of an image which has been closed or constructed anew. A view that holds the
// caller's block or the picture itself needs no other image.
bool HasStorage(const ImageClassData &image) {
  if (image.MemoryTarget != nullptr || image.Target != nullptr) return true;
  const auto storage = [&image](const ImageClassData &record) {
    return std::tuple(image.IsMapping ? nullptr : record.Buffer, record.IsMapping, record.FileHandle, record.TotalSize);
  };
  for (const ImageClassData *parent = RecordOf(image.Parent); parent != nullptr; parent = RecordOf(parent->Parent)) {
    if (parent->GetRow == nullptr || storage(*parent) != storage(image)) return false;
  }
  return true;
}

}  // namespace

WatchedImage::WatchedImage(ImageClassData &image, int32_t promisedRows)
    : image_(&image), before_(image), hadStorage_(HasStorage(image)), promisedRows_(promisedRows) {}

int32_t WatchedImage::RowsOf(int32_t columns, int32_t pixelSize) const {
  const ImageClassData &image = *image_;
  if (!IsUsable(image) || (hadStorage_ && !HasStorage(image))) return 0;
  if (promisedRows_ > 0 && HasSamePixels(before_, image)) return std::max(image.Height, promisedRows_);
  return int64_t{columns} * pixelSize <= int64_t{image.Width} * image.PixelSize ? image.Height : 0;
}

}  // namespace zvk::scaling
