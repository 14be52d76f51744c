#include "pixels/pixel_watch.h"

#include <tuple>

namespace zvk::pixels {

namespace {

// True if the image itself holds the caller's block or the picture that its pixels are in, and so needs no other image.
bool HoldsMemory(const ImageClassData &image) { return image.MemoryTarget != nullptr || image.Target != nullptr; }

// False for a view that shows the pixels of an image which has been closed or constructed anew.
bool ShowsLivingPixels(const ImageClassData &image) {
  if (HoldsMemory(image)) return true;
  const auto storage = [&image](const ImageClassData &record) {
    return std::tuple(image.IsMapping ? nullptr : record.Buffer, record.IsMapping, record.FileHandle, record.TotalSize);
  };
  for (const ImageClassData *parent = RecordOf(image.Parent); parent != nullptr; parent = RecordOf(parent->Parent)) {
    if (parent->GetRow == nullptr || storage(*parent) != storage(image)) return false;
    if (HoldsMemory(*parent)) return true;
  }
  return true;
}

}  // namespace

PixelWatch::PixelWatch(ImageClassData &image) : image_(image), before_(image), hadStorage_(ShowsLivingPixels(image)) {}

bool PixelWatch::HasStorage() const { return !hadStorage_ || ShowsLivingPixels(image_); }

int32_t PixelWatch::RowsOf(int32_t columns, int32_t pixelSize) const {
  if (!IsUsable(image_) || !HasStorage()) return 0;
  return int64_t{columns} * pixelSize <= int64_t{image_.Width} * image_.PixelSize ? image_.Height : 0;
}

}  // namespace zvk::pixels
