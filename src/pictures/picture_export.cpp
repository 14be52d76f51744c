#include "pictures/picture_export.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>

#include "host/host_services.h"
#include "host/resources.h"
#include "pictures/pixel_rows.h"
#include "pictures/pixel_words.h"
#include "pixels/dispatch.h"
#include "pixels/sample_mover.h"
#include "pixels/whole_image.h"
#include "pixels/wide_samples.h"

namespace zvk::pictures {

namespace {

// The largest picture in either direction; an image may be far larger.
constexpr int32_t kLargestPictureSide = 32767;

// --- what of an image's pixel becomes a picture's, by the offsets as they stand at the row ---

struct PixelSource {
  // Offsets of the samples that go to red, green and blue.
  int32_t red;
  int32_t green;
  int32_t blue;
  // The colours are cyan, magenta and yellow, and this is the offset of black.
  std::optional<int32_t> black = {};
};

PixelSource GrayOf(const ImageClassData &image) { return {image.GrayOffset, image.GrayOffset, image.GrayOffset}; }
PixelSource AlphaOf(const ImageClassData &image) { return {image.AlphaOffset, image.AlphaOffset, image.AlphaOffset}; }
PixelSource RGBOf(const ImageClassData &image) { return {image.RedOffset, image.GreenOffset, image.BlueOffset}; }
PixelSource CMYKOf(const ImageClassData &image) {
  return {image.CyanOffset, image.MagentaOffset, image.YellowOffset, image.BlackOffset};
}
// The low byte of a 16-bit sample is dropped, not rounded.
PixelSource Gray16Of(const ImageClassData &image) {
  const int32_t high = image.GrayOffset + 1;
  return {high, high, high};
}

// --- rows ---

// Plain ink arithmetic, without colour management: of words that hold three inks and black, `blackShift` bits up, it
// makes words of the three colours and of these bits in place of black. Two samples go through the steps side by side,
// each in 16 bits of its own.
[[gnu::always_inline]] inline void TurnInksBody(uint8_t *words, ptrdiff_t count, int32_t blackShift,
                                                uint32_t opaqueBits) {
  constexpr uint32_t kLowBytes = 0x00FF00FF, kOnes = 0x00010001;
  for (ptrdiff_t i = 0; i < count; ++i) {
    uint32_t word;
    std::memcpy(&word, words + kWordBytes * i, sizeof word);
    const uint32_t white = (word >> blackShift & 255) ^ 255;
    const auto turn = [=](uint32_t inks) {
      const uint32_t products = inks * white;
      // Divided by 255 and rounded down, exact up to 255 x 255.
      const uint32_t quotients = (products + kOnes + (products >> 8 & kLowBytes)) >> 8 & kLowBytes;
      return white * kOnes - quotients;
    };
    word = turn(word & kLowBytes) | turn(word >> 8 & kLowBytes) << 8;
    word = (word & ~(255u << blackShift)) | opaqueBits;
    std::memcpy(words + kWordBytes * i, &word, sizeof word);
  }
}
constexpr auto TurnInks = KernelOf<TurnInksBody>;

// Writes pixels of a picture, which come out opaque.
class WordWriter {
 public:
  explicit WordWriter(const PixelWord &word) : word_(word) {}

  // `pixels` are the image's.
  void Write(const uint8_t *pixels, int32_t pixelSize, const PixelSource &source, uint8_t *words, int32_t width) {
    // In place of alpha comes black, where there is one.
    const std::array<SampleMove, 4> moves{{{source.red, word_.red},
                                           {source.green, word_.green},
                                           {source.blue, word_.blue},
                                           {.from = source.black.value_or(source.red),
                                            .to = word_.alpha,
                                            .zero = !source.black && word_.opaque == 0,
                                            .full = !source.black && word_.opaque == 255}}};
    const SampleMover &move = move_.For(pixelSize, kWordBytes, moves);
    if (!source.black) return move(pixels, words, width);
    const PixelReach reach{pixelSize, RangeOf(std::array{source.red, source.green, source.blue, *source.black})};
    // Where the picture lies over the image, each pixel is written whole before the next one is read.
    const int32_t most = LieApart(pixels, reach, words, width) ? kTilePixels : 1;
    for (int32_t x = 0, count = 0; x < width; x += count) {
      count = std::min(width - x, most);
      uint8_t *dest = words + ptrdiff_t{kWordBytes} * x;
      move(pixels + ptrdiff_t{pixelSize} * x, dest, count);
      TurnInks(dest, count, 8 * word_.alpha, OpaqueBits());
    }
  }

  void WriteBlack(uint8_t *word) const {
    const uint32_t bits = OpaqueBits();
    std::memcpy(word, &bits, sizeof bits);
  }

 private:
  uint32_t OpaqueBits() const { return uint32_t{word_.opaque} << 8 * word_.alpha; }

  const PixelWord &word_;
  RowMover move_;
};

// The part of an image's row that lies in the rectangle, into a picture's row.
void WritePart(const ImageClassData &image, const Rectangle &rectangle, const uint8_t *row, const PixelSource &source,
               uint8_t *dest, WordWriter &writer) {
  writer.Write(row + ptrdiff_t{rectangle.x} * image.PixelSize, image.PixelSize, source, dest, rectangle.width);
}

// The same of 16-bit samples. A high byte that is not there is 0.
void WriteWidePart(const ImageClassData &image, const Rectangle &rectangle, const uint8_t *row,
                   const PixelSource &source, uint8_t *dest, WordWriter &writer) {
  const auto destAt = [&](int32_t column) { return dest + ptrdiff_t{kWordBytes} * (column - rectangle.x); };
  VisitWideSamples(
      image, row, rectangle.x, rectangle.width,
      [&](int32_t column, int32_t count) {
        writer.Write(row + ptrdiff_t{column} * image.PixelSize, image.PixelSize, source, destAt(column), count);
      },
      [&](int32_t column) { writer.WriteBlack(destAt(column)); });
}

void WriteRows(const PixelWatch &watched, const Rectangle &rectangle, PictureEditor &picture,
               PixelSource (*sourceOf)(const ImageClassData &)) {
  ImageClassData &image = watched.Record();
  const PixelWord *word = WordOf(picture.Layout);
  std::optional<WordWriter> writer;
  if (word != nullptr) writer.emplace(*word);
  const auto writePart = sourceOf == Gray16Of ? WriteWidePart : WritePart;
  YieldOn(image);
  for (int32_t i = 0; i < rectangle.height; ++i) {
    const uint8_t *row = writer ? RowOf(watched, rectangle, i) : nullptr;
    if (row != nullptr) writePart(image, rectangle, row, sourceOf(image), picture.RowAddress, *writer);
    picture.NextRow();
    YieldOn(image);
  }
}

// Makes the picture, lets `write` fill it and hands it to the caller with one reference; nil if the rectangle is too
// large or the host has no picture to give.
REALobject CopyToPicture(ImageClassData &image, const Rectangle &fitted,
                         void (*write)(const PixelWatch &, const Rectangle &, PictureEditor &)) {
  const PixelWatch watched(image);
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
  write(watched, rectangle, writer);
  return writer.RenderPictureWriter();
}

}  // namespace

void WriteColours(const PixelWatch &image, const Rectangle &rectangle, PictureEditor &picture) {
  const ImageClassData &record = image.Record();
  if (record.IsGray && record.BitsPerComponent == 16) {
    WriteRows(image, rectangle, picture, Gray16Of);
  } else if (record.IsGray) {
    WriteRows(image, rectangle, picture, GrayOf);
  } else if (record.IsRGB) {
    WriteRows(image, rectangle, picture, RGBOf);
  } else if (record.IsCMYK) {
    WriteRows(image, rectangle, picture, CMYKOf);
  }
}

void WriteAlpha(const PixelWatch &image, const Rectangle &rectangle, PictureEditor &picture) {
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
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr) return nullptr;
  const PixelWatch watched(*image);
  REALobject picture = rbCopyPicture(instance, x, y, width, height);
  if (!watched.HasStorage()) return picture;
  const ObjectReference mask(rbCopyMask(instance, x, y, width, height));
  // The size as the caller gave it: cut by nobody, and refused where it is negative.
  AddPictureMask(picture, mask.Get(), width, height);
  return picture;
}

REALobject rbCopyPictureAll(REALobject instance) { return OnWholeImage(rbCopyPicture, instance); }

REALobject rbCopyMaskAll(REALobject instance) { return OnWholeImage(rbCopyMask, instance); }

REALobject rbCopyPictureWithMaskAll(REALobject instance) { return OnWholeImage(rbCopyPictureWithMask, instance); }

REALobject GetDebugPicture(REALobject instance, int32_t /*param*/) {
  const ImageClassData *image = RecordOf(instance);
  return image != nullptr && image->DebugPictureEnabled ? rbCopyPictureWithMask(instance, 0, 0, 512, 512) : nullptr;
}

}  // namespace zvk::pictures
