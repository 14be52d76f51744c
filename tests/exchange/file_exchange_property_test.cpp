// An image in a file and one in memory, filled alike and seen through the same views, give the same samples by every
// way in which rows are handed out.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "exchange/raw_rows.h"
#include "exchange/row_conversion.h"
#include "exchange/row_strings.h"
#include "image/image_record.h"
#include "tests/scenes/cases.h"
#include "tests/scenes/formats.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/views.h"
#include "tests/support/plugin_host.h"

namespace zvk::exchange {
namespace {

using namespace scenes;
using Image = ImageObject;

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
  CheckCases([this](Random &random) {
    const int32_t format = AnyFormat(random), width = random.Side(40), height = random.Between(1, 12);
    const StoredImage memory = NoisyImage(host_, Kind::Memory, width, height, format, {}, random.Bits());
    const StoredImage file(host_, Kind::File, width, height, format, AnyRowLayout(random, Kind::File, height));
    const int32_t rowBytes = width * memory.Record().PixelSize;
    for (int32_t y = 0; y < height; ++y) {
      std::copy_n(memory.Record().GetRow(&memory.Record(), y), rowBytes, file.Record().GetRow(&file.Record(), y));
    }

    const uint32_t view = random.Bits();
    Random ofMemory(view), ofFile(view);
    const Image inMemory = AnyView(ofMemory, memory), inFile = AnyView(ofFile, file);

    const int32_t wanted = AnyFormat(random);
    RC_ASSERT(DataOf(inFile, wanted) == DataOf(inMemory, wanted));
    for (int32_t y = 0; y < RecordOf(inMemory)->Height; ++y) {
      RC_ASSERT(RowOf(inFile, y, rowBytes) == RowOf(inMemory, y, rowBytes));
      RC_ASSERT(RowInFormatOf(inFile, y, wanted) == RowInFormatOf(inMemory, y, wanted));
    }
  });
}

}  // namespace
}  // namespace zvk::exchange
