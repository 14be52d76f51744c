// Fills of a rectangle of an image, or of all of it, in place: one value, one colour, random bytes, zero. A rectangle
// with a negative size extends to the other side of its corner, and what lies outside the image is cut. An image that
// is not usable, an empty rectangle and a family that an operation does not serve change nothing. All yield before the
// first and after each row. A colour is red in bits 16 to 23, green in 8 to 15, blue in 0 to 7. Of values, the low byte
// is stored.
#pragma once

#include <cstdint>

#include "image/image_record.h"

namespace zvk::levels {

// Handlers: one byte into all channels, alpha included; filler keeps its bytes. Of a 16-bit sample only the byte at
// GrayOffset is written.
void FillRect1(REALobject instance, int32_t value);
void FillRect5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t value);

// Handlers: a colour into images that have red, green and blue; alpha keeps its values.
void FillRectRGB1(REALobject instance, int32_t red, int32_t green, int32_t blue);
void FillRectRGB5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t red, int32_t green,
                  int32_t blue);
void FillRectRGBc1(REALobject instance, uint32_t colour);
void FillRectRGBc5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t colour);

// Handlers: a colour with its alpha, which is dropped for images without alpha.
void FillRectRGBA1(REALobject instance, int32_t red, int32_t green, int32_t blue, int32_t alpha);
void FillRectRGBA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, int32_t red, int32_t green,
                   int32_t blue, int32_t alpha);
void FillRectRGBcA1(REALobject instance, uint32_t colour, int32_t alpha);
void FillRectRGBcA5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height, uint32_t colour,
                    int32_t alpha);

// Handlers: the low byte of one call of the C library's rand for each sample, alpha included.
void FillRectRandom1(REALobject instance);
void FillRectRandom5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);

// Handlers: zero into every byte of every row, gaps included, or of the rectangle's pixels, filler included.
void ClearRect1(REALobject instance);
void ClearRect5(REALobject instance, int32_t x, int32_t y, int32_t width, int32_t height);

// The three parts of a host colour; the top byte is ignored.
struct ColourParts {
  int32_t red;
  int32_t green;
  int32_t blue;
};
constexpr ColourParts PartsOf(uint32_t colour) {
  return {static_cast<int32_t>(colour >> 16 & 0xFF), static_cast<int32_t>(colour >> 8 & 0xFF),
          static_cast<int32_t>(colour & 0xFF)};
}

}  // namespace zvk::levels
