// What the tests of the row exchange share: images over blocks, and the bytes of their rows.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "standalone/runtime/memory_block.h"
#include "tests/scenes/image_test.h"
#include "tests/scenes/random.h"
#include "tests/support/plugin_host.h"

namespace exchange_testing {

using standalone::Owned;

class ExchangeTest : public scenes::ImageTest {
 protected:
  using ImageTest::ImageTest;

  // An image over a block.
  Owned<standalone::Object> NewOver(const Owned<standalone::MemoryBlock> &block, int32_t width, int32_t height,
                                    int32_t format, int32_t rowSize) {
    auto image = host_.New("PictureZVK");
    zvk::image::ImageConstructorMemory(image, block, width, height, format, rowSize);
    return image;
  }

  static std::vector<uint8_t> RowBytes(const Owned<standalone::Object> &image, int32_t index) {
    const uint8_t *row = Row(image, index);
    return {row, row + Record(image).RowSize};
  }

  static void SetRowBytes(const Owned<standalone::Object> &image, int32_t index, const std::vector<uint8_t> &bytes) {
    std::copy(bytes.begin(), bytes.end(), Row(image, index));
  }

  void FillRows(const Owned<standalone::Object> &image, uint32_t seed = 1) {
    scenes::Random random(seed);
    for (int32_t y = 0; y < Record(image).Height; ++y) {
      scenes::FillNoise(Row(image, y), static_cast<size_t>(Record(image).RowSize), random);
    }
  }

  // The bytes of the block that a handler returned, which ends here; a single 0xEE for nil.
  std::vector<uint8_t> Taken(REALobject result) {
    const auto block = AdoptMemoryBlock(result);
    return block ? std::vector<uint8_t>(block->Data(), block->Data() + block->Size()) : std::vector<uint8_t>{0xEE};
  }
};

}  // namespace exchange_testing
