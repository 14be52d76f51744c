#include "pictures/picture_import.h"

#include <cstddef>
#include <functional>
#include <span>

#include "host/host_services.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "pictures/pixel_rows.h"
#include "pictures/pixel_words.h"

namespace zvk::pictures {

// --- an image over a picture's pixels ---

namespace {

// A picture's pixels, and the format numbers that go with them.
struct PixelForm {
  int32_t opaqueFormat;
  int32_t alphaFormat;
  PixelWord word;
};

constexpr PixelForm kAlphaLast{ImageFormatRGBX, ImageFormatRGBA, kAlphaLastWord};
constexpr PixelForm kAlphaFirst{ImageFormatXRGB, ImageFormatARGB, kAlphaFirstWord};
// A GD image bears the numbers of the form above, though its bytes lie the other way round: the offsets are what
// counts.
constexpr PixelForm kGD{ImageFormatXRGB, ImageFormatARGB, kGDWord};

// Fills what the two kinds of storage have in common, and takes a reference to the picture. Rows and sizes are there.
void AddressPicture(ImageClassData &image, REALobject picture, const PixelForm &form, bool useAlpha) {
  image.ImageFormat = useAlpha ? form.alphaFormat : form.opaqueFormat;
  image.PixelSize = kWordBytes;
  image.RedOffset = form.word.red;
  image.GreenOffset = form.word.green;
  image.BlueOffset = form.word.blue;
  image.AlphaOffset = form.word.alpha;  // also where it is not used
  image.GrayOffset = 0;
  image.IsGray = false;
  image.IsRGB = true;
  image.HasRed = image.HasGreen = image.HasBlue = true;
  image.HasGray = false;
  image.HasAlpha = useAlpha;
  image.UnclippedHeight = image.Height;
  image.MappingBase = nullptr;
  image.MappedFirstRow = image.MappedLastRow = -1;
  image.OwnsBuffer = false;
  image.RemoveFile = false;
  image.IsMapping = false;
  // A host that describes a picture in both ways, one after the other, still has one reference taken.
  if (image.Target != picture) REALLockObject(picture);
  image.Target = picture;
  image.Valid = true;
}

// The description is given back at once: its pixels outlive the lock, as the image will hold the picture.
void AddressBitmap(ImageClassData &image, REALobject picture, bool useAlpha) {
  REALpictureDescription description{};
  lockPictureDescription(picture, &description);
  REALUnlockPictureDescription(picture);
  if (description.type != static_cast<uint32_t>(kDescriptionBitmapContext) || description.data == nullptr) return;

  void *context = description.data;
  auto *pixels = static_cast<uint8_t *>(CGBitmapContextGetData(context));
  const auto width = static_cast<int32_t>(CGBitmapContextGetWidth(context));
  const auto height = static_cast<int32_t>(CGBitmapContextGetHeight(context));
  const auto rowBytes = static_cast<int32_t>(CGBitmapContextGetBytesPerRow(context));
  const uint32_t alphaInfo = CGBitmapContextGetAlphaInfo(context);
  image.PixelSize = 4;  // stays with an image whose alpha info is refused
  const bool alphaLast = alphaInfo == 1 || alphaInfo == 5;
  const bool alphaFirst = alphaInfo == 2 || alphaInfo == 6;
  if (pixels == nullptr || !(alphaLast || alphaFirst)) return;

  image.Buffer = pixels;
  image.Width = width;
  image.Height = height;
  image.RowSize = rowBytes;
  image.TotalSize = int64_t{description.height} * rowBytes;
  image.MappedRowCount = height;
  image.GetRow = GetRowLinear;
  AddressPicture(image, picture, alphaLast ? kAlphaLast : kAlphaFirst, useAlpha);
}

void AddressGDImage(ImageClassData &image, REALobject picture, bool useAlpha) {
  REALpictureDescription description{};
  if (!LockDescription(picture, &description, kDescriptionGDImage)) return;
  REALUnlockPictureDescription(picture);
  IsConsole = true;
  if (description.type != static_cast<uint32_t>(kDescriptionGDImage) || description.data == nullptr) return;
  // Unlike an editor this does not ask for a palette.
  const auto *source = static_cast<const GDImage *>(description.data);
  if (source->trueColorRows == nullptr || source->trueColor == 0) return;

  image.RowTable = source->trueColorRows;
  image.Buffer = nullptr;
  image.Width = description.width;
  image.Height = description.height;
  image.RowSize = description.width * 4;
  image.TotalSize = int64_t{description.height} * description.width * 4;
  image.MappedRowCount = 0;
  image.GetRow = GetRowGDImage;
  AddressPicture(image, picture, kGD, useAlpha);
}

}  // namespace

void ImageConstructorPicture(REALobject instance, REALobject picture, uint8_t useAlpha) {
  if (picture == nullptr) {
    RaiseException("NilObjectException", "picture is nil");
    return;
  }
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr) return;
  StartAnew(*image);
  ClassifyHost();
  if (!IsConsole) AddressBitmap(*image, picture, useAlpha);
  if (!IsDesktop) AddressGDImage(*image, picture, useAlpha);
}

// --- drawing ---

Transfer FitToPicture(const Transfer &transfer, const ImageClassData &image, const PictureEditor &picture) {
  const Transfer fitted = FitTransfer(transfer, image.Width, image.Height, picture.Width, picture.Height);
  return CutToImages(fitted, image.Width, image.Height, picture.Width, picture.Height);
}

void SkipRows(PictureEditor &picture, int32_t rows) {
  for (int32_t i = 0; i < rows; ++i) picture.NextRow();
}

namespace {

// Attaches a reader to the picture and lets `draw` have it with its cursor on the first row, if anything is to be
// drawn. False if the picture cannot be read.
bool DrawFitted(ImageClassData &image, REALobject picture, const Transfer &transfer,
                const std::function<void(const Transfer &, PictureEditor &)> &draw) {
  PictureReader reader;
  if (!reader.GetPictureEditor(picture, 1, 0)) return false;
  const Transfer fitted = FitToPicture(transfer, image, reader);
  if (!IsEmpty(fitted)) {
    SkipRows(reader, fitted.sourceY);
    draw(fitted, reader);
  }
  return true;
}

int32_t SampleOf(const PixelWord &word, PictureColour colour) {
  switch (colour) {
    case PictureColour::Red:
      return word.red;
    case PictureColour::Green:
      return word.green;
    default:
      return word.blue;
  }
}

}  // namespace

void DrawColours(const PixelWatch &watched, const Transfer &transfer, PictureEditor &picture) {
  ImageClassData &image = watched.Record();
  YieldOn(image);
  const PixelWord *word = WordOf(picture.Layout);
  if (word == nullptr) return;
  RowMover mover;
  for (int32_t i = 0; i < transfer.height; ++i) {
    if (uint8_t *dest = DestPixel(watched, transfer, i); dest != nullptr) {
      const SampleMover &move = mover.For(kWordBytes, image.PixelSize, ColourMoves(*word, image));
      move(SourcePixel(picture, transfer), dest, transfer.width);
    }
    picture.NextRow();
    YieldOn(image);
  }
}

void DrawGray(const PixelWatch &watched, const Transfer &transfer, PictureEditor &picture, PictureColour colour) {
  const ImageClassData &image = watched.Record();
  const PixelWord *word = WordOf(picture.Layout);
  const SampleMove gray{
      .from = word != nullptr ? SampleOf(*word, colour) : 0, .to = image.GrayOffset, .zero = word == nullptr};
  RowMover mover;
  for (int32_t i = 0; i < transfer.height; ++i) {
    if (uint8_t *dest = DestPixel(watched, transfer, i); dest != nullptr) {
      const SampleMover &move = mover.For(kWordBytes, image.PixelSize, std::span(&gray, 1));
      move(SourcePixel(picture, transfer), dest, transfer.width);
    }
    picture.NextRow();
  }
}

void DrawToGrayChannel(REALobject instance, REALobject picture, const Transfer &transfer, PictureColour colour) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !image->HasGray || !IsUsable(*image)) return;
  const PixelWatch watched(*image);
  YieldOn(*image);
  DrawFitted(*image, picture, transfer,
             [&](const Transfer &fitted, PictureEditor &reader) { DrawGray(watched, fitted, reader, colour); });
}

void rbDrawPictureRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                       int32_t destHeight, int32_t sourceX, int32_t sourceY) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !(image->HasRed && image->HasGreen && image->HasBlue) || !IsUsable(*image)) return;
  const PixelWatch watched(*image);
  YieldOn(*image);
  const Transfer transfer{destX, destY, destWidth, destHeight, sourceX, sourceY};
  const bool attached = DrawFitted(*image, picture, transfer, [&](const Transfer &fitted, PictureEditor &reader) {
    DrawColours(watched, fitted, reader);
  });
  if (attached) YieldOn(*image);  // once the picture is released
}

}  // namespace zvk::pictures
