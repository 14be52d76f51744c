#include "image/pixel_work.h"

#include <algorithm>

#include "image/rows.h"

namespace zvk::image {

namespace {

// True if the pixels may end with the image. Those of a view do not, but for what the view itself holds.
bool MayEndPixels(const ImageClassData &image) {
  return IsUsable(image) &&
         (image.OwnsBuffer || image.IsMapped || image.MemoryTarget != nullptr || image.Target != nullptr);
}

}  // namespace

bool PixelWork::NeedsPixelsOf(const ImageClassData &image) const {
  return !hasEnded_ && std::ranges::any_of(images_, [&](const ImageClassData *worked) {
    return worked == &image || (MayEndPixels(image) && IsUsable(*worked) && SharesStorage(image, *worked));
  });
}

void AwaitPixelWork(const ImageClassData &image) {
  PixelWork::ForEach([&](PixelWork &work) {
    if (!work.NeedsPixelsOf(image)) return;
    work.await_(work.context_);
    work.hasEnded_ = true;
  });
}

}  // namespace zvk::image
