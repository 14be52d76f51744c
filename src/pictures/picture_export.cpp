#include "pictures/picture_export.h"

#include <cstddef>
#include <cstring>

#include "host/host_services.h"
#include "host/resources.h"
#include "pictures/pixel_words.h"

namespace zvk {

namespace {

// The largest picture in either direction; an image may be far larger.
constexpr int32_t kLargestPictureSide = 32767;

// --- pixel readers: an image's pixel as 8-bit red, green and blue. They take the offsets as they stand at the row. ---

struct Gray8Reader {
  explicit Gray8Reader(const ImageClassData &image) : gray(image.GrayOffset) {}
  Samples operator()(const uint8_t *pixel) const { return {pixel[gray], pixel[gray], pixel[gray]}; }
  ptrdiff_t gray;
};

struct Gray16Reader {
  explicit Gray16Reader(const ImageClassData &image) : gray(image.GrayOffset) {}
  Samples operator()(const uint8_t *pixel) const {
    uint16_t sample;
    std::memcpy(&sample, pixel + gray, sizeof sample);
    const auto high = static_cast<uint8_t>(sample >> 8);  // the low byte is dropped, not rounded
    return {high, high, high};
  }
  ptrdiff_t gray;
};

struct RGBReader {
  explicit RGBReader(const ImageClassData &image)
      : red(image.RedOffset), green(image.GreenOffset), blue(image.BlueOffset) {}
  Samples operator()(const uint8_t *pixel) const { return {pixel[red], pixel[green], pixel[blue]}; }
  ptrdiff_t red, green, blue;
};

// Plain ink arithmetic, without colour management.
struct CMYKReader {
  explicit CMYKReader(const ImageClassData &image)
      : cyan(image.CyanOffset), magenta(image.MagentaOffset), yellow(image.YellowOffset), black(image.BlackOffset) {}
  Samples operator()(const uint8_t *pixel) const {
    const uint32_t white = 255u - pixel[black];
    const auto without = [white](uint32_t ink) { return static_cast<uint8_t>(white - ink * white / 255); };
    return {without(pixel[cyan]), without(pixel[magenta]), without(pixel[yellow])};
  }
  ptrdiff_t cyan, magenta, yellow, black;
};

struct AlphaReader {
  explicit AlphaReader(const ImageClassData &image) : alpha(image.AlphaOffset) {}
  Samples operator()(const uint8_t *pixel) const { return {pixel[alpha], pixel[alpha], pixel[alpha]}; }
  ptrdiff_t alpha;
};

// --- loops ---

template <class Reader, class Word>
void WritePixels(const uint8_t *source, ptrdiff_t pixelSize, uint8_t *dest, int32_t count, Reader read) {
  for (int32_t i = 0; i < count; ++i) {
    Word::StoreOpaque(dest + 4 * static_cast<ptrdiff_t>(i), read(source));
    source += pixelSize;
  }
}

template <class Reader>
void WriteRows(ImageClassData &image, const Rectangle &rectangle, PictureEditor &picture) {
  VisitLayout(picture.Layout, [&]<class Word>(Word) {
    YieldOn(image);
    for (int32_t i = 0; i < rectangle.height; ++i) {
      const ptrdiff_t pixelSize = image.PixelSize;
      const uint8_t *source = image.GetRow(&image, rectangle.y + i) + rectangle.x * pixelSize;
      WritePixels<Reader, Word>(source, pixelSize, picture.RowAddress, rectangle.width, Reader(image));
      picture.NextRow();
      YieldOn(image);
    }
  });
}

// Makes the picture, lets `write` fill it and hands it to the caller with one reference; nil if the rectangle is too
// large or the host has no picture to give.
REALobject CopyToPicture(ImageClassData &image, Rectangle rectangle,
                         void (*write)(ImageClassData &, const Rectangle &, PictureEditor &)) {
  YieldOn(image);
  if (rectangle.width > kLargestPictureSide || rectangle.height > kLargestPictureSide) return nullptr;
  rectangle = CutToImage(rectangle, image.Width, image.Height);
  ObjectReference picture(REALNewPicture(rectangle.width, rectangle.height, 32));
  if (!picture) return nullptr;
  PictureWriter writer;
  const bool attached = writer.GetPictureEditor(picture.Get(), 0, 1);
  picture.Reset();  // from here on the writer holds it alone
  if (!attached) return nullptr;
  write(image, rectangle, writer);
  return writer.RenderPictureWriter();
}

}  // namespace

void WriteColours(ImageClassData &image, const Rectangle &rectangle, PictureEditor &picture) {
  if (image.IsGray && image.BitsPerComponent == 16) {
    WriteRows<Gray16Reader>(image, rectangle, picture);
  } else if (image.IsGray) {
    WriteRows<Gray8Reader>(image, rectangle, picture);
  } else if (image.IsRGB) {
    WriteRows<RGBReader>(image, rectangle, picture);
  } else if (image.IsCMYK) {
    WriteRows<CMYKReader>(image, rectangle, picture);
  }
}

void WriteAlpha(ImageClassData &image, const Rectangle &rectangle, PictureEditor &picture) {
  WriteRows<AlphaReader>(image, rectangle, picture);
}

REALobject rbCopyPicture(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !IsUsable(*image) || !(image->IsGray || image->IsRGB || image->IsCMYK)) return nullptr;
  const Rectangle rectangle = FitRectangle({x, y, width, height}, image->Width, image->Height);
  return IsEmpty(rectangle) ? nullptr : CopyToPicture(*image, rectangle, WriteColours);
}

REALobject rbCopyMask(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !IsUsable(*image) || !image->HasAlpha) return nullptr;
  const Rectangle rectangle = FitRectangle({x, y, width, height}, image->Width, image->Height);
  return IsEmpty(rectangle) ? nullptr : CopyToPicture(*image, rectangle, WriteAlpha);
}

REALobject rbCopyPictureWithMask(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height) {
  REALobject picture = rbCopyPicture(instance, x, y, width, height);
  const ObjectReference mask(rbCopyMask(instance, x, y, width, height));
  // The size as the caller gave it: cut by nobody, and refused where it is negative.
  AddPictureMask(picture, mask.Get(), width, height);
  return picture;
}

namespace {

REALobject CopyAll(REALobject instance, REALobject (*copy)(REALobject, int32_t, int32_t, int32_t, int32_t)) {
  const ImageClassData *image = RecordOf(instance);
  return image != nullptr ? copy(instance, 0, 0, image->Width, image->Height) : nullptr;
}

}  // namespace

REALobject rbCopyPictureAll(REALobject instance) { return CopyAll(instance, rbCopyPicture); }

REALobject rbCopyMaskAll(REALobject instance) { return CopyAll(instance, rbCopyMask); }

REALobject rbCopyPictureWithMaskAll(REALobject instance) { return CopyAll(instance, rbCopyPictureWithMask); }

REALobject GetDebugPicture(REALobject instance, int32_t /*param*/) {
  const ImageClassData *image = RecordOf(instance);
  return image != nullptr && image->DebugPictureEnabled ? rbCopyPictureWithMask(instance, 0, 0, 512, 512) : nullptr;
}

}  // namespace zvk
