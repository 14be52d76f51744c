#include "standalone/gd/drawing.h"

#include <gd.h>
#include <gdfonts.h>

#include <memory>
#include <stdexcept>
#include <utility>

#include "standalone/gd/gd_picture.h"

namespace standalone {
LetterSize SizeOfLetters() {
  const gdFontPtr font = gdFontGetSmall();
  return {font->w, font->h};
}

Owned<Picture> Paper(int32_t width, int32_t height, uint32_t colour) {
  auto storage = std::make_unique<GdPictureStorage>(width, height);
  gdImageFilledRectangle(storage->Image(), 0, 0, width - 1, height - 1, static_cast<int>(colour));
  return Owned<Picture>::Adopt(Picture::Make(std::move(storage)));
}

std::string LettersOf(const std::string &text) {
  std::string letters;
  for (const char byte : text) {
    const bool goesOn = (static_cast<unsigned char>(byte) & 0xC0) == 0x80;  // a letter of several bytes
    if (!goesOn) letters += byte >= ' ' && byte <= '~' ? byte : '?';
  }
  return letters;
}

void DrawLetters(Picture &picture, int32_t x, int32_t y, const std::string &text, uint32_t colour) {
  auto *const storage = dynamic_cast<GdPictureStorage *>(&picture.Storage());
  if (storage == nullptr) throw std::invalid_argument("letters are drawn on pictures of the GD library only");
  std::string letters = LettersOf(text);
  gdImageString(storage->Image(), gdFontGetSmall(), x, y, reinterpret_cast<unsigned char *>(letters.data()),
                static_cast<int>(colour));
}

}  // namespace standalone
