#include "compositing/combine.h"

#include "compositing/combine_kernels.h"
#include "compositing/copy_pixels.h"
#include "compositing/flat_colours.h"
#include "image/image_record.h"
#include "image/rectangle.h"
#include "pixels/pixel_watch.h"

namespace zvk::compositing {

namespace {

constexpr int32_t kNoColour = -1;

bool HasWideSamples(const ImageClassData &image) { return image.BitsPerComponent == 16; }

// True if the mask lies over the image pixel by pixel.
bool Covers(const ImageClassData &mask, const ImageClassData &image) {
  return mask.Valid && HasPixels(mask) && mask.Width == image.Width && mask.Height == image.Height;
}

// Gives both images time, each once it has been found usable. False if one is not, or is no longer after the yields.
bool AreReady(ImageClassData &dest, ImageClassData &image) {
  const PixelWatch watchedDest(dest), watchedImage(image);
  if (!IsUsable(dest)) return false;
  YieldOn(dest);
  if (!IsUsable(image)) return false;
  YieldOn(image);
  return IsUsable(dest) && IsUsable(image) && watchedDest.HasStorage() && watchedImage.HasStorage();
}

// Calls blend(fitted) with what of a caller's transfer lies in both images. False, without a call, if that is nothing;
// but true if only the cut of sums that have wrapped leaves nothing.
template <class Blend>
bool BlendFitted(const Transfer &transfer, const ImageClassData &dest, const ImageClassData &image, Blend &&blend) {
  const Transfer fitted = FitTransfer(transfer, dest.Width, dest.Height, image.Width, image.Height);
  if (IsEmpty(fitted)) return false;
  const Transfer cut = CutToImages(fitted, dest.Width, dest.Height, image.Width, image.Height);
  if (!IsEmpty(cut)) blend(cut);
  return true;
}

}  // namespace

// --- the cases ---

uint8_t Case2(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask, int32_t destX,
              int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height) {
  ImageClassData *dest = RecordOf(instance), *source = RecordOf(image), *keep = RecordOf(mask);
  if (dest == nullptr || source == nullptr || keep == nullptr) return false;
  if (!dest->Valid || !source->Valid || !keep->Valid) return false;
  if (HasWideSamples(*dest) || HasWideSamples(*source) || HasWideSamples(*keep)) return false;
  if (!Covers(*keep, *source)) return false;
  const PixelWatch watchedMask(*keep);
  if (!AreReady(*dest, *source) || !Covers(*keep, *source) || !watchedMask.HasStorage()) return false;
  return BlendFitted({destX, destY, width, height, sourceX, sourceY}, *dest, *source, [&](const Transfer &fitted) {
    const auto kernel = preMultipliedSource ? Case2pt : Case2pf;
    kernel(*dest, *source, *keep, fitted.destX, fitted.destY, fitted.width, fitted.height, fitted.sourceX,
           fitted.sourceY);
  });
}

namespace {

// A flat colour through the image.
bool CombineForeground(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                       int32_t colour) {
  // Samples of 16 bits are not refused here: they count by their first bytes.
  if (!dest.Valid || !image.Valid || !AreReady(dest, image)) return false;
  return BlendFitted(transfer, dest, image,
                     [&](const Transfer &fitted) { BlendFlatForeground(dest, image, premultiplied, fitted, colour); });
}

// The image through a flat colour.
bool CombineThroughColour(ImageClassData &dest, ImageClassData &image, bool premultiplied, const Transfer &transfer,
                          int32_t colour) {
  if (!dest.Valid || !image.Valid || HasWideSamples(dest) || HasWideSamples(image)) return false;
  if (!AreReady(dest, image)) return false;
  return BlendFitted(transfer, dest, image,
                     [&](const Transfer &fitted) { BlendThroughFlatMask(dest, image, premultiplied, fitted, colour); });
}

}  // namespace

// --- the handlers ---

uint8_t PictureCombine1pm(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                          int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                          uint8_t useColours, int32_t foreColour, int32_t maskColour) {
  if (instance == nullptr || image == nullptr || width <= 0 || height <= 0) return false;
  if (mask == nullptr && foreColour < 0 && maskColour < 0) {
    return rbCopyPixels8(instance, image, destX, destY, width, height, sourceX, sourceY);
  }
  if (mask != nullptr) {
    return Case2(instance, image, preMultipliedSource, mask, destX, destY, sourceX, sourceY, width, height);
  }
  ImageClassData &dest = *RecordOf(instance);
  ImageClassData &source = *RecordOf(image);
  const bool premultiplied = preMultipliedSource != 0;
  const Transfer transfer{destX, destY, width, height, sourceX, sourceY};
  if (maskColour < 0) return CombineForeground(dest, source, premultiplied, transfer, foreColour);
  return CombineThroughColour(dest, source, premultiplied, transfer, useColours ? maskColour : 0);
}

uint8_t PictureCombine2pm(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                          int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                          uint8_t useColours, int32_t foreColour) {
  return PictureCombine1pm(instance, image, preMultipliedSource, mask, destX, destY, sourceX, sourceY, width, height,
                           useColours, foreColour, kNoColour);
}

uint8_t PictureCombine3pm(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                          int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width, int32_t height,
                          uint8_t /*useColours*/) {
  return PictureCombine1pm(instance, image, preMultipliedSource, mask, destX, destY, sourceX, sourceY, width, height,
                           false, kNoColour, kNoColour);
}

uint8_t PictureCombine1(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                        int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                        int32_t foreColour, int32_t maskColour) {
  return PictureCombine1pm(instance, image, false, mask, destX, destY, sourceX, sourceY, width, height, useColours,
                           foreColour, maskColour);
}

uint8_t PictureCombine2(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                        int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                        int32_t foreColour) {
  return PictureCombine2pm(instance, image, false, mask, destX, destY, sourceX, sourceY, width, height, useColours,
                           foreColour);
}

uint8_t PictureCombine3(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                        int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours) {
  return PictureCombine3pm(instance, image, false, mask, destX, destY, sourceX, sourceY, width, height, useColours);
}

uint8_t PictureCombine1c(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                         int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                         int32_t foreColour, int32_t maskColour) {
  return PictureCombine1(instance, image, mask, destX, destY, sourceX, sourceY, width, height, useColours, foreColour,
                         maskColour);
}

uint8_t PictureCombine2c(REALobject instance, REALobject image, REALobject mask, int32_t destX, int32_t destY,
                         int32_t sourceX, int32_t sourceY, int32_t width, int32_t height, uint8_t useColours,
                         int32_t foreColour) {
  return PictureCombine2(instance, image, mask, destX, destY, sourceX, sourceY, width, height, useColours, foreColour);
}

uint8_t PictureCombine1pmc(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                           int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width,
                           int32_t height, uint8_t useColours, int32_t foreColour, int32_t maskColour) {
  return PictureCombine1pm(instance, image, preMultipliedSource, mask, destX, destY, sourceX, sourceY, width, height,
                           useColours, foreColour, maskColour);
}

uint8_t PictureCombine2pmc(REALobject instance, REALobject image, uint8_t preMultipliedSource, REALobject mask,
                           int32_t destX, int32_t destY, int32_t sourceX, int32_t sourceY, int32_t width,
                           int32_t height, uint8_t useColours, int32_t foreColour) {
  return PictureCombine2pm(instance, image, preMultipliedSource, mask, destX, destY, sourceX, sourceY, width, height,
                           useColours, foreColour);
}

}  // namespace zvk::compositing
