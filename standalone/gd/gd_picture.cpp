#include "standalone/gd/gd_picture.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

namespace standalone {
namespace {

// The record as plug-ins read it is the library's own.
static_assert(offsetof(gdImage, pixels) == offsetof(GDImage, paletteRows));
static_assert(offsetof(gdImage, sx) == offsetof(GDImage, width));
static_assert(offsetof(gdImage, sy) == offsetof(GDImage, height));
static_assert(offsetof(gdImage, colorsTotal) == offsetof(GDImage, colourCount));
static_assert(offsetof(gdImage, red) == offsetof(GDImage, red) && offsetof(gdImage, open) == offsetof(GDImage, open));
static_assert(offsetof(gdImage, transparent) == offsetof(GDImage, transparent));
static_assert(offsetof(gdImage, alpha) == offsetof(GDImage, alpha));
static_assert(offsetof(gdImage, trueColor) == offsetof(GDImage, trueColor));
static_assert(offsetof(gdImage, tpixels) == offsetof(GDImage, trueColorRows));

constexpr uint8_t kWhite = 255;

// 127 and 0 become 0 and 255, and what has gone to 8 bits and back is the same again.
uint8_t AlphaOfGd(int alpha) { return static_cast<uint8_t>(255 - ((alpha << 1) + (alpha >> 6))); }
int AlphaToGd(uint8_t alpha) { return gdAlphaMax - (alpha >> 1); }

int ToGd(Pixel pixel) { return gdTrueColorAlpha(pixel.red, pixel.green, pixel.blue, AlphaToGd(pixel.alpha)); }

OwnedGdImage NewImage(int32_t width, int32_t height) {
  OwnedGdImage image(gdImageCreateTrueColor(width, height));
  if (image == nullptr) throw std::bad_alloc();
  return image;
}

// A picture in gray of the alpha of an image.
Owned<Picture> MaskOf(gdImagePtr image) {
  OwnedGdImage mask = NewImage(image->sx, image->sy);
  for (int y = 0; y < image->sy; ++y) {
    std::transform(image->tpixels[y], image->tpixels[y] + image->sx, mask->tpixels[y], [](int pixel) {
      const int gray = AlphaOfGd(gdTrueColorGetAlpha(pixel));
      return gdTrueColor(gray, gray, gray);
    });
  }
  return Owned<Picture>::Adopt(Picture::Make(std::make_unique<GdPictureStorage>(std::move(mask))));
}

gdImagePtr ImageOf(Picture &picture) {
  auto *const storage = dynamic_cast<GdPictureStorage *>(&picture.Storage());
  if (storage == nullptr) throw std::invalid_argument("a picture of the GD library is wanted");
  return storage->Image();
}

Owned<Picture> TurnedPixels(gdImagePtr image, const Turn &turn) {
  OwnedGdImage turned = turn.exchangesSides ? NewImage(image->sy, image->sx) : NewImage(image->sx, image->sy);
  for (int y = 0; y < turned->sy; ++y) {
    const int down = turn.mirrorsDown ? turned->sy - 1 - y : y;
    for (int x = 0; x < turned->sx; ++x) {
      const int across = turn.mirrorsAcross ? turned->sx - 1 - x : x;
      turned->tpixels[y][x] = turn.exchangesSides ? image->tpixels[across][down] : image->tpixels[down][across];
    }
  }
  return Owned<Picture>::Adopt(Picture::Make(std::make_unique<GdPictureStorage>(std::move(turned))));
}

}  // namespace

GdPictureStorage::GdPictureStorage(OwnedGdImage image) : image_(std::move(image)) {
  if (image_ == nullptr || image_->trueColor == 0) throw std::invalid_argument("a picture needs a true-colour image");
}

GdPictureStorage::GdPictureStorage(int32_t width, int32_t height) : image_(NewImage(width, height)) {}

Pixel GdPictureStorage::Get(int32_t x, int32_t y) const {
  const int pixel = image_->tpixels[y][x];
  return {static_cast<uint8_t>(gdTrueColorGetRed(pixel)), static_cast<uint8_t>(gdTrueColorGetGreen(pixel)),
          static_cast<uint8_t>(gdTrueColorGetBlue(pixel)), AlphaOfGd(gdTrueColorGetAlpha(pixel))};
}

void GdPictureStorage::Set(int32_t x, int32_t y, Pixel pixel) { image_->tpixels[y][x] = ToGd(pixel); }

bool GdPictureStorage::Describe(int32_t wantedType, REALpictureDescription *description) {
  if (wantedType != 0 && wantedType != kDescriptionGDImage) return false;
  description->type = kDescriptionGDImage;
  description->data = image_.get();
  description->width = image_->sx;
  description->height = image_->sy;
  description->depth = 32;
  return true;
}

uint8_t *GdPictureStorage::Row(int32_t y) { return reinterpret_cast<uint8_t *>(image_->tpixels[y]); }

void UseGdPictures(HostState &host) {
  host.SetPictureFactory([](int32_t width, int32_t height) -> std::unique_ptr<PictureStorage> {
    return std::make_unique<GdPictureStorage>(width, height);
  });
}

LoadedPicture LoadPicture(const std::string &path, Orient orient) {
  LoadedImage loaded = LoadImageFile(path);
  Owned<Picture> mask = loaded.hasTransparency ? MaskOf(loaded.image.get()) : Owned<Picture>();
  Owned<Picture> picture =
      Owned<Picture>::Adopt(Picture::Make(std::make_unique<GdPictureStorage>(std::move(loaded.image))));
  if (mask) picture->SetMask(std::move(mask));
  return {Turned(std::move(picture), TurnOf(path, orient)), loaded.format, loaded.hasTransparency};
}

Owned<Picture> Turned(Owned<Picture> picture, const Turn &turn) {
  if (turn == Turn()) return picture;
  Owned<Picture> turned = TurnedPixels(ImageOf(*picture), turn);
  if (picture->Mask() != nullptr) turned->SetMask(TurnedPixels(ImageOf(*picture->Mask()), turn));
  return turned;
}

void SavePicture(Picture &picture, const std::string &path, const SaveOptions &options) {
  auto *const storage = dynamic_cast<GdPictureStorage *>(&picture.Storage());
  const Picture *const mask = options.alpha == AlphaPlane::Keep ? picture.Mask() : nullptr;
  if (storage != nullptr && mask == nullptr) {
    SaveImageFile(storage->Image(), path, options);
    return;
  }
  const OwnedGdImage copy = NewImage(picture.Width(), picture.Height());
  for (int y = 0; y < copy->sy; ++y) {
    for (int x = 0; x < copy->sx; ++x) {
      Pixel pixel = picture.GetPixel(x, y);
      // A mask smaller than its picture leaves the rest opaque.
      if (mask != nullptr) {
        pixel.alpha = x < mask->Width() && y < mask->Height() ? mask->GetPixel(x, y).red : kWhite;
      }
      copy->tpixels[y][x] = ToGd(pixel);
    }
  }
  SaveImageFile(copy.get(), path, options);
}

}  // namespace standalone
