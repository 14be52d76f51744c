#include "pixels/wide_samples.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace zvk::pixels {
namespace {

// 16-bit gray over the bytes given, whose end is the end of the storage as the caller has described it.
struct WideImage {
  WideImage(int32_t width, int32_t height, int32_t rowSize, int32_t grayOffset) : bytes(64) {
    record.Width = width;
    record.Height = height;
    record.PixelSize = 2;
    record.BitsPerComponent = 16;
    record.GrayOffset = grayOffset;
    record.RowSize = rowSize;
    record.TotalSize = int64_t{rowSize} * height;
    record.Buffer = bytes.data() + 16;
  }
  const uint8_t *Row(int32_t y) const { return record.Buffer + ptrdiff_t{y} * record.RowSize; }
  // The runs of columns from `x` on, such as "0-2 3! 4-5".
  std::string Runs(int32_t y, int32_t x, int32_t width) const {
    std::string runs;
    VisitWideSamples(
        record, Row(y), x, width,
        [&](int32_t column, int32_t count) {
          runs += std::to_string(column) + "-" + std::to_string(column + count - 1) + " ";
        },
        [&](int32_t column) { runs += std::to_string(column) + "! "; });
    return runs;
  }

  std::vector<uint8_t> bytes;
  ImageClassData record{};
};

TEST(WideSamples, ASampleIsLoadedAndStoredWholeAtAnyAddress) {
  std::array<uint8_t, 4> bytes{1, 2, 3, 4};
  EXPECT_EQ(LoadWideSample(bytes.data() + 1, nullptr), 0x0302);
  StoreWideSample(bytes.data() + 1, 0xABCD, nullptr);
  EXPECT_EQ(bytes, (std::array<uint8_t, 4>{1, 0xCD, 0xAB, 4}));
}

TEST(WideSamples, OneThatBeginsWithTheLastByteHasNoSecondByte) {
  std::array<uint8_t, 4> bytes{1, 2, 3, 4};
  EXPECT_EQ(LoadWideSample(bytes.data() + 1, bytes.data() + 1), 2);
  StoreWideSample(bytes.data() + 1, 0xABCD, bytes.data() + 1);
  EXPECT_EQ(bytes, (std::array<uint8_t, 4>{1, 0xCD, 3, 4}));
}

TEST(WideSamples, OneBehindTheStorageIsLoadedAndStoredWhole) {
  std::array<uint8_t, 4> bytes{1, 2, 3, 4};
  EXPECT_EQ(LoadWideSample(bytes.data() + 1, bytes.data()), 0x0302);
  StoreWideSample(bytes.data() + 1, 0xABCD, bytes.data());
  EXPECT_EQ(bytes, (std::array<uint8_t, 4>{1, 0xCD, 0xAB, 4}));
}

TEST(WideSamples, InTheirPlaceAllAreWhole) {
  const WideImage image(3, 2, 6, 0);
  EXPECT_EQ(image.Runs(0, 0, 3), "0-2 ");
  EXPECT_EQ(image.Runs(1, 0, 3), "0-2 ");
}

TEST(WideSamples, MovedByAByteTheLastOfTheStorageIsCut) {
  const WideImage image(3, 2, 6, 1);
  EXPECT_EQ(image.Runs(0, 0, 3), "0-2 ");  // reaches into the second row
  EXPECT_EQ(image.Runs(1, 0, 3), "0-1 2! ");
  EXPECT_EQ(image.Runs(1, 0, 2), "0-1 ");
  EXPECT_EQ(image.Runs(1, 2, 1), "2! ");
}

TEST(WideSamples, WhatLiesWhollyBehindTheStorageIsWhole) {
  // The storage has 14 bytes; the second row's sample 3 begins with byte 13.
  const WideImage odd(6, 2, 7, 0);
  EXPECT_EQ(odd.Runs(0, 0, 6), "0-5 ");
  EXPECT_EQ(odd.Runs(1, 0, 6), "0-2 3! 4-5 ");
  EXPECT_EQ(odd.Runs(1, 4, 2), "4-5 ");
  const WideImage even(4, 2, 4, 0);
  EXPECT_EQ(even.Runs(1, 0, 4), "0-3 ");
  const WideImage none(4, 2, 0, 0);
  EXPECT_EQ(none.Runs(1, 0, 4), "0-3 ");
}

TEST(WideSamples, RowsThatRunBackwardsEndWithTheTopOne) {
  const WideImage image(3, 2, -6, 1);
  EXPECT_EQ(image.Runs(0, 0, 3), "0-1 2! ");
  EXPECT_EQ(image.Runs(1, 0, 3), "0-2 ");
}

TEST(WideSamples, ARowOfAMappedBlockEndsByItself) {
  WideImage image(3, 2, 6, 1);
  image.record.IsMapping = true;
  EXPECT_EQ(image.Runs(0, 0, 3), "0-1 2! ");
}

TEST(WideSamples, AClipCountsItsOwnColumns) {
  const WideImage image(2, 2, 6, 3);  // columns 1 and 2 of an image moved by a byte
  EXPECT_EQ(image.Runs(1, 0, 2), "0-0 1! ");
}

}  // namespace
}  // namespace zvk::pixels
