// Rows on their way from a host picture into an image: what every drawing of red, green and blue does with a row. What
// is drawn is told pixel by pixel; where it goes, with loops of their own for the usual places, is settled here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "pictures/picture_editor.h"
#include "pictures/pixel_words.h"
#include "pixels/kernel_clones.h"

namespace zvk::pictures {

// The first pixel of the transfer's row i in the image; nil if the row cannot be had. Asked again for each row: other
// code of the host may have run since, and closed the image or constructed it anew, where the transfer may not fit.
inline uint8_t *DestPixel(ImageClassData &image, const Transfer &transfer, int32_t i) {
  const int32_t y = transfer.destY + i;
  if (!HasPixels(image) || y >= image.Height || transfer.width > image.Width - transfer.destX) return nullptr;
  uint8_t *row = image.GetRow(&image, y);
  return row != nullptr ? row + static_cast<ptrdiff_t>(transfer.destX) * image.PixelSize : nullptr;
}

// The transfer's first pixel in the row under the picture's cursor.
inline const uint8_t *SourcePixel(const PictureEditor &picture, const Transfer &transfer) {
  return picture.RowAddress + static_cast<ptrdiff_t>(transfer.sourceX) * picture.PixelBytes;
}

// In place of an alpha of pixels, where the image's own is left alone.
struct NoAlpha {
  uint8_t operator()(ptrdiff_t) const { return 0; }
};

// The loops below do the same. Each pixel is worked out whole before any of it is stored, and stored before the next
// one is looked at, as the image may lie over the very picture.

template <class Colours, class Alpha>
void StoreBytes(uint8_t *dest, ptrdiff_t first, ptrdiff_t end, const ImageClassData &image, Colours colours,
                Alpha alpha) {
  const ptrdiff_t pixelSize = image.PixelSize;
  const ptrdiff_t red = image.RedOffset, green = image.GreenOffset, blue = image.BlueOffset;
  const ptrdiff_t alphaOffset = image.AlphaOffset;
  for (ptrdiff_t i = first; i < end; ++i) {
    uint8_t *pixel = dest + i * pixelSize;
    const Samples samples = colours(i, Samples{pixel[red], pixel[green], pixel[blue]});
    // First, so that a colour at the same place replaces it.
    if constexpr (!std::is_same_v<Alpha, NoAlpha>) pixel[alphaOffset] = alpha(i);
    pixel[red] = samples.red;
    pixel[green] = samples.green;
    pixel[blue] = samples.blue;
  }
}

// Pixels of three bytes, green being the middle one.
template <int kRed, int kBlue, class Colours>
ZVK_KERNEL_CLONES void StorePacked(uint8_t *dest, ptrdiff_t count, Colours colours) {
  for (ptrdiff_t i = 0; i < count; ++i) {
    uint8_t *pixel = dest + 3 * i;
    const Samples samples = colours(i, Samples{pixel[kRed], pixel[1], pixel[kBlue]});
    pixel[kRed] = samples.red;
    pixel[1] = samples.green;
    pixel[kBlue] = samples.blue;
  }
}

// Where the samples go in a pixel of four bytes. Colours are at three different places.
struct WordPlaces {
  int32_t red;
  int32_t green;
  int32_t blue;
  int32_t alpha;
};

// What no sample goes to is put back as it is.
template <class Colours, class Alpha>
ZVK_KERNEL_CLONES void StoreWords(uint8_t *dest, ptrdiff_t count, WordPlaces places, Colours colours, Alpha alpha) {
  const int32_t red = 8 * places.red, green = 8 * places.green, blue = 8 * places.blue, alphaShift = 8 * places.alpha;
  const uint32_t colourBits = 255u << red | 255u << green | 255u << blue;
  const uint32_t alphaBits = std::is_same_v<Alpha, NoAlpha> ? 0 : 255u << alphaShift & ~colourBits;
  const uint32_t kept = ~(colourBits | alphaBits);
  for (ptrdiff_t i = 0; i < count; ++i) {
    uint32_t word;
    std::memcpy(&word, dest + 4 * i, sizeof word);
    const Samples old = {static_cast<uint8_t>(word >> red), static_cast<uint8_t>(word >> green),
                         static_cast<uint8_t>(word >> blue)};
    const Samples samples = colours(i, old);
    word = (word & kept) | uint32_t{samples.red} << red | uint32_t{samples.green} << green |
           uint32_t{samples.blue} << blue | (uint32_t{alpha(i)} << alphaShift & alphaBits);
    std::memcpy(dest + 4 * i, &word, sizeof word);
  }
}

// Stores `count` pixels from `dest` on in the image: first alpha(i), unless that is NoAlpha, then the three samples of
// colours(i, old), where `old` are the samples that stand there. The offsets count as they are at the call.
template <class Colours, class Alpha = NoAlpha>
void StoreRow(uint8_t *dest, ptrdiff_t count, const ImageClassData &image, Colours colours, Alpha alpha = {}) {
  constexpr bool kStoresAlpha = !std::is_same_v<Alpha, NoAlpha>;
  const int32_t red = image.RedOffset, green = image.GreenOffset, blue = image.BlueOffset;
  const int32_t alphaOffset = kStoresAlpha ? image.AlphaOffset : red;
  const bool alphaIsReplaced = alphaOffset == red || alphaOffset == green || alphaOffset == blue;
  const auto inOneWord = [red](int32_t offset) { return offset >> 2 == red >> 2; };
  if (image.PixelSize == 3 && green == red + 1 && blue == red + 2 && alphaIsReplaced) {
    StorePacked<0, 2>(dest + red, count, colours);
  } else if (image.PixelSize == 3 && green == blue + 1 && red == blue + 2 && alphaIsReplaced) {
    StorePacked<2, 0>(dest + blue, count, colours);
  } else if (image.PixelSize == 4 && inOneWord(green) && inOneWord(blue) && inOneWord(alphaOffset) && red != green &&
             red != blue && green != blue) {
    // Shifts and masks, as an offset may be below zero. The last pixel goes by bytes: its fourth one may lie behind a
    // caller's memory.
    StoreWords(dest + (red & ~3), count - 1, {red & 3, green & 3, blue & 3, alphaOffset & 3}, colours, alpha);
    StoreBytes(dest, count - 1, count, image, colours, alpha);
  } else {
    StoreBytes(dest, 0, count, image, colours, alpha);
  }
}

}  // namespace zvk::pictures
