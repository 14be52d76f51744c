// Rectangles as chance has them, and the rule for those that are moved from one image to another.
#pragma once

#include <cstdint>
#include <stdexcept>

#include "image/image_record.h"
#include "image/rectangle.h"
#include "tests/scenes/random.h"

namespace scenes {

// A part of an image, of one pixel or more.
inline zvk::image::Rectangle AnyPart(Random &random, int32_t width, int32_t height) {
  const int32_t x = random.Between(0, width - 1), y = random.Between(0, height - 1);
  return {x, y, random.Between(1, width - x), random.Between(1, height - y)};
}

// Around an image: all of it, near it with sizes that may be below 0, or anywhere in 32 bits.
inline zvk::image::Rectangle AnyRectangle(Random &random, int32_t width, int32_t height) {
  if (random.OneIn(4)) return {random.Number(), random.Number(), random.Number(), random.Number()};
  if (random.OneIn(4)) return {0, 0, width, height};
  return {random.Between(-3, width + 2), random.Between(-3, height + 2), random.Between(-width - 3, width + 4),
          random.Between(-height - 3, height + 4)};
}

// What a call moves from one image to another: near small images, or (one call in four) anywhere in 32 bits.
struct AnyMove {
  explicit AnyMove(Random &random, bool near) : near(near) {
    for (int32_t *position : {&destX, &destY, &sourceX, &sourceY}) {
      *position = near ? random.Position() : random.Number();
    }
    for (int32_t *size : {&width, &height}) *size = near ? random.Size() : random.Number();
  }
  explicit AnyMove(Random &random) : AnyMove(random, !random.OneIn(4)) {}

  bool near;  // no sum wraps
  int32_t destX, destY, width, height, sourceX, sourceY;
};

// True if an operation that tells a rule of its own for such a rectangle comes to that of FitTransfer. `fit` fits the
// numbers to a dest and a source, and tells if anything is left.
template <class Numbers>
bool OwnRuleIsThatOfATransfer(Random &random, bool (*fit)(Numbers &, const zvk::image::ImageClassData &dest,
                                                          const zvk::image::ImageClassData &source)) {
  zvk::image::ImageClassData dest{}, source{};
  dest.Width = random.OneIn(4) ? random.Between(0, INT32_MAX) : random.Between(0, 30);
  dest.Height = random.Between(1, 30);
  source.Width = random.Between(0, 30);
  source.Height = random.OneIn(4) ? random.Between(1, INT32_MAX) : random.Between(1, 30);
  const AnyMove move(random, false);
  Numbers n{};
  n.destX = move.destX;
  n.destY = move.destY;
  n.width = move.width;
  n.height = move.height;
  n.sourceX = move.sourceX;
  n.sourceY = move.sourceY;
  const zvk::image::Transfer fitted =
      zvk::image::FitTransfer({move.destX, move.destY, move.width, move.height, move.sourceX, move.sourceY}, dest.Width,
                              dest.Height, source.Width, source.Height);
  if (fit(n, dest, source) == IsEmpty(fitted)) return false;
  return IsEmpty(fitted) || fitted == zvk::image::Transfer{n.destX, n.destY, n.width, n.height, n.sourceX, n.sourceY};
}

}  // namespace scenes
