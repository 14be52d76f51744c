// Drawing on pictures of the GD library: paper and letters.
#pragma once

#include <cstdint>
#include <string>

#include "standalone/runtime/owned.h"
#include "standalone/runtime/picture.h"

namespace standalone {

// Pixels that each built-in letter takes, its space included.
struct LetterSize {
  int32_t width;
  int32_t height;
};
LetterSize SizeOfLetters();

// A new picture of one opaque colour (0xRRGGBB). Sizes are 1 or more. Throws std::bad_alloc.
Owned<Picture> Paper(int32_t width, int32_t height, uint32_t colour);

// The letters that there are for a text in UTF-8: what is not printable ASCII becomes a question mark.
std::string LettersOf(const std::string &text);

// Draws LettersOf the text in one line, its top left corner at (x, y), as far as the picture goes. Throws
// std::invalid_argument on a picture that is not of the GD library.
void DrawLetters(Picture &picture, int32_t x, int32_t y, const std::string &text, uint32_t colour);

}  // namespace standalone
