// The 32-bit pixels of host pictures: where the samples lie in a pixel, by the editor's layout code. A code of a bitmap
// context (1 to 6) is its alpha info; premultiplied, plain and filler forms are read and written alike.
#pragma once

#include <cstdint>

#include "pictures/picture_editor.h"

namespace zvk::pictures {

inline constexpr int32_t kWordBytes = 4;

// Which byte of a pixel, in memory order, holds which sample.
struct PixelWord {
  int32_t red;
  int32_t green;
  int32_t blue;
  int32_t alpha;
  uint8_t opaque;  // the alpha that makes the pixel opaque, 0 or 255
};

inline constexpr PixelWord kAlphaLastWord{0, 1, 2, 3, 255};   // layouts 1, 3, 5
inline constexpr PixelWord kAlphaFirstWord{1, 2, 3, 0, 255};  // layouts 2, 4, 6
inline constexpr PixelWord kGDWord{2, 1, 0, 3, 0};            // layout 8: GD's alpha 0 is opaque

// The pixels of a layout; nil if nobody knows it.
constexpr const PixelWord *WordOf(int32_t layout) {
  switch (layout) {
    case 1:
    case 3:
    case 5:
      return &kAlphaLastWord;
    case 2:
    case 4:
    case 6:
      return &kAlphaFirstWord;
    case PictureEditor::kLayoutGD:
      return &kGDWord;
    default:
      return nullptr;
  }
}

}  // namespace zvk::pictures
