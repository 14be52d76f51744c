#include "pictures/masked_drawing.h"

#include <algorithm>
#include <cstddef>

#include "host/host_services.h"
#include "pictures/picture_import.h"
#include "pictures/pixel_rows.h"
#include "pictures/pixel_words.h"
#include "pixels/divide_by_255.h"

namespace zvk::pictures {

namespace {

bool HasColours(const ImageClassData &image) { return image.HasRed && image.HasGreen && image.HasBlue; }

// Nil if there is none. The reference that comes with it is never given back.
REALobject ExistingMask(REALobject picture) { return REALGetPictureMask(picture, 0); }

// What a picture without mask reads as one.
struct WhiteWord {
  static Samples Load(const uint8_t *) { return {255, 255, 255}; }
};

// Turned round or as they are: flip is 255 or 0.
constexpr uint8_t Flip(bool invertMask) { return invertMask ? 255 : 0; }

// The mask's sample 255 gives `old`, 0 gives `drawn`.
uint8_t Blend(uint32_t old, uint32_t drawn, uint32_t mask) {
  return static_cast<uint8_t>(DivideBy255((255 - mask) * drawn + old * mask));
}

// Calls drawRow(dest, pictureRow, maskRow) for each row of the transfer, and steps both cursors. A row that cannot be
// had is left out.
template <class DrawRow>
void ForEachMaskedRow(ImageClassData &image, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
                      DrawRow drawRow) {
  for (int32_t i = 0; i < transfer.height; ++i) {
    if (uint8_t *dest = DestPixel(image, transfer, i); dest != nullptr) {
      drawRow(dest, SourcePixel(picture, transfer), SourcePixel(mask != nullptr ? *mask : picture, transfer));
    }
    picture.NextRow();
    if (mask != nullptr) mask->NextRow();
    YieldOn(image);
  }
}

// Attaches readers to the picture and, unless it is nil, to the mask, and lets draw(fitted, picture, mask) have them
// with their cursors on the first row, if anything is to be drawn.
template <class Draw>
void DrawFitted(ImageClassData &image, REALobject picture, REALobject mask, const Transfer &transfer, Draw draw) {
  PictureReader reader;
  PictureReader maskReader;
  if (!reader.GetPictureEditor(picture, 1, 0)) return;
  if (mask != nullptr && !maskReader.GetPictureEditor(mask, 1, 0)) return;
  Transfer fitted = FitToPicture(transfer, image, reader);
  // The host keeps a mask as large as its picture, so its size is not asked for. Where its rows end it is not read.
  if (mask != nullptr) fitted.width = std::min(fitted.width, maskReader.RowPixels() - fitted.sourceX);
  if (!IsEmpty(fitted)) {
    SkipRows(reader, fitted.sourceY);
    if (mask != nullptr) SkipRows(maskReader, fitted.sourceY);
    draw(fitted, reader, maskReader);
  }
  maskReader.ReleasePicture();
  reader.ReleasePicture();
  YieldOn(image);
}

}  // namespace

void DrawMasked(ImageClassData &image, const Transfer &transfer, PictureEditor &picture, PictureEditor *mask,
                bool invertMask) {
  YieldOn(image);
  const auto drawRows = [&, flip = Flip(invertMask)](auto word, auto maskWord) {
    ForEachMaskedRow(image, transfer, picture, mask, [&](uint8_t *dest, const uint8_t *source, const uint8_t *masks) {
      StoreRow(
          dest, transfer.width, image, [=](ptrdiff_t x, Samples) { return word.Load(source + 4 * x); },
          [=](ptrdiff_t x) { return static_cast<uint8_t>(maskWord.Load(masks + 4 * x).red ^ flip); });
    });
  };
  if (mask != nullptr) {
    VisitPixelWords(picture.Layout, mask->Layout, drawRows);
  } else {
    VisitPixelWord(picture.Layout, [&]<class Word>(Word word) {
      if constexpr (Word::kKnown) drawRows(word, WhiteWord());
    });
  }
}

void BlendMasked(ImageClassData &image, const Transfer &transfer, PictureEditor &picture, PictureEditor &mask,
                 bool invertMask) {
  YieldOn(image);
  VisitPixelWords(picture.Layout, mask.Layout, [&, flip = Flip(invertMask)](auto word, auto maskWord) {
    ForEachMaskedRow(image, transfer, picture, &mask, [&](uint8_t *dest, const uint8_t *source, const uint8_t *masks) {
      StoreRow(dest, transfer.width, image, [=](ptrdiff_t x, Samples old) {
        const Samples drawn = word.Load(source + 4 * x);
        const Samples kept = maskWord.Load(masks + 4 * x);
        return Samples{Blend(old.red, drawn.red, kept.red ^ flip), Blend(old.green, drawn.green, kept.green ^ flip),
                       Blend(old.blue, drawn.blue, kept.blue ^ flip)};
      });
    });
  });
}

void rbDrawMaskedPictureRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                             int32_t destHeight, int32_t sourceX, int32_t sourceY, uint8_t invertMask) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !HasColours(*image)) return;
  const REALobject mask = ExistingMask(picture);
  if (!IsUsable(*image)) return;
  YieldOn(*image);
  const Transfer transfer{destX, destY, destWidth, destHeight, sourceX, sourceY};
  DrawFitted(*image, picture, mask, transfer,
             [&](const Transfer &fitted, PictureEditor &reader, PictureEditor &maskReader) {
               DrawMasked(*image, fitted, reader, mask != nullptr ? &maskReader : nullptr, invertMask != 0);
             });
}

void rbDrawMaskedPictureRGB2(REALobject instance, REALobject picture, uint8_t invertMask) {
  rbDrawMaskedPictureRGB4(instance, picture, 0, 0, invertMask);
}

void rbDrawMaskedPictureRGB4(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                             uint8_t invertMask) {
  const auto [width, height] = SizeOf(picture);
  rbDrawMaskedPictureRGB6(instance, picture, destX, destY, width, height, invertMask);
}

void rbDrawMaskedPictureRGB6(REALobject instance, REALobject picture, int32_t destX, int32_t destY, int32_t destWidth,
                             int32_t destHeight, uint8_t invertMask) {
  rbDrawMaskedPictureRGB8(instance, picture, destX, destY, destWidth, destHeight, 0, 0, invertMask);
}

void rbDrawPictureApplyMaskRGB8(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                int32_t destWidth, int32_t destHeight, int32_t sourceX, int32_t sourceY,
                                uint8_t invertMask) {
  ImageClassData *image = RecordOf(instance);
  if (image == nullptr || !HasColours(*image)) return;
  const REALobject mask = ExistingMask(picture);
  if (mask == nullptr) {
    // Drawn plain, so the inversion of a mask that is not there counts for nothing: unlike in the other family.
    rbDrawPictureRGB8(instance, picture, destX, destY, destWidth, destHeight, sourceX, sourceY);
    return;
  }
  if (!IsUsable(*image)) return;
  YieldOn(*image);
  const Transfer transfer{destX, destY, destWidth, destHeight, sourceX, sourceY};
  DrawFitted(*image, picture, mask, transfer,
             [&](const Transfer &fitted, PictureEditor &reader, PictureEditor &maskReader) {
               BlendMasked(*image, fitted, reader, maskReader, invertMask != 0);
             });
}

void rbDrawPictureApplyMaskRGB2(REALobject instance, REALobject picture, uint8_t invertMask) {
  rbDrawPictureApplyMaskRGB4(instance, picture, 0, 0, invertMask);
}

void rbDrawPictureApplyMaskRGB4(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                uint8_t invertMask) {
  const auto [width, height] = SizeOf(picture);
  rbDrawPictureApplyMaskRGB6(instance, picture, destX, destY, width, height, invertMask);
}

void rbDrawPictureApplyMaskRGB6(REALobject instance, REALobject picture, int32_t destX, int32_t destY,
                                int32_t destWidth, int32_t destHeight, uint8_t invertMask) {
  rbDrawPictureApplyMaskRGB8(instance, picture, destX, destY, destWidth, destHeight, 0, 0, invertMask);
}

}  // namespace zvk::pictures
