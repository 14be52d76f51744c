// What the random tests of host pictures share: numbers of calls, images of any shape, and which pixels a call means.
#pragma once

#include <rapidcheck.h>

#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "tests/pictures/picture_testing.h"

namespace picture_testing {

inline int32_t Between(int32_t least, int32_t most) {
  return *rc::gen::noShrink(rc::gen::resize(rc::kNominalSize, rc::gen::inRange(least, most + 1)));
}

// Several cases in a run of the property: many rectangles come out empty.
template <class Case>
void Repeat(Case check) {
  for (int i = 0; i < 10; ++i) check();
}

// The numbers of one call: positions and sizes around small images, or (one call in four) anywhere in 32 bits.
struct Numbers {
  const bool near = Between(0, 3) != 0;

  int32_t Position() const { return near ? Between(-3, 5) : Wild(); }
  int32_t Size() const { return near ? Between(-4, Between(0, 2) == 0 ? 150 : 16) : Wild(); }

  static int32_t Wild() {
    switch (Between(0, 3)) {
      case 0:
        return INT32_MAX - Between(0, 20);
      case 1:
        return INT32_MIN + Between(0, 20);
      case 2:
        return static_cast<int32_t>(static_cast<uint32_t>(Between(0, 65535)) << 16);
      default:
        return Between(-5, 16);
    }
  }
};

// Mostly small; at times long enough for the loops that take many pixels at once.
inline int32_t AnySide() { return Between(0, 3) != 0 ? Between(1, 12) : Between(12, 150); }

inline int32_t AnyFormat() {
  const int32_t format = Between(1, 40);
  return format < 14 ? format : format + 1;
}

// An image of any format over memory that ends right behind its last pixel, with spare bytes between pixels and between
// rows, offsets that may stand in any order, fall together or point at the next pixel, and the rows either way up.
struct AnyImage {
  explicit AnyImage(PluginHost &host, int32_t format = AnyFormat()) {
    const int32_t width = AnySide(), height = Between(1, 12);
    image = host.New("PictureZVK");
    zvk::image::ImageConstructor(image, 1, 1, format);
    const int32_t pixelSize = zvk::image::RecordOf(image)->PixelSize + (Between(0, 3) == 0 ? Between(1, 3) : 0);
    const int32_t shift = Between(0, 3) == 0 ? Between(1, 2) * pixelSize : 0;
    const int32_t rowBytes = width * pixelSize + shift;
    const int32_t rowSize = rowBytes + Between(0, 5);
    block = host.NewMemoryBlock(rowSize * (height - 1) + rowBytes);
    zvk::image::ImageDestructor(image);
    zvk::image::ImageConstructorMemory(image, block, width, height, format, rowSize);
    zvk::image::ImageClassData &created = record();
    created.PixelSize = pixelSize;
    for (int32_t *offset :
         {&created.RedOffset, &created.GreenOffset, &created.BlueOffset, &created.GrayOffset, &created.AlphaOffset,
          &created.CyanOffset, &created.MagentaOffset, &created.YellowOffset, &created.BlackOffset}) {
      *offset += shift;
    }
    if (created.BitsPerComponent == 8 && Between(0, 3) == 0) {
      created.RedOffset = shift + Between(0, pixelSize - 1);
      created.GreenOffset = shift + Between(0, pixelSize - 1);
      created.BlueOffset = shift + Between(0, pixelSize - 1);
    }
    if (Between(0, 2) == 0) created.GetRow = zvk::image::GetRowLinearMirrored;
    std::mt19937 random(static_cast<uint32_t>(Between(0, 1000000)));
    for (int32_t i = 0; i < block->Size(); ++i) block->Data()[i] = RandomByte(random);
  }

  zvk::image::ImageClassData &record() const { return *zvk::image::RecordOf(image); }
  std::vector<uint8_t> AllBytes() const { return {block->Data(), block->Data() + block->Size()}; }

  Owned<standalone::MemoryBlock> block;
  Owned<standalone::Object> image;
};

// Destination and source positions of one axis that belong together: after the order of the first two steps, those that
// exist on both sides.
inline std::vector<std::pair<int32_t, int32_t>> Pairs(int32_t dest, int32_t size, int32_t source, int32_t destLimit,
                                                      int32_t sourceLimit) {
  int64_t d = dest, n = size, s = source;
  if (s < 0) {
    n += s;
    d += s;
    s = 0;
  }
  if (n < 0) {
    d += n;
    n = -n;
  }
  std::vector<std::pair<int32_t, int32_t>> pairs;
  for (int64_t column = 0; column < destLimit; ++column) {
    const int64_t i = column - d;
    if (i >= 0 && i < n && s + i < sourceLimit) pairs.emplace_back(column, s + i);
  }
  return pairs;
}

}  // namespace picture_testing
