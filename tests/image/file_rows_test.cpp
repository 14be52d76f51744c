// The rows of file-backed images: which block is mapped when, and what lands in the file.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <string>
#include <vector>

#include "image/views.h"
#include "tests/image/file_testing.h"
#include "tests/support/faults.h"

namespace zvk::image {
namespace {

using faults::FileCall;
using faults::FileRecord;
using faults::Files;
using file_testing::BytesAt;

class FileRows : public file_testing::FileImage {
 protected:
  // A column of pixels whose rows are a page each; its blocks hold 4096 of them.
  void ConstructTall(int32_t height = 100000, int32_t blockSize = 0) { Construct(10, height, ImageFormatG, blockSize); }
};

// --- the length of a block ---

TEST_F(FileRows, ABlockIsCutDownToTheWholeImage) {
  Construct(10, 10, ImageFormatG, 1);
  ExpectBlock(0, 9, 40960);
}

TEST_F(FileRows, ABlockOfFiveRowsMayReachPastTheEndOfTheFile) {
  Construct(10, 3, ImageFormatG, 1);
  EXPECT_EQ(record_->TotalSize, 12288);
  ExpectBlock(0, 4, 20480);
  Row(2)[9] = 77;
  EXPECT_EQ(BytesAt(record_->FileHandle, 2 * 4096 + 9, 1)[0], 77);
}

TEST_F(FileRows, ABlockHas16777216BytesAtLeast) {
  ConstructTall();
  ExpectBlock(0, 4095, 16777216);
  for (const int32_t value : {1, 4096, 16777215, 16777216, 16777216 + 4095, -1, -2147483647 - 1}) {
    SetMemBlockSize(image_, 0, value);
    EXPECT_EQ(record_->MappingBlockSize, 16777216) << value;
  }
}

TEST_F(FileRows, ABlockIsCutToWholePages) {
  ConstructTall();
  SetMemBlockSize(image_, 0, 20000000);
  ExpectBlock(0, 4881, 19996672);
  SetMemBlockSize(image_, 0, 16777216 + 4096);
  ExpectBlock(0, 4096, 16781312);
}

TEST_F(FileRows, TheConstructorAndTheSetterGoByOneRule) {
  ConstructTall(100000, 20000000);
  ExpectBlock(0, 4881, 19996672);
}

TEST_F(FileRows, TheLargestBlockStaysBelow2GiB) {
  ConstructTall(1000000);  // 4096000000 bytes
  const Files files;
  SetMemBlockSize(image_, 0, 2147483647);
  EXPECT_EQ(record_->MappingBlockSize, 2147479552);  // 524287 pages
  EXPECT_EQ(record_->MappedRowCount, 524287);
  // Whether so much can be mapped is up to the address space.
  ASSERT_EQ(files.Records(FileCall::kMap).size(), 1u);
  EXPECT_EQ(files.Records(FileCall::kMap)[0].size, 2147479552);
}

TEST_F(FileRows, ABlockHoldsFiveRowsAtLeast) {
  Construct(10000000, 100, ImageFormatG, 0);  // rows of 2442 pages
  EXPECT_EQ(record_->RowSize, 10002432);
  ExpectBlock(0, 4, 50012160);
}

TEST_F(FileRows, ABlockMayEndInTheMiddleOfARow) {
  Construct(4097, 10000, ImageFormatG, 16777216 + 4096);  // rows of 2 pages, a block of 4097
  EXPECT_EQ(record_->MappingBlockSize, 16781312);
  EXPECT_EQ(record_->MappedRowCount, 2048);
  EXPECT_EQ(record_->MappedLastRow, 2047);
}

class FileRowsOnLargePages : public file_testing::FileImage {
 protected:
  FileRowsOnLargePages() : FileImage(8192) {}
};

TEST_F(FileRowsOnLargePages, TheLeastBlockIsThePageTimesThePage) {
  Construct(10, 100000, ImageFormatG, 0);
  ExpectBlock(0, 8191, 67108864);
  SetMemBlockSize(image_, 0, 100000000);
  ExpectBlock(0, 12206, 99999744);  // 12207 pages
}

// --- where a block lies ---

TEST_F(FileRows, TheBlockFollowsAWalkDownAndEndsOnTheLastRow) {
  ConstructTall();
  ExpectBlock(0, 4095, 16777216);
  EXPECT_EQ(Row(4095), record_->Buffer + 4095 * 4096);
  ExpectBlock(0, 4095, 16777216);
  const uint8_t *row = Row(4096);
  EXPECT_EQ(row, record_->Buffer + 2 * 4096);
  ExpectBlock(4094, 8189, 16777216);
  row = Row(99999);
  EXPECT_EQ(row, record_->Buffer + 4095 * 4096);
  ExpectBlock(95904, 99999, 16777216);
}

TEST_F(FileRows, TheOffsetInTheFileIsThatOfTheBlocksFirstRow) {
  ConstructTall();
  const Files files;
  Row(4096);
  const std::vector<FileRecord> records = files.Records();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].call, FileCall::kUnmap);
  EXPECT_EQ(records[0].size, 16777216);
  EXPECT_EQ(records[1].call, FileCall::kMap);
  EXPECT_EQ(records[1].size, 16777216);
  EXPECT_EQ(records[1].offset, 4094 * 4096);
  EXPECT_EQ(records[1].descriptor, record_->FileHandle);
}

TEST_F(FileRows, RowsOfTheBlockCostNoCallOfTheSystem) {
  ConstructTall();
  const Files files;
  for (int32_t row = 0; row < 4096; ++row) EXPECT_EQ(Row(row), record_->Buffer + row * 4096);
  EXPECT_TRUE(files.Records().empty());
}

TEST_F(FileRows, TheTwoRowsAboveAreStillThereAfterABlockHasMoved) {
  ConstructTall();
  uint8_t *const row = Row(4096);
  const Files files;
  EXPECT_EQ(Row(4095), row - 4096);
  EXPECT_EQ(Row(4094), row - 2 * 4096);
  EXPECT_TRUE(files.Records().empty());
  Row(4093);
  EXPECT_EQ(files.Records(FileCall::kMap).size(), 1u);
}

TEST_F(FileRows, TheFirstTwoRowsHaveNoLeadIn) {
  ConstructTall();
  {
    Files files;
    files.FailAt(FileCall::kMap, 1);
    SetMemBlockSize(image_, 0, 0);
  }
  ExpectUnmapped();
  EXPECT_NE(Row(1), nullptr);
  ExpectBlock(1, 4096, 16777216);
  EXPECT_NE(Row(0), nullptr);
  ExpectBlock(0, 4095, 16777216);

  Row(50000);
  EXPECT_NE(Row(2), nullptr);
  ExpectBlock(0, 4095, 16777216);
}

TEST_F(FileRows, AWalkDownRemapsOnceForEachBlockLessItsLeadIn) {
  ConstructTall();
  const Files files;
  for (int32_t row = 0; row < 100000; ++row) ASSERT_NE(Row(row), nullptr);
  // Misses at 4096, 8190 and so on every 4094 rows up to 98258, where the block is moved up to end on the last row.
  EXPECT_EQ(files.Records(FileCall::kMap).size(), 24u);
  EXPECT_EQ(files.Records(FileCall::kUnmap).size(), 24u);
}

TEST_F(FileRows, AWalkUpRemapsAtEveryThirdRow) {
  ConstructTall();
  record_->GetRow = GetRowMappingMirrored;
  const Files files;
  for (int32_t index = 0; index < 100000; ++index) ASSERT_NE(Row(index), nullptr);
  // Once for the bottom, rows 95904 to 99999; then at 95903, 95900 and so on down to 2.
  EXPECT_EQ(files.Records(FileCall::kMap).size(), 1u + 31968u);
  EXPECT_EQ(record_->MappedFirstRow, 0);
}

TEST_F(FileRows, AMirroredRowIsThatOfTheIndexFromTheBottom) {
  Construct(10, 10, ImageFormatG, 0);
  for (int32_t index = 0; index < 10; ++index) EXPECT_EQ(GetRowMappingMirrored(record_, index), Row(9 - index));
  record_->RowOffset = 2;
  record_->Height = 5;
  EXPECT_EQ(GetRowMappingMirrored(record_, 0), record_->Buffer + 6 * 4096);
}

TEST_F(FileRows, ARowAboveTheFirstIsNilAndTheBlockIsGone) {
  ConstructTall();
  EXPECT_EQ(Row(-5), nullptr);
  ExpectUnmapped();
  EXPECT_TRUE(record_->Valid);
  EXPECT_NE(Row(0), nullptr);
  ExpectBlock(0, 4095, 16777216);
}

TEST_F(FileRows, RowMinusOneOfAnUnmappedImageIsNilWithoutACallOfTheSystem) {
  ConstructTall();
  Row(-5);
  ExpectUnmapped();
  const Files files;
  EXPECT_EQ(Row(-1), nullptr);  // first and last row are -1 as well
  EXPECT_TRUE(files.Records().empty());
}

TEST_F(FileRows, ABlockThatReachesPastTheFileMovesARowAboveTheFirstToTheTop) {
  Construct(10, 3, ImageFormatG, 1);  // blocks of 5 rows: the last place of one is row -2
  const uint8_t *row = Row(-1);
  ExpectBlock(0, 4, 20480);
  EXPECT_EQ(record_->Buffer - row, 4096);
  EXPECT_EQ(Row(-2), nullptr);
  ExpectUnmapped();
}

TEST_F(FileRows, ABlockAtAddressZeroGivesNoRow) {
  ConstructTall();
  Files files;
  files.MapAtZero();
  EXPECT_EQ(Row(5000), nullptr);
  EXPECT_TRUE(record_->IsMapped);
  EXPECT_EQ(record_->MappedFirstRow, 4998);
  SetMemBlockSize(image_, 0, 0);
  EXPECT_EQ(files.Records(FileCall::kUnmap).size(), 1u);  // the block before it, and none at zero
}

TEST_F(FileRows, ARowPastTheEndMapsTheLastBlockAndLiesBeyondIt) {
  ConstructTall();
  const uint8_t *row = Row(100003);
  EXPECT_EQ(row - record_->Buffer, 4099 * 4096);
  ExpectBlock(95904, 99999, 16777216);
}

TEST_F(FileRows, ABlockThatCannotBeMappedIsNilUntilTheNextCall) {
  ConstructTall();
  Files files;
  files.FailAt(FileCall::kMap, 1, ENOMEM);
  EXPECT_EQ(Row(5000), nullptr);
  ExpectUnmapped();
  EXPECT_TRUE(record_->Valid);
  EXPECT_EQ(files.Records(FileCall::kUnmap).size(), 1u);
  EXPECT_NE(Row(5000), nullptr);
  ExpectBlock(4998, 9093, 16777216);
  EXPECT_EQ(files.Records(FileCall::kUnmap).size(), 1u);  // nothing was mapped in between
  ExpectNothingRaised();
}

// --- the setter ---

TEST_F(FileRows, ANewBlockSizeMapsTheTopAtOnce) {
  ConstructTall();
  Row(50000);
  const Files files;
  SetMemBlockSize(image_, 0, 20000000);
  ExpectBlock(0, 4881, 19996672);
  const std::vector<FileRecord> records = files.Records();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].call, FileCall::kUnmap);
  EXPECT_EQ(records[0].size, 16777216);  // the old size
  EXPECT_EQ(records[1].call, FileCall::kMap);
  EXPECT_EQ(records[1].size, 19996672);
}

TEST_F(FileRows, ANewBlockSizeOfAMirroredImageMapsTheBottom) {
  ConstructTall();
  record_->GetRow = GetRowMappingMirrored;
  SetMemBlockSize(image_, 0, 20000000);
  ExpectBlock(100000 - 4882, 99999, 19996672);
}

TEST_F(FileRows, TheBlockSizeOfAnImageInMemoryIsStoredToNoEffect) {
  ImageConstructor(image_, 100, 100, ImageFormatG);
  const uint8_t *buffer = record_->Buffer;
  SetMemBlockSize(image_, 0, 1);
  // 100 rows of 128 bytes are 12800, rounded up to the page 16384.
  EXPECT_EQ(record_->MappingBlockSize, 16384);
  EXPECT_EQ(record_->MappedRowCount, 128);
  EXPECT_EQ(record_->Buffer, buffer);
  EXPECT_FALSE(record_->IsMapped);
  EXPECT_EQ(Row(99), buffer + 99 * 128);
}

TEST_F(FileRows, TheBlockSizeOfAnImageWithoutRowsIsLeftAlone) {
  SetMemBlockSize(nullptr, 0, 1);
  SetMemBlockSize(image_, 0, 1);  // never constructed
  EXPECT_EQ(record_->MappingBlockSize, 0);
  ImageConstructor(image_, 10, 10, 14);  // given up
  SetMemBlockSize(image_, 0, 1);
  EXPECT_EQ(record_->MappingBlockSize, 0);

  const auto memory = host_.NewMemoryBlock(10);
  const auto rowless = host_.New("PictureZVK");
  ImageConstructorMemory(rowless, memory, 10, 1, ImageFormatG, 0);  // rows of 0 bytes
  SetMemBlockSize(rowless, 0, 1);
  EXPECT_EQ(RecordOf(rowless)->MappingBlockSize, 0);
  EXPECT_EQ(RecordOf(rowless)->MappedRowCount, 1);
  ExpectNothingRaised();
}

TEST_F(FileRows, TheBlockSizeOfAClosedImageIsLeftAlone) {
  Construct(10, 10, ImageFormatG, 0);
  ImageDestructor(image_);
  const Files files;
  SetMemBlockSize(image_, 0, 20000000);
  EXPECT_EQ(record_->MappingBlockSize, 40960);
  EXPECT_TRUE(files.Records().empty());
}

TEST_F(FileRows, ARowSizeBelowZeroIsTakenAsItIs) {
  const auto memory = host_.NewMemoryBlock(100);
  ImageConstructorMemory(image_, memory, 10, 10, ImageFormatG, -10);
  SetMemBlockSize(image_, 0, 1);
  // The image's -100 bytes are cut off at five rows, -50, and rounded up to 0.
  EXPECT_EQ(record_->MappingBlockSize, 0);
  EXPECT_EQ(record_->MappedRowCount, 0);
}

// --- what is in the file ---

TEST_F(FileRows, WrittenRowsStandInTheFileAndTheTailStaysZero) {
  Construct(1366, 5000, ImageFormatRGB, 0);  // rows of 8192 bytes, blocks of 2048 rows
  ASSERT_EQ(record_->MappedRowCount, 2048);
  for (int32_t row = 0; row < 5000; ++row) {
    uint8_t *bytes = Row(row);
    bytes[0] = static_cast<uint8_t>(row);
    bytes[4097] = static_cast<uint8_t>(row >> 8);
  }
  for (int32_t row = 0; row < 5000; ++row) {
    const std::vector<uint8_t> bytes = BytesAt(record_->FileHandle, int64_t{row} * 8192, 8192);
    ASSERT_EQ(bytes[0], row & 255);
    ASSERT_EQ(bytes[4097], row >> 8);
    ASSERT_LE(std::count_if(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte != 0; }), 2);
    ASSERT_EQ(Row(row)[4097], row >> 8);
  }
  const std::vector<uint8_t> tail = BytesAt(record_->FileHandle, 5000 * 8192, 4096);
  EXPECT_EQ(std::count(tail.begin(), tail.end(), 0), 4096);
}

TEST_F(FileRows, ASecondMappingOfTheFileSeesTheRowsAtOnce) {
  Construct(10, 10, ImageFormatG, 0);
  void *mapping = mmap(nullptr, 45056, PROT_READ | PROT_WRITE, MAP_SHARED, record_->FileHandle, 0);
  ASSERT_NE(mapping, MAP_FAILED);
  auto *const bytes = static_cast<uint8_t *>(mapping);
  Row(7)[3] = 99;
  EXPECT_EQ(bytes[7 * 4096 + 3], 99);
  bytes[2 * 4096 + 5] = 44;
  EXPECT_EQ(Row(2)[5], 44);
  EXPECT_EQ(munmap(mapping, 45056), 0);
}

// --- two records on one file ---

TEST_F(FileRows, AViewHasABlockOfItsOwnAndSeesTheParentsWrites) {
  ConstructTall();
  const auto view = Adopt(ClipImage1(image_));
  ImageClassData *const viewed = RecordOf(view);
  ASSERT_NE(viewed->Buffer, record_->Buffer);
  Row(50000)[3] = 11;
  EXPECT_EQ(record_->MappedFirstRow, 49998);
  EXPECT_EQ(viewed->MappedFirstRow, 0);
  EXPECT_EQ(viewed->GetRow(viewed, 50000)[3], 11);
  viewed->GetRow(viewed, 50001)[4] = 22;
  EXPECT_EQ(Row(50001)[4], 22);

  SetMemBlockSize(view, 0, 20000000);
  EXPECT_EQ(viewed->MappedRowCount, 4882);
  EXPECT_EQ(record_->MappedRowCount, 4096);
}

TEST_F(FileRows, AClipsBlockIsHeldInTheStorageAndNotInTheClip) {
  ConstructTall();
  const auto view = Adopt(ClipImage5(image_, 2, 50000, 5, 10));
  ImageClassData *const viewed = RecordOf(view);
  EXPECT_EQ(viewed->MappedFirstRow, 49998);
  EXPECT_EQ(viewed->MappedLastRow, 49998 + 4095);
  EXPECT_EQ(viewed->GetRow(viewed, 9), viewed->Buffer + 11 * 4096);
  // Rows above and below the clip are rows of the file.
  viewed->GetRow(viewed, -50000)[0] = 1;
  viewed->GetRow(viewed, 49999)[0] = 2;
  EXPECT_EQ(viewed->MappedLastRow, 99999);
  EXPECT_EQ(Row(0)[0], 1);
  EXPECT_EQ(Row(99999)[0], 2);
}

TEST_F(FileRows, AMirroredViewStartsAtTheBottom) {
  ConstructTall();
  const auto view = Adopt(GetMirroredView(image_));
  ImageClassData *const viewed = RecordOf(view);
  EXPECT_EQ(viewed->GetRow, GetRowMappingMirrored);
  EXPECT_EQ(viewed->MappedFirstRow, 95904);
  Row(99999)[0] = 5;
  EXPECT_EQ(viewed->GetRow(viewed, 0)[0], 5);
}

TEST_F(FileRows, ClosingAViewLeavesTheFileToItsParent) {
  ConstructTall();
  {
    const auto view = Adopt(GrayChannel(image_));
    ASSERT_TRUE(view);
    const Files files;
    ImageDestructor(view);
    EXPECT_EQ(files.Records(FileCall::kUnmap).size(), 1u);
    EXPECT_EQ(files.Records().size(), 1u);
  }
  EXPECT_NE(Row(50000), nullptr);
  EXPECT_NE(fcntl(record_->FileHandle, F_GETFD), -1);
}

TEST_F(FileRows, AViewOutlivesTheHandleOfItsParent) {
  ConstructTall();
  auto view = Adopt(ClipImage1(image_));
  image_.Reset();  // the view holds the image, and the image the file
  ImageClassData *const viewed = RecordOf(view);
  EXPECT_NE(viewed->GetRow(viewed, 50000), nullptr);
  EXPECT_FALSE(folder_.IsEmpty());
  view.Reset();
  EXPECT_TRUE(folder_.IsEmpty());
}

TEST_F(FileRows, AViewOfAClosedImageHasNoNextBlock) {
  ConstructTall();
  const auto view = Adopt(ClipImage1(image_));
  ImageClassData *const viewed = RecordOf(view);
  ImageDestructor(image_);
  EXPECT_EQ(viewed->GetRow(viewed, 50000), nullptr);
  EXPECT_FALSE(viewed->IsMapped);
}

}  // namespace
}  // namespace zvk::image
