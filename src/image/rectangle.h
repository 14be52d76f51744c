// The two ways in which a caller's rectangle is made to fit: against one image, and against a destination and a source
// together. The fits reckon in 32 bits, as callers know them, and their sums wrap; the cut in 64 bits, made after an
// operation's own tests, leaves only what is safe to touch.
#pragma once

#include <cstdint>

#include "host/layers.h"

namespace zvk::image {

// Columns x to x + width - 1 and rows y to y + height - 1 of one image, in pixels.
struct Rectangle {
  int32_t x;
  int32_t y;
  int32_t width;
  int32_t height;

  bool operator==(const Rectangle &) const = default;
};

// The same size at one place of a destination and at another one of a source, in pixels.
struct Transfer {
  int32_t destX;
  int32_t destY;
  int32_t width;
  int32_t height;
  int32_t sourceX;
  int32_t sourceY;

  bool operator==(const Transfer &) const = default;
};

// True if no pixel is meant. Both fits may leave a size below zero.
constexpr bool IsEmpty(const Rectangle &rectangle) { return rectangle.width < 1 || rectangle.height < 1; }
constexpr bool IsEmpty(const Transfer &transfer) { return transfer.width < 1 || transfer.height < 1; }

// Fits a caller's rectangle to an image of the given size, each axis by itself: a negative size extends to the other
// side of the corner, the part before 0 is cut, then the part beyond the image. At a position beyond the far edge the
// size is the image's less the position, so below zero. 32-bit sums wrap. The result is never left of or above 0.
Rectangle FitRectangle(Rectangle rectangle, int32_t imageWidth, int32_t imageHeight);

// Fits a caller's transfer to both images, each axis by itself: a negative source position shifts the whole transfer, a
// negative size extends to the other side of the destination's corner, a negative destination position takes from the
// source, then the size is cut at the destination's edge and at the source's. 32-bit sums wrap.
Transfer FitTransfer(Transfer transfer, int32_t destWidth, int32_t destHeight, int32_t sourceWidth,
                     int32_t sourceHeight);

// What of a fitted rectangle (position at 0 or above) really lies in the image, in 64-bit arithmetic: less than the fit
// left only where one of its sums has wrapped. Sizes come out at zero or above.
Rectangle CutToImage(Rectangle rectangle, int32_t imageWidth, int32_t imageHeight);

// What of a fitted transfer really lies in both images, likewise. What is cut off on one side goes on the other as
// well.
Transfer CutToImages(Transfer transfer, int32_t destWidth, int32_t destHeight, int32_t sourceWidth,
                     int32_t sourceHeight);

}  // namespace zvk::image
