#include "compositing/copy_pixels.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "image/image_formats.h"
#include "image/image_storage.h"
#include "image/views.h"
#include "tests/naive/samples.h"
#include "tests/scenes/row_log.h"
#include "tests/scenes/stored_image.h"
#include "tests/scenes/yields.h"

namespace zvk::compositing {
namespace {

using scenes::Kind;
using scenes::StoredImage;
using scenes::YieldAlways;
using scenes::Yields;
using Bytes = std::vector<uint8_t>;

class CopyPixels : public testing::Test {
 protected:
  CopyPixels() : host_({.fenced = true}) {}

  StoredImage New(int32_t width, int32_t height, int32_t format, Kind kind = Kind::Block, int32_t spare = 0) {
    return {host_, kind, width, height, format, spare};
  }
  // The bytes of its block count up from 1.
  StoredImage Counting(int32_t width, int32_t height, int32_t format, Kind kind = Kind::Block, int32_t spare = 0) {
    StoredImage image = New(width, height, format, kind, spare);
    Bytes bytes = image.Bytes();
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i + 1);
    image.SetBytes(bytes);
    return image;
  }
  StoredImage Of(int32_t width, int32_t height, int32_t format, const Bytes &bytes) {
    StoredImage image = New(width, height, format);
    EXPECT_EQ(image.Bytes().size(), bytes.size());
    image.SetBytes(bytes);
    return image;
  }

  PluginHost host_;
};

// --- the rectangle ---

TEST_F(CopyPixels, ANegativeSourcePositionShiftsTheDestination) {
  // Columns of four bytes whose last is filler, so that rows are not copied as blocks.
  StoredImage source = Counting(8, 1, ImageFormatRGBX), dest = New(8, 1, ImageFormatRGBX);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 5, 0, 4, 1, -2, 0));
  Bytes expected(32);
  for (const size_t column : {size_t{0}, size_t{1}}) {  // 4 - 2 columns, to 5 - 2
    for (size_t i = 0; i < 3; ++i) expected[4 * (column + 3) + i] = static_cast<uint8_t>(4 * column + i + 1);
  }
  EXPECT_EQ(dest.Bytes(), expected);
}

TEST_F(CopyPixels, ANegativeWidthIsFoldedAfterTheSourcesShift) {
  StoredImage source = Counting(8, 1, ImageFormat1of3), dest = New(8, 1, ImageFormatG);
  // -2 - 1 = -3 at 6 - 1 = 5: columns 2 to 4 from source column 0.
  EXPECT_TRUE(rbCopyPixels8(dest, source, 6, 0, -2, 1, -1, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 1, 4, 7, 0, 0, 0}));
}

TEST_F(CopyPixels, ANegativeDestinationMovesTheSource) {
  StoredImage source = Counting(4, 4, ImageFormat1of3), dest = New(2, 2, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels8(dest, source, -2, -1, 4, 3, 0, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{19, 22, 31, 34}));
}

TEST_F(CopyPixels, AnEmptyRectangleIsRefused) {
  StoredImage source = Counting(4, 4, ImageFormatG), dest = New(4, 4, ImageFormatG);
  EXPECT_FALSE(rbCopyPixels8(dest, source, 0, 0, 0, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(dest, source, 0, 0, 4, 0, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(dest, source, 4, 0, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(dest, source, 0, 4, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(dest, source, 0, 0, 4, 4, 4, 0));
  EXPECT_FALSE(rbCopyPixels8(dest, source, 0, 0, 4, 4, 0, 5));
  EXPECT_FALSE(rbCopyPixels8(dest, source, -4, 0, 4, 4, 0, 0));
  EXPECT_EQ(dest.Bytes(), Bytes(16));
}

TEST_F(CopyPixels, ARectangleWhoseSumsWrapIsCutToTheImages) {
  StoredImage source = Counting(3, 2, ImageFormat1of3), dest = New(4, 2, ImageFormatG);
  // 1 + 2147483647 wraps on both sides, so neither edge cuts.
  EXPECT_TRUE(rbCopyPixels8(dest, source, 1, 0, INT32_MAX, 1, 1, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 4, 7, 0, 0, 0, 0, 0}));
}

TEST_F(CopyPixels, ARectangleOfWhichOnlyTheCutLeavesNothingIsTrueAndCopiesNothing) {
  // As blocks, pixel by pixel, and without a conversion, which is refused as ever.
  for (const auto &[format, destFormat] : {std::pair{ImageFormatG, ImageFormatG},
                                           {ImageFormat1of3, ImageFormatG},
                                           {ImageFormatG, ImageFormatGray16},
                                           {ImageFormatRGB, ImageFormatCMYK}}) {
    for (const Kind kind : {Kind::Block, Kind::File}) {
      StoredImage source = Counting(4, 4, format, kind), dest = Counting(4, 4, destFormat, kind);
      const Bytes before = dest.Bytes();
      scenes::RowLog log;
      log.Watch(dest.Record(), "d");
      log.Watch(source.Record(), "s");
      const bool converts = destFormat != ImageFormatCMYK;
      // 2147483647 + 10 wraps, to a place left of (or above) the source that no step tests for.
      EXPECT_EQ(rbCopyPixels8(dest, source, -10, 0, 20, 4, INT32_MAX, 0), converts);
      EXPECT_EQ(rbCopyPixels8(dest, source, 0, -10, 4, 20, 0, INT32_MAX), converts);
      EXPECT_EQ(rbCopyPixels8(dest, source, -10, -10, 20, 20, INT32_MAX, INT32_MAX), converts);
      EXPECT_EQ(log.Take(), "");
      EXPECT_EQ(dest.Bytes(), before);
    }
  }
}

TEST_F(CopyPixels, WithoutPositionsTheCornersAreTaken) {
  StoredImage source = Counting(3, 2, ImageFormat1of3), dest = New(4, 3, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels6(dest, source, 1, 1, 2, 9));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 0, 0, 1, 4, 0, 0, 10, 13, 0}));
}

TEST_F(CopyPixels, ASmallerSourceLeavesTheRest) {
  StoredImage source = Counting(2, 2, ImageFormatG), dest = New(3, 3, ImageFormatG);
  dest.SetBytes(Bytes(9, 77));
  EXPECT_TRUE(rbCopyPixels2(dest, source));
  EXPECT_EQ(dest.Bytes(), (Bytes{1, 2, 77, 3, 4, 77, 77, 77, 77}));
}

TEST_F(CopyPixels, ALargerSourceIsCut) {
  StoredImage source = Counting(5, 4, ImageFormatG), dest = New(3, 2, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels2(dest, source));
  EXPECT_EQ(dest.Bytes(), (Bytes{1, 2, 3, 6, 7, 8}));
}

// --- blocks and their excess ---

TEST_F(CopyPixels, ABlockIsLongerThanTheRectangleByTheDestinationsPosition) {
  StoredImage source = Counting(8, 2, ImageFormatG), dest = New(8, 2, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 2, 0, 3, 1, 0, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(CopyPixels, AtTheLeftEdgeABlockIsTheRectangle) {
  StoredImage source = Counting(8, 1, ImageFormatRGB), dest = New(8, 1, ImageFormatRGB);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 0, 0, 2, 1, 1, 0));
  Bytes expected(24);
  for (size_t i = 0; i < 6; ++i) expected[i] = static_cast<uint8_t>(i + 4);
  EXPECT_EQ(dest.Bytes(), expected);
}

TEST_F(CopyPixels, TheExcessGoesOnBeyondTheRow) {
  StoredImage source = Counting(4, 3, ImageFormatG, Kind::Block, 1), dest = New(4, 3, ImageFormatG, Kind::Block, 2);
  // 2 + 2 bytes from column 2 on: two pixels and the two bytes behind the row, then in the source 1 byte of padding.
  EXPECT_TRUE(rbCopyPixels8(dest, source, 2, 0, 2, 1, 1, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 2, 3, 4, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  // 3 + 3 bytes reach three bytes into the next row, which is copied afterwards.
  StoredImage narrow = New(4, 3, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels8(narrow, source, 3, 0, 1, 2, 0, 0));
  EXPECT_EQ(narrow.Bytes(), (Bytes{0, 0, 0, 1, 2, 3, 4, 6, 7, 8, 9, 0}));
}

TEST_F(CopyPixels, TheExcessEndsWithTheDestinationsStorage) {
  StoredImage source = Counting(9, 3, ImageFormatG), dest = New(4, 2, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 3, 1, 1, 1, 0, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 0, 0, 0, 0, 1}));
}

TEST_F(CopyPixels, TheExcessEndsWithTheSourcesStorage) {
  StoredImage source = Counting(2, 2, ImageFormatG), dest = New(9, 2, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 5, 0, 2, 2, 0, 0));
  // Seven bytes are wanted: the first row finds four, the second two.
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 0, 0, 1, 2, 3, 4, 0, 0, 0, 0, 0, 3, 4, 0, 0}));
}

TEST_F(CopyPixels, TheExcessOfAClipGoesOnInItsParent) {
  StoredImage source = Counting(12, 1, ImageFormatG), dest = New(12, 1, ImageFormatG);
  const auto clip = Adopt(ClipImage5(dest, 4, 0, 3, 1));
  EXPECT_TRUE(rbCopyPixels8(clip, source, 1, 0, 2, 1, 0, 0));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 0, 0, 1, 2, 3, 0, 0, 0, 0}));
}

TEST_F(CopyPixels, RowsThatRunBackwardsEndWithTheTopOne) {
  StoredImage source = Counting(4, 2, ImageFormatG), dest = New(4, 2, ImageFormatG, Kind::Backwards);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 3, 0, 1, 2, 0, 0));
  // In memory the lower row comes first, and its excess goes over the upper one.
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 0, 5, 6, 7, 8, 1}));
}

TEST_F(CopyPixels, RowsOfATableAreStoragesOfTheirOwn) {
  StoredImage source = Counting(4, 2, ImageFormatRGBA, Kind::Picture), dest = New(4, 2, ImageFormatRGBA, Kind::Picture);
  ASSERT_TRUE(dest.Record().HasAlpha);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 2, 0, 1, 2, 1, 0));
  // Three pixels from column 2 on, of which the row has two.
  const Bytes from = source.Bytes();
  Bytes expected(32);
  std::copy_n(from.begin() + 4, 8, expected.begin() + 8);
  std::copy_n(from.begin() + 16 + 4, 8, expected.begin() + 16 + 8);
  EXPECT_EQ(dest.Bytes(), expected);
}

TEST_F(CopyPixels, BlocksOfRowsShorterThanTheirPixelsEndWithTheStorage) {
  auto image = host_.New("PictureZVK");
  const auto block = host_.NewMemoryBlock(8);
  ImageConstructorMemory(image, block, 6, 3, ImageFormatG, 1);  // rows at 0, 1, 2; described are three bytes
  StoredImage source = Counting(6, 3, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels2(image, source));
  EXPECT_EQ(Bytes(block->Data(), block->Data() + 8), (Bytes{1, 7, 13, 0, 0, 0, 0, 0}));

  // 10 x 2 pixels, 8 bytes a row: bytes 16 and 17 are neither read nor written.
  auto dest = host_.New("PictureZVK"), from = host_.New("PictureZVK");
  const auto destBlock = host_.NewMemoryBlock(18), sourceBlock = host_.NewMemoryBlock(18);
  std::iota(sourceBlock->Data(), sourceBlock->Data() + 18, uint8_t{1});
  ImageConstructorMemory(dest, destBlock, 10, 2, ImageFormatG, 8);
  ImageConstructorMemory(from, sourceBlock, 10, 2, ImageFormatG, 8);
  EXPECT_TRUE(rbCopyPixels2(dest, from));
  Bytes expected(18);
  std::iota(expected.begin(), expected.begin() + 16, uint8_t{1});
  EXPECT_EQ(Bytes(destBlock->Data(), destBlock->Data() + 18), expected);
}

TEST_F(CopyPixels, TheBlocksOfRowsThatRunBackwardsEndWithTheTopOneHoweverManyThereAre) {
  auto dest = host_.New("PictureZVK");
  const auto block = host_.NewMemoryBlock(2000);
  // 4000000 rows of -1000 bytes are a size that 32 bits cannot tell.
  ImageConstructorMemory(dest, block, 1000, 4000000, ImageFormatG, -1000);
  StoredImage source = New(1000, 2, ImageFormatG);
  source.SetBytes(Bytes(2000, 7));
  EXPECT_TRUE(rbCopyPixels8(dest, source, 900, 0, 100, 1, 0, 0));
  Bytes expected(2000);
  std::fill_n(expected.begin() + 900, 100, uint8_t{7});
  EXPECT_EQ(Bytes(block->Data(), block->Data() + 2000), expected);
}

// --- 16-bit samples ---

TEST_F(CopyPixels, ChannelsThatTheHostMovesInAYieldAreTakenFromWhereTheyAre) {
  auto dest = host_.New("PictureZVK"), from = host_.New("PictureZVK");
  const auto destBlock = host_.NewMemoryBlock(17), sourceBlock = host_.NewMemoryBlock(17);
  std::iota(sourceBlock->Data(), sourceBlock->Data() + 17, uint8_t{1});
  std::fill_n(destBlock->Data(), 17, uint8_t{99});
  ImageConstructorMemory(dest, destBlock, 4, 2, ImageFormatGray16, 8);
  ImageConstructorMemory(from, sourceBlock, 4, 2, ImageFormatGray16, 8);
  SetGrayOffset(dest, 0, 1);
  YieldAlways(host_, dest);
  int yields = 0;
  host_->onYield = [&] {
    if (++yields == 2) SetGrayOffset(dest, 0, 0);  // after the first row
  };
  EXPECT_TRUE(rbCopyPixels2(dest, from));
  host_->onYield = nullptr;
  // The first row goes one byte further, the second does not, and covers the first one's last byte.
  EXPECT_EQ(Bytes(destBlock->Data(), destBlock->Data() + 17),
            (Bytes{99, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 16, 99}));
}

TEST_F(CopyPixels, WideSamplesAreCopiedWholeButForTheByteBehindTheStorage) {
  auto dest = host_.New("PictureZVK"), from = host_.New("PictureZVK");
  const auto destBlock = host_.NewMemoryBlock(16), sourceBlock = host_.NewMemoryBlock(16);
  std::iota(sourceBlock->Data(), sourceBlock->Data() + 16, uint8_t{1});
  // 4 x 2 pixels, 7 bytes a row, 14 in all: the last sample begins with the last of them.
  ImageConstructorMemory(dest, destBlock, 4, 2, ImageFormatGray16, 7);
  ImageConstructorMemory(from, sourceBlock, 4, 2, ImageFormatGray16, 8);
  EXPECT_TRUE(rbCopyPixels2(dest, from));
  // The second row begins with the second byte of the first row's last sample.
  EXPECT_EQ(Bytes(destBlock->Data(), destBlock->Data() + 16),
            (Bytes{1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 12, 13, 14, 15, 0, 0}));

  // As a source: the byte behind the storage is not copied.
  ImageConstructorMemory(dest, destBlock, 4, 2, ImageFormatGray16, 8);
  ImageConstructorMemory(from, sourceBlock, 4, 2, ImageFormatGray16, 7);
  destBlock->Data()[15] = 99;
  EXPECT_TRUE(rbCopyPixels2(dest, from));
  EXPECT_EQ(Bytes(destBlock->Data(), destBlock->Data() + 16),
            (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 8, 9, 10, 11, 12, 13, 14, 99}));

  // Rows that the caller has described as 4 bytes each: what lies wholly behind them is his, and is copied.
  ImageConstructorMemory(from, sourceBlock, 4, 2, ImageFormatGray16, 4);
  EXPECT_TRUE(rbCopyPixels2(dest, from));
  EXPECT_EQ(Bytes(destBlock->Data(), destBlock->Data() + 16),
            (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 5, 6, 7, 8, 9, 10, 11, 12}));
}

TEST_F(CopyPixels, OffsetsThatTheHostHasMovedAreCutAtTheEndOfTheStorageToo) {
  StoredImage source = Counting(2, 1, ImageFormatRGB), dest = New(2, 1, ImageFormatRGB);
  for (const StoredImage *image : {&source, &dest}) {
    SetRedOffset(*image, 0, 2);
    SetGreenOffset(*image, 0, 2);
  }
  SetBlueOffset(dest, 0, 2);
  SetBlueOffset(source, 0, 2);
  EXPECT_TRUE(rbCopyPixels2(dest, source));
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 3, 4, 5, 6}));
}

TEST_F(CopyPixels, TheOffsetOfGrayIsNotComparedForBlocks) {
  StoredImage source = Counting(3, 1, ImageFormatGA), dest = New(3, 1, ImageFormatGA);
  SetGrayOffset(dest, 0, 1);  // on the alpha
  EXPECT_TRUE(rbCopyPixels2(dest, source));
  // From the source's lesser offset, 0, to that of the destination, 1, as long as there is room.
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 1, 2, 3, 4, 5}));
}

TEST_F(CopyPixels, FillerMappingAndAnotherOrderMakeTheCopyExact) {
  StoredImage packed = Counting(8, 1, ImageFormatRGB);
  for (const int32_t format : {ImageFormatRGBX, ImageFormatBGR, ImageFormatRGBA}) {
    StoredImage dest = New(8, 1, format);
    EXPECT_TRUE(rbCopyPixels8(dest, packed, 2, 0, 3, 1, 0, 0));
    const auto pixelSize = static_cast<size_t>(dest.Record().PixelSize);
    const Bytes bytes = dest.Bytes();
    for (size_t i = 0; i < bytes.size(); ++i) {
      const bool inside = i / pixelSize >= 2 && i / pixelSize < 5 && i % pixelSize < 3;
      EXPECT_EQ(bytes[i] != 0, inside) << format << ": " << i;
    }
  }
  StoredImage file = New(8, 1, ImageFormatRGB, Kind::File);
  EXPECT_TRUE(rbCopyPixels8(file, packed, 2, 0, 3, 1, 0, 0));
  Bytes expected(file.Bytes().size());
  for (size_t i = 0; i < 9; ++i) expected[6 + i] = static_cast<uint8_t>(i + 1);
  EXPECT_EQ(file.Bytes(), expected);
}

TEST_F(CopyPixels, ABlockOntoItselfKeepsWhatItReads) {
  StoredImage image = Counting(8, 1, ImageFormatG);
  EXPECT_TRUE(rbCopyPixels8(image, image, 1, 0, 5, 1, 0, 0));
  EXPECT_EQ(image.Bytes(), (Bytes{1, 1, 2, 3, 4, 5, 6, 8}));
}

TEST_F(CopyPixels, PixelsOfTheSameImageAreReadAsTheyHaveBeenWritten) {
  StoredImage image = Counting(5, 1, ImageFormatAG);
  const auto gray = Adopt(GrayChannel(image)), alpha = Adopt(AlphaChannel(image));
  // From the alpha of each pixel to the gray of the one before the next: 1 to 4, then what was written there stays.
  EXPECT_TRUE(rbCopyPixels8(alpha, alpha, 1, 0, 4, 1, 0, 0));
  EXPECT_EQ(image.Bytes(), (Bytes{1, 2, 1, 4, 1, 6, 1, 8, 1, 10}));
  EXPECT_TRUE(rbCopyPixels2(gray, alpha));
  EXPECT_EQ(image.Bytes(), (Bytes{1, 1, 1, 1, 1, 1, 1, 1, 1, 1}));
}

TEST_F(CopyPixels, ViewsOfAFileAreCopiedPixelAfterPixelThroughTheirMappings) {
  for (const int32_t format : {ImageFormatG, ImageFormatRGB, ImageFormatRGBA, ImageFormatCMYKA, ImageFormatGray16}) {
    StoredImage image = New(200, 1, format, Kind::File);
    image.Fill(3);
    const Bytes before = image.Bytes();
    const auto left = Adopt(ClipImage5(image, 0, 0, 199, 1)), right = Adopt(ClipImage5(image, 1, 0, 199, 1));
    EXPECT_TRUE(rbCopyPixels2(right, left));
    const Bytes after = image.Bytes();
    const auto pixelSize = static_cast<size_t>(image.Record().PixelSize);
    for (size_t i = 0; i < 200 * pixelSize; ++i) ASSERT_EQ(after[i], before[i % pixelSize]) << format << ": " << i;
  }
}

TEST_F(CopyPixels, TheGrayOfAFilesColoursIsTakenPixelAfterPixelThroughItsMappings) {
  StoredImage image = New(200, 1, ImageFormatRGB, Kind::File);
  image.Fill(4);
  Bytes expected = image.Bytes();
  for (size_t x = 0; x < 199; ++x) {
    const uint8_t *from = expected.data() + 3 * x;
    expected[3 * x + 3] = static_cast<uint8_t>((77 * from[0] + 151 * from[1] + 28 * from[2]) / 256);
  }
  const auto left = Adopt(ClipImage5(image, 0, 0, 199, 1)), right = Adopt(ClipImage5(image, 1, 0, 199, 1));
  EXPECT_TRUE(rbCopyPixels2(Adopt(RedChannel(right)), left));
  EXPECT_EQ(image.Bytes(), expected);
}

// --- rows ---

TEST_F(CopyPixels, SelfsRowIsAskedForFirstAndEachOnce) {
  StoredImage source = Counting(4, 4, ImageFormatG), dest = New(4, 4, ImageFormat1of3);
  scenes::RowLog log;
  log.Watch(dest.Record(), "d");
  log.Watch(source.Record(), "s");
  EXPECT_TRUE(rbCopyPixels8(dest, source, 0, 1, 4, 2, 0, 2));
  EXPECT_EQ(log.Take(), "d1 s2 d2 s3");
}

TEST_F(CopyPixels, BlocksAskForTheSameRows) {
  StoredImage source = Counting(4, 4, ImageFormatG), dest = New(4, 4, ImageFormatG);
  scenes::RowLog log;
  log.Watch(dest.Record(), "d");
  log.Watch(source.Record(), "s");
  EXPECT_TRUE(rbCopyPixels8(dest, source, 0, 1, 4, 2, 0, 2));
  EXPECT_EQ(log.Take(), "d1 s2 d2 s3");
}

TEST_F(CopyPixels, WithoutAConversionTheFirstRowsAreAskedForAndNothingChanges) {
  struct Pair {
    int32_t dest;
    int32_t source;
  };
  for (const Pair pair : {Pair{ImageFormatCMYK, ImageFormatRGB}, Pair{ImageFormatCMYKA, ImageFormatRGBA},
                          Pair{ImageFormatRGB, ImageFormatCMYK}, Pair{ImageFormatRGBA, ImageFormatCMYKA},
                          Pair{ImageFormatScaling3, ImageFormatRGB}, Pair{ImageFormatG, ImageFormatBuffer},
                          Pair{ImageFormatScaling4, ImageFormatScaling4}}) {
    StoredImage source = Counting(4, 4, pair.source), dest = Counting(4, 4, pair.dest);
    YieldAlways(host_, dest);
    const int64_t yields = Yields(host_);
    const Bytes before = dest.Bytes();
    scenes::RowLog log;
    log.Watch(dest.Record(), "d");
    log.Watch(source.Record(), "s");
    EXPECT_FALSE(rbCopyPixels8(dest, source, 0, 1, 4, 2, 0, 2)) << pair.dest << " from " << pair.source;
    EXPECT_EQ(log.Take(), "d1 s2");
    EXPECT_EQ(dest.Bytes(), before);
    EXPECT_EQ(Yields(host_) - yields, 1);  // at the start
  }
}

TEST_F(CopyPixels, ARowThatCannotBeHadIsLeftOut) {
  StoredImage source = Counting(2, 4, ImageFormatG), dest = New(2, 4, ImageFormatG);
  {
    scenes::RowLog log;
    log.Watch(dest.Record(), "d");
    log.Watch(source.Record(), "s");
    log.Refuse(dest.Record(), 0);
    log.Refuse(source.Record(), 2);
    EXPECT_TRUE(rbCopyPixels2(dest, source));
  }
  EXPECT_EQ(dest.Bytes(), (Bytes{0, 0, 3, 4, 0, 0, 7, 8}));
}

TEST_F(CopyPixels, AMappedImageIsCopiedWithinItselfFromRowsThatItsBlockDoesNotHold) {
  StoredImage image = New(4, 9000, ImageFormatG, Kind::File);  // 4096 rows to a block
  ImageClassData &record = image.Record();
  for (int32_t y = 8990; y < 9000; ++y) {
    for (int32_t x = 0; x < 4; ++x) *naive::SampleAt(record, x, y, 0) = static_cast<uint8_t>(y - 8980 + 50 * x);
  }
  EXPECT_TRUE(rbCopyPixels8(image, image, 1, 3, 3, 10, 0, 8990));
  for (int32_t y = 0; y < 20; ++y) {
    for (int32_t x = 0; x < 4; ++x) {
      const int32_t expected = y >= 3 && y < 13 && x >= 1 ? y + 7 + 50 * (x - 1) : 0;
      EXPECT_EQ(*naive::SampleAt(record, x, y, 0), expected) << x << ", " << y;
    }
  }
}

// --- refusals and yields ---

TEST_F(CopyPixels, ImagesThatAreNotUsableAreRefused) {
  StoredImage image = Counting(4, 4, ImageFormatG), other = Counting(4, 4, ImageFormatG);
  const Bytes before = image.Bytes();
  EXPECT_FALSE(rbCopyPixels2(image, nullptr));
  EXPECT_FALSE(rbCopyPixels2(nullptr, image));
  const auto unmade = host_.New("PictureZVK");
  EXPECT_FALSE(rbCopyPixels8(image, unmade, 0, 0, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(unmade, image, 0, 0, 4, 4, 0, 0));
  ImageDestructor(other);
  EXPECT_TRUE(other.Record().Valid);
  EXPECT_FALSE(rbCopyPixels8(image, other, 0, 0, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(other, image, 0, 0, 4, 4, 0, 0));
  const auto beyond = Adopt(ClipImage5(image, 9, 0, 2, 2));  // of negative width
  EXPECT_FALSE(rbCopyPixels8(image, beyond, 0, 0, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(beyond, image, 0, 0, 4, 4, 0, 0));
  StoredImage table = New(4, 4, ImageFormatRGB, Kind::Picture);
  const auto viewOfTable = Adopt(RedChannel(table));
  ASSERT_TRUE(viewOfTable);
  EXPECT_FALSE(rbCopyPixels8(image, viewOfTable, 0, 0, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(viewOfTable, image, 0, 0, 4, 4, 0, 0));
  EXPECT_EQ(image.Bytes(), before);
}

TEST_F(CopyPixels, ImagesThatAreConstructedAnewInARefusedFormatAreRefused) {
  StoredImage first = Counting(4, 4, ImageFormatG), second = Counting(4, 4, ImageFormatG),
              whole = New(4, 4, ImageFormatG);
  ImageConstructor(first, 4, 4, 14);
  ImageConstructor(second, 4, 4, 14);
  EXPECT_FALSE(rbCopyPixels8(first, second, 0, 0, 4, 4, 0, 0));
  EXPECT_FALSE(rbCopyPixels8(whole, second, 0, 0, 4, 4, 0, 0));
  // The same in the yields of a copy.
  StoredImage third = Counting(4, 4, ImageFormatG), fourth = Counting(4, 4, ImageFormatG);
  YieldAlways(host_, third);
  host_->onYield = [&] {
    ImageConstructor(third, 4, 4, 14);
    ImageConstructor(fourth, 4, 4, 14);
  };
  EXPECT_FALSE(rbCopyPixels8(third, fourth, 0, 0, 4, 4, 0, 0));
}

TEST_F(CopyPixels, YieldsOnSelfThenOnTheSourceThenOnSelfAfterEachRow) {
  StoredImage source = Counting(4, 4, ImageFormatG), dest = New(4, 4, ImageFormatG);
  YieldAlways(host_, dest);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 0, 0, 4, 3, 0, 0));
  EXPECT_EQ(Yields(host_), 4);
  dest.Record().Yield.YieldTicks = 0;
  YieldAlways(host_, source);
  EXPECT_TRUE(rbCopyPixels8(dest, source, 0, 0, 4, 3, 0, 0));
  EXPECT_EQ(Yields(host_), 5);
}

TEST_F(CopyPixels, ASourceThatIsNotValidIsRefusedBeforeAnyYield) {
  StoredImage dest = New(4, 4, ImageFormatG), source = New(4, 4, ImageFormatG);
  YieldAlways(host_, dest);
  source.Record().Valid = false;
  EXPECT_FALSE(rbCopyPixels2(dest, source));
  EXPECT_EQ(Yields(host_), 0);
  source.Record().Valid = true;
  source.Record().Height = 0;  // asked for only after the first yield
  EXPECT_FALSE(rbCopyPixels2(dest, source));
  EXPECT_EQ(Yields(host_), 1);
  source.Record().Height = 4;
}

TEST_F(CopyPixels, AnImageThatTheHostClosesInAYieldEndsTheCopy) {
  for (int32_t yield = 1; yield <= 4; ++yield) {
    for (const bool closesSource : {false, true}) {
      StoredImage dest = New(4, 4, ImageFormatG), source = Counting(4, 4, ImageFormatG);
      YieldAlways(host_, dest);
      int32_t seen = 0;
      host_->onYield = [&] {
        if (++seen == yield) ImageDestructor(closesSource ? source : dest);
      };
      // The last of the four yields comes when all rows are copied.
      EXPECT_EQ(rbCopyPixels8(dest, source, 0, 0, 4, 3, 0, 0), yield == 4 ? 1 : 0);
      EXPECT_EQ(seen, yield);
      host_->onYield = nullptr;
    }
  }
}

}  // namespace
}  // namespace zvk::compositing
