// What the tests of the row exchange share: a fixture with a host, and images of random bytes.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "image/image_record.h"
#include "image/image_storage.h"
#include "standalone/runtime/memory_block.h"
#include "tests/support/plugin_host.h"

namespace exchange_testing {

using standalone::Owned;

// Random bytes, 0 and 255 more often than the others.
inline std::vector<uint8_t> RandomBytes(std::mt19937 &random, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t &byte : bytes) {
    const uint32_t value = random();
    byte = value % 8 == 0 ? 0 : value % 8 == 1 ? 255 : static_cast<uint8_t>(value >> 8);
  }
  return bytes;
}

class ExchangeTest : public testing::Test {
 protected:
  explicit ExchangeTest(standalone::HostOptions options = {}) : host_(std::move(options)) {}

  // An image in memory of its own.
  Owned<standalone::Object> New(int32_t width, int32_t height, int32_t format) {
    auto image = host_.New("PictureZVK");
    zvk::image::ImageConstructor(image, width, height, format);
    return image;
  }

  // An image over a block.
  Owned<standalone::Object> NewOver(const Owned<standalone::MemoryBlock> &block, int32_t width, int32_t height,
                                    int32_t format, int32_t rowSize) {
    auto image = host_.New("PictureZVK");
    zvk::image::ImageConstructorMemory(image, block, width, height, format, rowSize);
    return image;
  }

  static zvk::image::ImageClassData &Record(const Owned<standalone::Object> &image) {
    return *zvk::image::RecordOf(image);
  }

  static uint8_t *Row(const Owned<standalone::Object> &image, int32_t index) {
    return Record(image).GetRow(&Record(image), index);
  }

  static std::vector<uint8_t> RowBytes(const Owned<standalone::Object> &image, int32_t index) {
    const uint8_t *row = Row(image, index);
    return {row, row + Record(image).RowSize};
  }

  static void SetRowBytes(const Owned<standalone::Object> &image, int32_t index, const std::vector<uint8_t> &bytes) {
    std::copy(bytes.begin(), bytes.end(), Row(image, index));
  }

  void FillRows(const Owned<standalone::Object> &image, uint32_t seed = 1) {
    std::mt19937 random(seed);
    for (int32_t y = 0; y < Record(image).Height; ++y) {
      SetRowBytes(image, y, RandomBytes(random, static_cast<size_t>(Record(image).RowSize)));
    }
  }

  // The bytes of the block that a handler returned, which ends here; a single 0xEE for nil.
  std::vector<uint8_t> Taken(REALobject result) {
    const auto block = AdoptMemoryBlock(result);
    return block ? std::vector<uint8_t>(block->Data(), block->Data() + block->Size()) : std::vector<uint8_t>{0xEE};
  }

  void ExpectNothingRaised() { EXPECT_FALSE(host_.TakeException()); }
  void ExpectRaised(const std::string &className, const std::string &message) {
    const auto exception = host_.TakeException();
    ASSERT_TRUE(exception);
    EXPECT_EQ(exception->className, className);
    EXPECT_EQ(exception->message, message);
    EXPECT_EQ(exception->errorNumber, 0);
  }

  PluginHost host_;
};

}  // namespace exchange_testing
