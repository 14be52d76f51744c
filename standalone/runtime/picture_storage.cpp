#include "standalone/runtime/picture_storage.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace standalone {
namespace {

constexpr int32_t kPixelBytes = 4;
// GD's alpha runs from 0, opaque, to this.
constexpr int32_t kGDClear = 127;

uint8_t AlphaFromGD(int32_t alpha) {
  return static_cast<uint8_t>(255 - (std::min(alpha, kGDClear) * 255 + kGDClear / 2) / kGDClear);
}

uint8_t AlphaToGD(uint8_t alpha) { return static_cast<uint8_t>(((255 - alpha) * kGDClear + 127) / 255); }

bool Wants(int32_t wantedType, int32_t type) { return wantedType == 0 || wantedType == type; }

void DescribeGD(GDImage &image, REALpictureDescription *description) {
  description->type = kDescriptionGDImage;
  description->data = &image;
  description->width = image.width;
  description->height = image.height;
  description->depth = image.trueColor != 0 ? 32 : 8;
}

}  // namespace

GDStorage::GDStorage(int32_t width, int32_t height, bool fenced) {
  image_.width = width;
  image_.height = height;
  image_.transparent = -1;
  image_.thick = 1;
  image_.trueColor = 1;
  for (int32_t y = 0; y < height; ++y) {
    rows_.push_back(std::make_unique<Bytes>(static_cast<size_t>(width) * kPixelBytes, fenced));
    table_.push_back(static_cast<uint8_t *>(rows_.back()->Data()));
  }
  image_.trueColorRows = table_.data();
}

Pixel GDStorage::Get(int32_t x, int32_t y) const {
  const uint8_t *const pixel = image_.trueColorRows[y] + static_cast<size_t>(x) * kPixelBytes;
  return {pixel[2], pixel[1], pixel[0], AlphaFromGD(pixel[3])};
}

void GDStorage::Set(int32_t x, int32_t y, Pixel pixel) {
  const uint8_t bytes[kPixelBytes] = {pixel.blue, pixel.green, pixel.red, AlphaToGD(pixel.alpha)};
  std::memcpy(Row(y) + static_cast<size_t>(x) * kPixelBytes, bytes, kPixelBytes);
}

bool GDStorage::Describe(int32_t wantedType, REALpictureDescription *description) {
  if (!Wants(wantedType, kDescriptionGDImage)) return false;
  DescribeGD(image_, description);
  return true;
}

PaletteStorage::PaletteStorage(int32_t width, int32_t height)
    : pixels_(static_cast<size_t>(width) * static_cast<size_t>(height)) {
  image_.width = width;
  image_.height = height;
  image_.transparent = -1;
  image_.thick = 1;
  image_.colourCount = 1;  // black
  for (int32_t y = 0; y < height; ++y) table_.push_back(pixels_.data() + static_cast<size_t>(y) * width);
  image_.paletteRows = table_.data();
}

Pixel PaletteStorage::Get(int32_t x, int32_t y) const {
  const uint8_t index = table_[y][x];
  return {static_cast<uint8_t>(image_.red[index]), static_cast<uint8_t>(image_.green[index]),
          static_cast<uint8_t>(image_.blue[index]), AlphaFromGD(image_.alpha[index])};
}

void PaletteStorage::Set(int32_t x, int32_t y, Pixel pixel) { table_[y][x] = ColourIndex(pixel); }

uint8_t PaletteStorage::ColourIndex(Pixel pixel) {
  const int32_t alpha = AlphaToGD(pixel.alpha);
  const auto distance = [&](int32_t index) {
    const int32_t differences[] = {image_.red[index] - pixel.red, image_.green[index] - pixel.green,
                                   image_.blue[index] - pixel.blue, image_.alpha[index] - alpha};
    int32_t sum = 0;
    for (const int32_t difference : differences) sum += difference * difference;
    return sum;
  };
  int32_t nearest = 0;
  for (int32_t index = 1; index < image_.colourCount; ++index) {
    if (distance(index) < distance(nearest)) nearest = index;
  }
  if (distance(nearest) > 0 && image_.colourCount < 256) {
    nearest = image_.colourCount++;
    image_.red[nearest] = pixel.red;
    image_.green[nearest] = pixel.green;
    image_.blue[nearest] = pixel.blue;
    image_.alpha[nearest] = alpha;
  }
  return static_cast<uint8_t>(nearest);
}

bool PaletteStorage::Describe(int32_t wantedType, REALpictureDescription *description) {
  if (!Wants(wantedType, kDescriptionGDImage)) return false;
  DescribeGD(image_, description);
  return true;
}

namespace {

// Where the samples of a bitmap's pixel lie, by the alpha info's low bits.
struct SampleOrder {
  int red;
  int alpha;
  bool hasAlpha;
};

SampleOrder OrderOf(uint32_t alphaInfo) {
  switch (alphaInfo & 7) {
    case 1:
    case 3:
      return {0, 3, true};
    case 2:
    case 4:
      return {1, 0, true};
    case 6:
      return {1, 0, false};
    default:
      return {0, 3, false};
  }
}

}  // namespace

BitmapStorage::BitmapStorage(int32_t width, int32_t height, BitmapLayout layout, bool fenced)
    : hasAlphaChannel_(layout.hasAlphaChannel) {
  const int64_t packed = (static_cast<int64_t>(width) * layout.bitsPerPixel + 7) / 8;
  const int64_t rowBytes = std::max<int64_t>(packed, layout.bytesPerRow);
  if (height > 0 && rowBytes > PTRDIFF_MAX / height) throw std::bad_alloc();
  bytes_ = std::make_unique<Bytes>(static_cast<size_t>(rowBytes * height), fenced);
  std::memset(bytes_->Data(), 0xFF, bytes_->Size());
  context_ = {bytes_->Data(),
              static_cast<size_t>(width),
              static_cast<size_t>(height),
              static_cast<size_t>(layout.bitsPerPixel),
              static_cast<size_t>(rowBytes),
              layout.alphaInfo};
}

uint8_t *BitmapStorage::PixelAddress(int32_t x, int32_t y) const {
  return static_cast<uint8_t *>(bytes_->Data()) + static_cast<size_t>(y) * context_.bytesPerRow +
         static_cast<size_t>(x) * kPixelBytes;
}

Pixel BitmapStorage::Get(int32_t x, int32_t y) const {
  if (context_.bitsPerPixel != 32) return {};
  const SampleOrder order = OrderOf(context_.alphaInfo);
  const uint8_t *const pixel = PixelAddress(x, y);
  return {pixel[order.red], pixel[order.red + 1], pixel[order.red + 2],
          order.hasAlpha ? pixel[order.alpha] : uint8_t{255}};
}

void BitmapStorage::Set(int32_t x, int32_t y, Pixel pixel) {
  if (context_.bitsPerPixel != 32) return;
  const SampleOrder order = OrderOf(context_.alphaInfo);
  uint8_t *const bytes = PixelAddress(x, y);
  bytes[order.red] = pixel.red;
  bytes[order.red + 1] = pixel.green;
  bytes[order.red + 2] = pixel.blue;
  bytes[order.alpha] = order.hasAlpha ? pixel.alpha : uint8_t{255};
}

bool BitmapStorage::Describe(int32_t wantedType, REALpictureDescription *description) {
  if (!Wants(wantedType, kDescriptionBitmapContext)) return false;
  description->type = kDescriptionBitmapContext;
  description->data = &context_;
  description->width = Width();
  description->height = Height();
  description->depth = static_cast<int32_t>(context_.bitsPerPixel);
  return true;
}

uint8_t *BitmapStorage::Row(int32_t y) { return context_.bitsPerPixel == 32 ? PixelAddress(0, y) : nullptr; }

DrawnStorage::DrawnStorage(int32_t width, int32_t height)
    : width_(width),
      height_(height),
      pixels_(static_cast<size_t>(width) * static_cast<size_t>(height), Pixel{255, 255, 255, 255}) {}

Pixel DrawnStorage::Get(int32_t x, int32_t y) const { return pixels_[static_cast<size_t>(y) * width_ + x]; }

void DrawnStorage::Set(int32_t x, int32_t y, Pixel pixel) { pixels_[static_cast<size_t>(y) * width_ + x] = pixel; }

}  // namespace standalone
