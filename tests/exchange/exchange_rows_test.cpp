#include "exchange/exchange_rows.h"

#include <gtest/gtest.h>

#include <new>

#include "image/image_formats.h"
#include "tests/exchange/exchange_testing.h"

namespace zvk::exchange {
namespace {

class ExchangeRows : public exchange_testing::ExchangeTest {};

TEST_F(ExchangeRows, AnImageIsReadableIfItIsValidAndHasRows) {
  const auto image = New(3, 2, ImageFormatG);
  EXPECT_EQ(ReadableRecord(image), &Record(image));
  EXPECT_EQ(ReadableRecord(nullptr), nullptr);
  EXPECT_EQ(ReadableRecord(host_.New("PictureZVK")), nullptr);
  Record(image).Valid = false;
  EXPECT_EQ(ReadableRecord(image), nullptr);
  Record(image).Valid = true;
  ImageDestructor(image);
  EXPECT_EQ(ReadableRecord(image), nullptr);
}

TEST_F(ExchangeRows, ANewBlockComesWithItsAddress) {
  NewBlock made = MakeBlock(5);
  const auto block = AdoptMemoryBlock(made.block.Release());
  ASSERT_TRUE(block);
  EXPECT_EQ(block->Size(), 5);
  EXPECT_EQ(made.bytes, block->Data());
  EXPECT_EQ(BytesOfBlock(block), block->Data());
  EXPECT_EQ(BytesOfBlock(nullptr), nullptr);
}

TEST_F(ExchangeRows, ABlockThatTheHostDoesNotMakeIsNil) {
  const NewBlock refused = MakeBlock(-1);
  EXPECT_FALSE(refused.block);
  EXPECT_EQ(refused.bytes, nullptr);
}

TEST_F(ExchangeRows, ABlockWithoutAnAddressIsGivenBack) {
  host_->Withhold("memoryBlockGetPtr");
  const NewBlock made = MakeBlock(5);
  EXPECT_FALSE(made.block);
  EXPECT_EQ(made.bytes, nullptr);
  EXPECT_EQ(host_->Calls("newMemoryBlock"), 1);
  EXPECT_EQ(host_->Calls("REALUnlockObject"), 1);
}

TEST_F(ExchangeRows, PackedRowsWrapIn32Bits) {
  ImageClassData layout{};
  layout.PixelSize = 4;
  layout.Width = 536870911;
  EXPECT_EQ(PackedRowSize(layout), 2147483644);
  EXPECT_FALSE(PackedRowSizeWraps(layout));
  layout.Width = 536870912;
  EXPECT_EQ(PackedRowSize(layout), INT32_MIN);
  EXPECT_TRUE(PackedRowSizeWraps(layout));
  layout.Width = 1073741825;
  EXPECT_EQ(PackedRowSize(layout), 4);
  EXPECT_TRUE(PackedRowSizeWraps(layout));
}

TEST_F(ExchangeRows, NoMemoryIsRaisedWithTheSize) {
  RaiseNoMemoryForRow(8589934592);
  ExpectRaised("OutOfMemoryException", "Failed to allocate 8589934592 bytes of memory for row.");
}

}  // namespace
}  // namespace zvk::exchange
