#include "pictures/picture_export.h"

#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "host/host_services.h"
#include "host/resources.h"
#include "pictures/pixel_words.h"
#include "pixels/kernel_clones.h"
#include "pixels/wide_samples.h"

namespace zvk::pictures {

namespace {

// The largest picture in either direction; an image may be far larger.
constexpr int32_t kLargestPictureSide = 32767;

// --- pixel readers: an image's pixel as 8-bit red, green and blue, by the offsets as they stand at the row. Each names
// the pixel sizes for which the loop is worth a form of its own. ---

template <int... kSizes>
using PixelSizes = std::integer_sequence<int, kSizes...>;

struct ByteReader {
  using UsualSizes = PixelSizes<1, 2, 3, 4, 5>;
  ptrdiff_t sample;
  Samples operator()(const uint8_t *pixel) const { return {pixel[sample], pixel[sample], pixel[sample]}; }
};

struct Gray16Reader {
  using UsualSizes = PixelSizes<2>;
  ptrdiff_t gray;
  Samples operator()(const uint8_t *pixel) const {
    uint16_t sample;
    std::memcpy(&sample, pixel + gray, sizeof sample);
    const auto high = static_cast<uint8_t>(sample >> 8);  // the low byte is dropped, not rounded
    return {high, high, high};
  }
};

struct RGBReader {
  using UsualSizes = PixelSizes<3, 4>;
  ptrdiff_t red, green, blue;
  Samples operator()(const uint8_t *pixel) const { return {pixel[red], pixel[green], pixel[blue]}; }
};

// Plain ink arithmetic, without colour management.
struct CMYKReader {
  using UsualSizes = PixelSizes<4, 5>;
  ptrdiff_t cyan, magenta, yellow, black;
  Samples operator()(const uint8_t *pixel) const {
    const uint32_t white = 255u - pixel[black];
    const auto without = [white](uint32_t ink) { return static_cast<uint8_t>(white - ink * white / 255); };
    return {without(pixel[cyan]), without(pixel[magenta]), without(pixel[yellow])};
  }
};

ByteReader GrayOf(const ImageClassData &image) { return {image.GrayOffset}; }
ByteReader AlphaOf(const ImageClassData &image) { return {image.AlphaOffset}; }
Gray16Reader Gray16Of(const ImageClassData &image) { return {image.GrayOffset}; }
RGBReader RGBOf(const ImageClassData &image) { return {image.RedOffset, image.GreenOffset, image.BlueOffset}; }
CMYKReader CMYKOf(const ImageClassData &image) {
  return {image.CyanOffset, image.MagentaOffset, image.YellowOffset, image.BlackOffset};
}

// --- loops ---

// kPixelSize 0: as `anyPixelSize` says.
template <class Reader, class Word, int kPixelSize>
ZVK_KERNEL_CLONES void WritePixels(const uint8_t *source, ptrdiff_t anyPixelSize, uint8_t *dest, int32_t count,
                                   Reader read) {
  const ptrdiff_t pixelSize = kPixelSize != 0 ? kPixelSize : anyPixelSize;
  for (ptrdiff_t i = 0; i < count; ++i) Word::StoreOpaque(dest + 4 * i, read(source + i * pixelSize));
}

template <class Reader, class Word, int... kSizes>
void WriteRow(PixelSizes<kSizes...>, const uint8_t *source, ptrdiff_t pixelSize, uint8_t *dest, int32_t count,
              Reader read) {
  const bool usual =
      ((pixelSize == kSizes && (WritePixels<Reader, Word, kSizes>(source, pixelSize, dest, count, read), true)) || ...);
  if (!usual) WritePixels<Reader, Word, 0>(source, pixelSize, dest, count, read);
}

// Row i of the rectangle; nil if it cannot be had. Asked again for each row: other code of the host may have run since,
// and closed the image or constructed it anew, where the rectangle may not lie.
const uint8_t *SourceRow(ImageClassData &image, const Rectangle &rectangle, int32_t i) {
  const int32_t y = rectangle.y + i;
  if (!HasPixels(image) || y >= image.Height || rectangle.width > image.Width - rectangle.x) return nullptr;
  return image.GetRow(&image, y);
}

// The part of an image's row that lies in the rectangle, into a picture's row.
template <class Reader, class Word>
void WritePart(const ImageClassData &image, const Rectangle &rectangle, const uint8_t *row, uint8_t *dest,
               Reader read) {
  const ptrdiff_t pixelSize = image.PixelSize;
  const auto write = [&](int32_t column, int32_t count) {
    WriteRow<Reader, Word>(typename Reader::UsualSizes(), row + column * pixelSize, pixelSize,
                           dest + ptrdiff_t{4} * (column - rectangle.x), count, read);
  };
  if constexpr (std::is_same_v<Reader, Gray16Reader>) {
    // A high byte that is not there is 0.
    VisitWideSamples(image, row, rectangle.x, rectangle.width, write, [&](int32_t column) {
      Word::StoreOpaque(dest + ptrdiff_t{4} * (column - rectangle.x), Samples{0, 0, 0});
    });
  } else {
    write(rectangle.x, rectangle.width);
  }
}

template <class Reader>
void WriteRows(ImageClassData &image, const Rectangle &rectangle, PictureEditor &picture,
               Reader (*readerOf)(const ImageClassData &)) {
  VisitPixelWord(picture.Layout, [&]<class Word>(Word) {
    YieldOn(image);
    for (int32_t i = 0; i < rectangle.height; ++i) {
      if constexpr (Word::kKnown) {
        if (const uint8_t *row = SourceRow(image, rectangle, i); row != nullptr) {
          WritePart<Reader, Word>(image, rectangle, row, picture.RowAddress, readerOf(image));
        }
      }
      picture.NextRow();
      YieldOn(image);
    }
  });
}

// Makes the picture, lets `write` fill it and hands it to the caller with one reference; nil if the rectangle is too
// large or the host has no picture to give.
REALobject CopyToPicture(ImageClassData &image, const Rectangle &fitted,
                         void (*write)(ImageClassData &, const Rectangle &, PictureEditor &)) {
  // Cut to the image as it is now, before other code of the host may construct it anew.
  const Rectangle rectangle = CutToImage(fitted, image.Width, image.Height);
  YieldOn(image);
  if (fitted.width > kLargestPictureSide || fitted.height > kLargestPictureSide) return nullptr;
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
    WriteRows(image, rectangle, picture, Gray16Of);
  } else if (image.IsGray) {
    WriteRows(image, rectangle, picture, GrayOf);
  } else if (image.IsRGB) {
    WriteRows(image, rectangle, picture, RGBOf);
  } else if (image.IsCMYK) {
    WriteRows(image, rectangle, picture, CMYKOf);
  }
}

void WriteAlpha(ImageClassData &image, const Rectangle &rectangle, PictureEditor &picture) {
  WriteRows(image, rectangle, picture, AlphaOf);
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

}  // namespace zvk::pictures
