// Random walks over random file-backed images, against a block that is placed by hand.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/image_record.h"
#include "tests/scenes/cases.h"
#include "tests/support/plugin_host.h"

namespace zvk::image {
namespace {

using scenes::CheckCases;
using scenes::Random;

// The rows of a mapped block, written from the rules.
struct Block {
  int64_t first = -1;
  int64_t last = -1;
  int64_t rows = 0;
  int64_t bytes = 0;

  void Measure(int64_t wanted, int64_t rowSize, int64_t height) {
    bytes = wanted / 4096;
    if (bytes < 4096) bytes = 4096;
    bytes *= 4096;
    if (bytes > rowSize * height) bytes = rowSize * height;
    if (bytes < 5 * rowSize) bytes = 5 * rowSize;
    while (bytes % 4096 != 0) ++bytes;
    rows = bytes / rowSize;
  }
  void MoveTo(int64_t row, int64_t height) {
    if (row >= first && row <= last) return;
    first = row >= 2 ? row - 2 : row;
    if (first > height - rows) first = height - rows < 0 ? 0 : height - rows;
    last = first + rows - 1;
  }
};

int32_t BlockSize(Random &random) {
  return random.OneIn(2) ? random.Between(-10, 9) : random.Between(16770000, 50000000);
}

void Walk(PluginHost &host, Random &random) {
  const auto image = host.New("PictureZVK");
  ImageClassData *const record = RecordOf(image);
  // Few rows of many pages or many rows of few.
  const auto pages = random.Of({1, 2, 3, 7, 500, 3000});
  const auto height = random.Between(1, pages > 100 ? 40 : 20000);
  const int32_t blockSize = BlockSize(random);
  ImageConstructorFile(image, pages * 4096 - random.Between(0, 4095), height, ImageFormatG, blockSize, nullptr);
  RC_ASSERT(record->Valid);
  RC_ASSERT(record->RowSize == pages * 4096);
  Block block;
  block.Measure(blockSize, record->RowSize, height);
  block.MoveTo(0, height);

  std::vector<int32_t> written(static_cast<size_t>(height), 0);
  const auto steps = random.Between(1, 59);
  int32_t row = 0;
  for (int32_t step = 1; step <= steps; ++step) {
    if (random.OneIn(10)) {
      const int32_t wanted = BlockSize(random);
      SetMemBlockSize(image, 0, wanted);
      block = {};
      block.Measure(wanted, record->RowSize, height);
      block.MoveTo(0, height);
    }
    // A short step from where the walk is, or anywhere.
    row = random.OneIn(3) ? random.Between(0, height - 1) : row + random.Between(-4, 4);
    row = row < 0 ? 0 : row >= height ? height - 1 : row;
    uint8_t *const bytes = GetRowMapping(record, row);
    block.MoveTo(row, height);
    RC_ASSERT(record->MappingBlockSize == block.bytes);
    RC_ASSERT(record->MappedRowCount == block.rows);
    RC_ASSERT(record->MappedFirstRow == block.first);
    RC_ASSERT(record->MappedLastRow == block.last);
    RC_ASSERT(bytes == record->Buffer + (row - block.first) * record->RowSize);

    int32_t found;
    std::memcpy(&found, bytes, sizeof found);
    RC_ASSERT(found == written[static_cast<size_t>(row)]);
    written[static_cast<size_t>(row)] = step;
    std::memcpy(bytes, &step, sizeof step);
  }
}

TEST(FileRowsProperty, ARandomWalkFindsEveryRowAndMovesTheBlockAsTold) {
  PluginHost host;
  CheckCases([&host](Random &random) { Walk(host, random); });
}

}  // namespace
}  // namespace zvk::image
