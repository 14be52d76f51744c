#include "levels/compare_images.h"

#include "pixels/pixel_watch.h"
#include "pixels/row_walker.h"

namespace zvk::levels {

namespace {

bool HaveSameShape(const ImageClassData &a, const ImageClassData &b) {
  return a.Width == b.Width && a.Height == b.Height && a.BitsPerComponent == b.BitsPerComponent &&
         a.HasAlpha == b.HasAlpha && a.IsRGB == b.IsRGB && a.IsCMYK == b.IsCMYK && a.IsGray == b.IsGray;
}

}  // namespace

int64_t CompareImages(REALobject instance, REALobject other) {
  constexpr int64_t kDifferent = -1;
  ImageClassData *image = RecordOf(instance);
  ImageClassData *second = RecordOf(other);
  if (image == nullptr || second == nullptr || !second->Valid || !HaveSameShape(*image, *second)) return kDifferent;
  if (!IsUsable(*image)) return kDifferent;
  const PixelWatch watchedImage(*image), watchedSecond(*second);
  YieldOn(*image);
  if (!IsUsable(*second)) return kDifferent;
  YieldOn(*second);
  // The yields let other code of the host run, which may have closed or constructed anew either image.
  if (!IsUsable(*image) || !IsUsable(*second)) return kDifferent;
  if (!watchedImage.HasStorage() || !watchedSecond.HasStorage()) return kDifferent;
  if (!image->IsGray && !image->IsRGB && !image->IsCMYK) return kDifferent;
  // The pixels are not read. A mapped image's block is moved by the fetches all the same.
  ForEachRowPair(*second, *image, image->Height, [](const uint8_t *, const uint8_t *) {});
  return (int64_t{image->Height} - 1) * image->Width + image->Width;
}

}  // namespace zvk::levels
