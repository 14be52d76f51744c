// What the random tests of host pictures share: images of any shape, and which pixels a call means.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "tests/pictures/picture_testing.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/rectangles.h"

namespace picture_testing {

using scenes::AnyFormat;
using scenes::AnyMove;
using scenes::CheckCases;
using scenes::Random;

// Several cases in a run of the property: many rectangles come out empty.
template <class Case>
void CheckManyCases(Case check) {
  CheckCases([&](Random &random) {
    for (int i = 0; i < 10; ++i) check(random);
  });
}

// An image of any format over memory that ends right behind its last pixel, with spare bytes between pixels and between
// rows, offsets that may stand in any order, fall together or point at the next pixel, and the rows either way up.
struct AnyImage {
  explicit AnyImage(Random &random, PluginHost &host) : AnyImage(random, host, AnyFormat(random)) {}
  AnyImage(Random &random, PluginHost &host, int32_t format) {
    const int32_t width = random.Side(150), height = random.Between(1, 12);
    const int32_t pixelSize = scenes::PixelSizeOf(format) + (random.OneIn(4) ? random.Between(1, 3) : 0);
    const int32_t shift = random.OneIn(4) ? random.Between(1, 2) * pixelSize : 0;
    const int32_t rowBytes = width * pixelSize + shift;
    const int32_t rowSize = rowBytes + random.Between(0, 5);
    block = host.NewMemoryBlock(rowSize * (height - 1) + rowBytes);
    image = host.New("PictureZVK");
    zvk::image::ImageConstructorMemory(image, block, width, height, format, rowSize);
    zvk::image::ImageClassData &created = record();
    created.PixelSize = pixelSize;
    for (int32_t *offset :
         {&created.RedOffset, &created.GreenOffset, &created.BlueOffset, &created.GrayOffset, &created.AlphaOffset,
          &created.CyanOffset, &created.MagentaOffset, &created.YellowOffset, &created.BlackOffset}) {
      *offset += shift;
    }
    if (created.BitsPerComponent == 8 && random.OneIn(4)) {
      created.RedOffset = shift + random.Between(0, pixelSize - 1);
      created.GreenOffset = shift + random.Between(0, pixelSize - 1);
      created.BlueOffset = shift + random.Between(0, pixelSize - 1);
    }
    if (random.OneIn(3)) created.GetRow = zvk::image::GetRowLinearMirrored;
    scenes::FillNoise(block->Data(), static_cast<size_t>(block->Size()), random);
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
