// An image in a file and one in memory, filled alike and seen through the same views, give the same samples by every
// way in which rows are handed out.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "exchange/raw_rows.h"
#include "exchange/row_conversion.h"
#include "exchange/row_strings.h"
#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/support/plugin_host.h"

namespace zvk::exchange {
namespace {

using Image = standalone::Owned<standalone::Object>;

int32_t AnyFormat() {
  const auto number = *rc::gen::inRange(1, 41);
  return number < 14 ? number : number + 1;
}

class FileExchangeProperty : public testing::Test {
 protected:
  // What a getter gave: the bytes, "nil", or the message that it raised.
  template <class Result>
  std::string Told(REALobject result, const Result &bytesOf) {
    const auto block = AdoptMemoryBlock(result);
    if (const auto raised = host_.TakeException()) return "raised " + raised->className + ": " + raised->message;
    return block ? "bytes " + bytesOf(*block.Get()) : "nil";
  }

  std::string RowInFormatOf(const Image &image, int32_t y, int32_t format) {
    return Told(rbGetRowF(image, y, format), [](const standalone::MemoryBlock &block) {
      return std::string(block.Data(), block.Data() + block.Size());
    });
  }

  // The first `count` bytes of the row's copy; what follows them is padding.
  std::string RowOf(const Image &image, int32_t y, int32_t count) {
    return Told(rbGetRowCopy(image, y), [count](const standalone::MemoryBlock &block) {
      return std::string(block.Data(), block.Data() + std::min(count, block.Size()));
    });
  }

  std::string DataOf(const Image &image, int32_t format) {
    const auto string = Adopt(rbGetAllFS(image, format));
    if (const auto raised = host_.TakeException()) return "raised " + raised->className + ": " + raised->message;
    return string ? "bytes " + std::string(string->Bytes()) : "nil";
  }

  PluginHost host_;
};

TEST_F(FileExchangeProperty, FilesAndMemoryGiveTheSameSamples) {
  EXPECT_TRUE(rc::check([this] {
    const int32_t format = AnyFormat(), width = *rc::gen::inRange(1, 40), height = *rc::gen::inRange(1, 12);
    Image inMemory = host_.New("PictureZVK");
    Image inFile = host_.New("PictureZVK");
    ImageConstructor(inMemory, width, height, format);
    ImageConstructorFile(inFile, width, height, format, 0, nullptr);
    RC_ASSERT(RecordOf(inMemory)->Valid && RecordOf(inFile)->Valid);

    const int32_t rowBytes = width * RecordOf(inMemory)->PixelSize;
    std::mt19937 random(*rc::gen::arbitrary<uint32_t>());
    for (int32_t y = 0; y < height; ++y) {
      uint8_t *memoryRow = RecordOf(inMemory)->GetRow(RecordOf(inMemory), y);
      for (int32_t i = 0; i < rowBytes; ++i) memoryRow[i] = static_cast<uint8_t>(random());
      std::copy_n(memoryRow, rowBytes, RecordOf(inFile)->GetRow(RecordOf(inFile), y));
    }

    if (*rc::gen::arbitrary<bool>()) {
      const int32_t x = *rc::gen::inRange(0, width), y = *rc::gen::inRange(0, height);
      const int32_t clipWidth = *rc::gen::inRange(1, width + 1), clipHeight = *rc::gen::inRange(1, height + 1);
      inMemory = Adopt(ClipImage5(inMemory, x, y, clipWidth, clipHeight));
      inFile = Adopt(ClipImage5(inFile, x, y, clipWidth, clipHeight));
    }
    if (*rc::gen::arbitrary<bool>()) {
      inMemory = Adopt(GetMirroredView(inMemory));
      inFile = Adopt(GetMirroredView(inFile));
    }

    const int32_t wanted = AnyFormat();
    RC_ASSERT(DataOf(inFile, wanted) == DataOf(inMemory, wanted));
    for (int32_t y = 0; y < RecordOf(inMemory)->Height; ++y) {
      RC_ASSERT(RowOf(inFile, y, rowBytes) == RowOf(inMemory, y, rowBytes));
      RC_ASSERT(RowInFormatOf(inFile, y, wanted) == RowInFormatOf(inMemory, y, wanted));
    }
  }));
}

}  // namespace
}  // namespace zvk::exchange
