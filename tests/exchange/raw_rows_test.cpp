#include "exchange/raw_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <vector>

#include "image/file_storage.h"
#include "image/image_formats.h"
#include "image/views.h"
#include "tests/exchange/exchange_testing.h"
#include "tests/support/file_faults.h"

namespace zvk::exchange {
namespace {

using standalone::MemoryBlock;

class RawRows : public exchange_testing::ExchangeTest {
 protected:
  RawRows() = default;
  explicit RawRows(standalone::HostOptions options) : ExchangeTest(std::move(options)) {}
};

class FencedRawRows : public RawRows {
 protected:
  FencedRawRows() : RawRows({.fenced = true}) {}
};

// --- RawRow ---

TEST_F(RawRows, RawRowIsABlockOverTheRowItself) {
  const auto image = New(5, 3, ImageFormatRGB);
  const auto block = AdoptMemoryBlock(rbGetRow(image, 2));
  ASSERT_TRUE(block);
  EXPECT_EQ(block->Data(), Row(image, 2));
  EXPECT_EQ(block->Size(), MemoryBlock::kUnknownSize);
  block->Data()[4] = 99;
  EXPECT_EQ(Row(image, 2)[4], 99);
}

// 4 x (2^30 + 10) is 40 in 32 bits, a row of 64 bytes.
TEST_F(RawRows, RowsOfAnImageWhoseRowHasWrappedAreExchangedByTheirRowSize) {
  const auto image = New((1 << 30) + 10, 2, ImageFormatRGBA);
  ASSERT_EQ(Record(image).RowSize, 64);
  const auto block = host_.NewMemoryBlock(64);
  std::iota(block->Data(), block->Data() + 64, uint8_t{1});
  rbSetRow(image, 1, block);
  const auto raw = AdoptMemoryBlock(rbGetRow(image, 1));
  ASSERT_TRUE(raw);
  EXPECT_TRUE(std::equal(block->Data(), block->Data() + 64, raw->Data()));
  const auto copy = AdoptMemoryBlock(rbGetRowCopy(image, 1));
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->Size(), 64);
  EXPECT_TRUE(std::equal(block->Data(), block->Data() + 64, copy->Data()));

  EXPECT_EQ(rbGetRow(image, 2), nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method RawRow is too big. Range is 0 to 1, but value is 2.");
  EXPECT_EQ(rbGetRowCopy(image, -1), nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too small. Range is 0 to 1, but value is -1.");
  rbSetRow(image, 2, block);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too big. Range is 0 to 1, but value is 2.");
}

TEST_F(RawRows, RawRowAtHeightIsTooBig) {
  const auto image = New(5, 3, ImageFormatRGB);
  EXPECT_EQ(rbGetRow(image, 3), nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method RawRow is too big. Range is 0 to 2, but value is 3.");
}

TEST_F(RawRows, RawRowBelowZeroIsTooSmall) {
  const auto image = New(5, 3, ImageFormatRGB);
  EXPECT_EQ(rbGetRow(image, -1), nullptr);
  ExpectRaised("OutOfBoundsException",
               "Parameter index to method RawRow is too small. Range is 0 to 2, but value is -1.");
}

TEST_F(RawRows, RawRowOfAnImageThatIsNotValidIsNil) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).Valid = false;
  EXPECT_EQ(rbGetRow(image, 0), nullptr);
  EXPECT_EQ(rbGetRow(image, 7), nullptr);
  EXPECT_EQ(rbGetRow(nullptr, 0), nullptr);
  ExpectNothingRaised();
}

TEST_F(RawRows, ARowWithoutAnAddressIsNil) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).GetRow = [](ImageClassData *, int32_t) -> uint8_t * { return nullptr; };
  EXPECT_EQ(rbGetRow(image, 0), nullptr);
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectNothingRaised();
  rbSetRow(image, 0, host_.NewMemoryBlock(100));
  ExpectNothingRaised();
}

TEST_F(RawRows, AnImageOverARowTableAnswersWithTheTablesRows) {
  const auto image = host_.New("PictureZVK");
  std::vector<uint8_t> top(16, 1), bottom(16, 2);
  uint8_t *rows[] = {top.data(), nullptr, bottom.data()};
  InitImageClassData(&Record(image), 4, 3, ImageFormatRGBX);
  Record(image).RowSize = 16;
  Record(image).RowTable = rows;
  Record(image).GetRow = GetRowGDImage;
  Record(image).Valid = true;
  EXPECT_EQ(AdoptMemoryBlock(rbGetRow(image, 2))->Data(), bottom.data());
  EXPECT_EQ(Taken(rbGetRowCopy(image, 0)), top);
  EXPECT_EQ(rbGetRow(image, 1), nullptr);
  // A view of it has the accessor and no table, and so no rows.
  const auto view = Adopt(ClipImage1(image));
  ASSERT_TRUE(Record(view).Valid);
  EXPECT_EQ(rbGetRow(view, 0), nullptr);
  EXPECT_EQ(rbGetRow(view, 99), nullptr);
  EXPECT_EQ(rbGetRowCopy(view, 0), nullptr);
  rbSetRow(view, 0, host_.NewMemoryBlock(16));
  ExpectNothingRaised();
}

// --- Row, reading ---

TEST_F(RawRows, RowIsACopyOfTheWholeRowSize) {
  const auto image = New(5, 3, ImageFormatRGB);
  FillRows(image);
  const auto bytes = Taken(rbGetRowCopy(image, 1));
  EXPECT_EQ(bytes.size(), 64u);
  EXPECT_EQ(bytes, RowBytes(image, 1));
}

TEST_F(FencedRawRows, RowCopiesAnyRowSizeOfACallersBlock) {
  std::vector<uint8_t> bytes(3 * 17);
  std::iota(bytes.begin(), bytes.end(), 1);
  const auto block = host_.NewMemoryBlock(bytes);
  const auto image = NewOver(block, 5, 3, ImageFormatRGB, 17);
  EXPECT_EQ(Taken(rbGetRowCopy(image, 2)), std::vector<uint8_t>(bytes.begin() + 34, bytes.end()));
  rbSetRow(image, 2, host_.NewMemoryBlock(std::vector<uint8_t>(17, 7)));
  EXPECT_EQ(RowBytes(image, 2), std::vector<uint8_t>(17, 7));
  EXPECT_EQ(std::vector<uint8_t>(block->Data(), block->Data() + 34),
            std::vector<uint8_t>(bytes.begin(), bytes.begin() + 34));
}

TEST_F(RawRows, RowOutsideTheImageRaises) {
  const auto image = New(5, 3, ImageFormatRGB);
  EXPECT_EQ(rbGetRowCopy(image, 3), nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too big. Range is 0 to 2, but value is 3.");
  EXPECT_EQ(rbGetRowCopy(image, -5), nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too small. Range is 0 to 2, but value is -5.");
}

TEST_F(RawRows, RowOfAnImageThatIsNotValidIsNilWithoutException) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).Valid = false;
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  EXPECT_EQ(rbGetRowCopy(image, 99), nullptr);
  EXPECT_EQ(rbGetRowCopy(nullptr, 0), nullptr);
  ExpectNothingRaised();
}

TEST_F(RawRows, RowOfARowSizeBelowOneIsNil) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).RowSize = 0;
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  Record(image).RowSize = -64;
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectNothingRaised();
  // Nothing can be copied into it either.
  Record(image).RowOffset = 0;
  rbSetRow(image, 0, host_.NewMemoryBlock(std::vector<uint8_t>(64, 9)));
  ExpectNothingRaised();
  EXPECT_EQ(Record(image).Buffer[0], 0);
}

TEST_F(RawRows, TheLargestRowSizeIsRefusedWithoutAsking) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).RowSize = 2147483647;
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate a memoryblock with 2147483647 bytes in size.");
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 0);
}

TEST_F(RawRows, ABlockThatTheHostCannotMakeRaises) {
  const auto image = New(5, 3, ImageFormatRGB);
  host_->SetEntry(
      "newMemoryBlock", +[](int32_t) -> REALobject { return nullptr; });
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate a memoryblock with 64 bytes in size.");
}

TEST_F(RawRows, AHostThatRunsOutOfMemoryRaises) {
  const auto image = New(5, 3, ImageFormatRGB);
  host_->SetEntry(
      "newMemoryBlock", +[](int32_t) -> REALobject { throw std::bad_alloc(); });
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate a memoryblock with 64 bytes in size.");
}

TEST_F(RawRows, ABlockWithoutAnAddressIsReleasedAndRaises) {
  const auto image = New(5, 3, ImageFormatRGB);
  host_->Withhold("memoryBlockGetPtr");
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate a memoryblock with 64 bytes in size.");
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 1);
}

TEST_F(RawRows, ABlockWhoseAddressCostsTheLastMemoryIsReleasedAndRaises) {
  const auto image = New(5, 3, ImageFormatRGB);
  host_->SetEntry(
      "memoryBlockGetPtr", +[](REALobject) -> void * { throw std::bad_alloc(); });
  EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
  ExpectRaised("OutOfMemoryException", "Failed to allocate a memoryblock with 64 bytes in size.");
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 1);
}

// --- Row, writing ---

TEST_F(FencedRawRows, RowWritesTheWholeRowSize) {
  const auto image = New(5, 3, ImageFormatRGB);
  FillRows(image);
  const auto before = RowBytes(image, 0), after = RowBytes(image, 2);
  std::vector<uint8_t> bytes(64);
  std::iota(bytes.begin(), bytes.end(), 100);
  rbSetRow(image, 1, host_.NewMemoryBlock(bytes));
  ExpectNothingRaised();
  EXPECT_EQ(RowBytes(image, 1), bytes);
  EXPECT_EQ(RowBytes(image, 0), before);
  EXPECT_EQ(RowBytes(image, 2), after);
}

TEST_F(RawRows, AWrongIndexRaisesBeforeANilBlock) {
  const auto image = New(5, 3, ImageFormatRGB);
  rbSetRow(image, 3, nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too big. Range is 0 to 2, but value is 3.");
  rbSetRow(image, -1, nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too small. Range is 0 to 2, but value is -1.");
  rbSetRow(image, 0, nullptr);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
}

TEST_F(RawRows, ABlockWhoseAddressCannotBeHadIsANilBlock) {
  const auto image = New(5, 3, ImageFormatRGB);
  const auto block = host_.NewMemoryBlock(64);
  host_->Withhold("memoryBlockGetPtr");
  rbSetRow(image, 0, block);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
  host_->SetEntry(
      "memoryBlockGetPtr", +[](REALobject) -> void * { return nullptr; });
  rbSetRow(image, 0, block);
  ExpectRaised("NilObjectException", "Memoryblock is nil");
}

TEST_F(RawRows, WritingDoesNotAskWhetherTheImageIsValid) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).Valid = false;
  rbSetRow(image, 3, nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too big. Range is 0 to 2, but value is 3.");
  rbSetRow(image, 0, host_.NewMemoryBlock(std::vector<uint8_t>(64, 5)));
  ExpectNothingRaised();
  EXPECT_EQ(RowBytes(image, 0), std::vector<uint8_t>(64, 5));
}

TEST_F(RawRows, AnImageWithoutRowsIsRefused) {
  const auto block = host_.NewMemoryBlock(64);
  // Closed, while Valid stays true.
  const auto closed = New(5, 3, ImageFormatRGB);
  ImageDestructor(closed);
  ASSERT_TRUE(Record(closed).Valid);
  EXPECT_EQ(rbGetRow(closed, 99), nullptr);
  EXPECT_EQ(rbGetRowCopy(closed, 99), nullptr);
  rbSetRow(closed, 0, block);
  ExpectNothingRaised();
  // Construction given up: the sizes are there.
  const auto givenUp = New(1000000, 1000000, ImageFormatRGB);
  EXPECT_EQ(rbGetRow(givenUp, 0), nullptr);
  rbSetRow(givenUp, 0, block);
  ExpectNothingRaised();
  // Never constructed: no row at all, and the range says so.
  const auto fresh = host_.New("PictureZVK");
  EXPECT_EQ(rbGetRow(fresh, 0), nullptr);
  EXPECT_EQ(rbGetRowCopy(fresh, 0), nullptr);
  ExpectNothingRaised();
  rbSetRow(fresh, 0, block);
  ExpectRaised("OutOfBoundsException", "Parameter index to method Row is too big. Range is 0 to -1, but value is 0.");
  rbSetRow(nullptr, 0, block);
  ExpectNothingRaised();
}

TEST_F(FencedRawRows, TheBlockMayBeTheImagesOwnMemory) {
  std::vector<uint8_t> bytes(4 * 10);
  std::iota(bytes.begin(), bytes.end(), 0);
  const auto block = host_.NewMemoryBlock(bytes);
  const auto image = NewOver(block, 10, 3, ImageFormatG, 10);
  const auto shifted = Adopt(standalone::MemoryBlock::Over(block->Data() + 3)->Handle());
  rbSetRow(image, 0, shifted);
  std::vector<uint8_t> expected = bytes;
  std::copy(bytes.begin() + 3, bytes.begin() + 13, expected.begin());
  EXPECT_EQ(std::vector<uint8_t>(block->Data(), block->Data() + 40), expected);
}

// --- views and files ---

TEST_F(RawRows, ARowOfAClipIsTheWholeRowOfTheStorage) {
  const auto image = New(9, 6, ImageFormatRGB);
  FillRows(image);
  const auto clip = Adopt(ClipImage5(image, 4, 2, 3, 3));
  EXPECT_EQ(Taken(rbGetRowCopy(clip, 1)), RowBytes(image, 3));
  EXPECT_EQ(AdoptMemoryBlock(rbGetRow(clip, 1))->Data(), Row(image, 3));
  EXPECT_EQ(rbGetRow(clip, 3), nullptr);
  ExpectRaised("OutOfBoundsException", "Parameter index to method RawRow is too big. Range is 0 to 2, but value is 3.");
}

TEST_F(RawRows, RowZeroOfAMirroredViewIsTheLastRow) {
  const auto image = New(9, 6, ImageFormatRGB);
  FillRows(image);
  const auto mirrored = Adopt(GetMirroredView(image));
  EXPECT_EQ(Taken(rbGetRowCopy(mirrored, 0)), RowBytes(image, 5));
  rbSetRow(mirrored, 1, host_.NewMemoryBlock(std::vector<uint8_t>(64, 3)));
  EXPECT_EQ(RowBytes(image, 4), std::vector<uint8_t>(64, 3));
}

TEST_F(RawRows, ARowOfAnImageInAFileIsAWholePage) {
  const auto image = host_.New("PictureZVK");
  ImageConstructorFile(image, 10, 50, ImageFormatG, 0, nullptr);
  ASSERT_TRUE(Record(image).Valid);
  const auto rowSize = static_cast<size_t>(Record(image).RowSize);
  ASSERT_GE(rowSize, 4096u);
  for (int32_t y = 0; y < 50; ++y) {
    rbSetRow(image, y, host_.NewMemoryBlock(std::vector<uint8_t>(rowSize, static_cast<uint8_t>(y + 1))));
  }
  for (int32_t y = 49; y >= 0; --y) {
    EXPECT_EQ(Taken(rbGetRowCopy(image, y)), std::vector<uint8_t>(rowSize, static_cast<uint8_t>(y + 1)));
  }
  ImageDestructor(image);
  Record(image).RemoveFile = false;  // the instance ends without a second file step
}

TEST_F(RawRows, WritingMapsAFileWhoseFirstMappingFailed) {
  const auto image = host_.New("PictureZVK");
  const auto block = host_.NewMemoryBlock(std::vector<uint8_t>(65536, 5));
  {
    faults::Files files;
    files.FailAll(faults::FileCall::kMap);
    ImageConstructorFile(image, 10, 50, ImageFormatG, 0, nullptr);
    ASSERT_FALSE(Record(image).Valid);
    EXPECT_EQ(rbGetRow(image, 0), nullptr);
    EXPECT_EQ(rbGetRowCopy(image, 0), nullptr);
    EXPECT_EQ(files.Records(faults::FileCall::kMap).size(), 1u);
    rbSetRow(image, 7, block);
    EXPECT_EQ(files.Records(faults::FileCall::kMap).size(), 2u);
  }
  rbSetRow(image, 7, block);
  EXPECT_EQ(RowBytes(image, 7), std::vector<uint8_t>(static_cast<size_t>(Record(image).RowSize), 5));
  EXPECT_FALSE(Record(image).Valid);
  ExpectNothingRaised();
  ImageDestructor(image);
  Record(image).RemoveFile = false;  // the instance ends without a second file step
}

TEST_F(RawRows, NothingYields) {
  const auto image = New(5, 3, ImageFormatRGB);
  Record(image).Yield.YieldTicks = -1;
  Record(image).Yield.LastYieldTime = -1000000;
  AdoptMemoryBlock(rbGetRow(image, 0));
  const auto copy = AdoptMemoryBlock(rbGetRowCopy(image, 0));
  rbSetRow(image, 1, copy);
  EXPECT_EQ(host_->Questions("REALYieldToRB"), 0);
}

}  // namespace
}  // namespace zvk::exchange
