// An image far larger than the address space of 32 bits. Its file is sparse, so only the rows that are written take up
// disk.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "image/views.h"
#include "tests/image/file_testing.h"

namespace zvk::image {
namespace {

using file_testing::BytesAt;
using file_testing::StatusOf;

constexpr int32_t kSide = 100000;
constexpr int64_t kRowSize = 303104;  // 300000 bytes are 74 pages
constexpr int64_t kTotalSize = kRowSize * kSide;

class LargeFile : public file_testing::FileImage {
 protected:
  // Skips the test where a file of this size cannot be had for next to nothing.
  void SetUp() override {
    const std::string path = folder_.In("probe");
    const int probe = open(path.c_str(), O_RDWR | O_CREAT, 0600);
    ASSERT_GE(probe, 0);
    const bool isPossible = ftruncate(probe, kTotalSize + 4096) == 0 && pwrite(probe, "x", 1, kTotalSize) == 1;
    const bool isSparse = isPossible && int64_t{StatusOf(probe).st_blocks} * 512 < 1000000;
    close(probe);
    unlink(path.c_str());
    if (!isPossible) GTEST_SKIP() << folder_.Path() << " has no room for a file of 30 GB";
    if (!isSparse) GTEST_SKIP() << folder_.Path() << " knows no sparse files";
  }

  // Three bytes that tell the places of an image apart.
  static std::vector<uint8_t> Mark(int32_t x, int32_t y) {
    return {static_cast<uint8_t>(x * 7 + y * 3 + 1), static_cast<uint8_t>(x >> 8 ^ y), static_cast<uint8_t>(y >> 8)};
  }
  uint8_t *Pixel(int32_t x, int32_t y) { return Row(y) + x * 3; }
};

TEST_F(LargeFile, AnImageOf30GBIsWrittenAndReadAtBothEndsAndInTheMiddle) {
  Construct(kSide, kSide, ImageFormatRGB, 0);
  ExpectNothingRaised();
  ASSERT_TRUE(record_->Valid);
  EXPECT_EQ(record_->RowSize, kRowSize);
  EXPECT_EQ(record_->TotalSize, 30310400000);
  EXPECT_EQ(record_->MappedRowCount, 55);  // 16777216 bytes
  EXPECT_EQ(StatusOf(record_->FileHandle).st_size, 30310404096);

  const int32_t places[] = {0, 1, 49999, 50000, kSide - 2, kSide - 1};
  for (const int32_t y : places) {
    for (const int32_t x : places) std::ranges::copy(Mark(x, y), Pixel(x, y));
  }
  for (const int32_t y : places) {
    for (const int32_t x : places) {
      EXPECT_EQ(std::vector<uint8_t>(Pixel(x, y), Pixel(x, y) + 3), Mark(x, y)) << x << ", " << y;
      EXPECT_EQ(BytesAt(record_->FileHandle, y * kRowSize + x * 3, 3), Mark(x, y)) << x << ", " << y;
    }
  }
  EXPECT_EQ(record_->MappedFirstRow, kSide - 55);

  const auto view = Adopt(GetMirroredView(image_));
  ImageClassData *const viewed = RecordOf(view);
  EXPECT_TRUE(std::ranges::equal(Mark(50000, 50000), std::vector<uint8_t>(viewed->GetRow(viewed, 49999) + 150000,
                                                                          viewed->GetRow(viewed, 49999) + 150003)));
  EXPECT_LT(int64_t{StatusOf(record_->FileHandle).st_blocks} * 512, 10000000);
  ImageDestructor(image_);
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(LargeFile, AWalkDownAnImageOf30GBMovesABlockOf55Rows) {
  Construct(kSide, kSide, ImageFormatRGB, 0);
  ASSERT_TRUE(record_->Valid);
  const faults::Files files;
  for (int32_t row = 0; row < kSide; ++row) ASSERT_NE(Row(row), nullptr);
  // Misses at 55, 108 and so on every 53 rows up to 99960, where the block is moved up to end on the last row.
  EXPECT_EQ(files.Records(faults::FileCall::kMap).size(), 1886u);
  EXPECT_EQ(record_->MappedLastRow, kSide - 1);
}

}  // namespace
}  // namespace zvk::image
